#include "apps/tn/print/EventReports.h"

#include <utility>

#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/print/PrintTags.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/print/StandardStatus.h"

namespace
{
constexpr std::size_t kMost = 100;
constexpr UINT16 kResponse = 0x8100; // N-EVENT-REPORT-RSP (PS3.7 E.1)
} // namespace

void EventReports::Report(PDU_Service& theService, Event theEvent)
{
   if (itsEvents.size() == kMost)
   {
      return;
   }
   itsEvents.push_back(std::move(theEvent));
   if (itsEvents.size() == 1)
   {
      SendFirst(theService);
   }
}

// That it cannot be sent is seen when the next command is read.
void EventReports::SendFirst(PDU_Service& theService) const
{
   const Event& anEvent = itsEvents.front();
   DICOMDataObject anInformation;
   anInformation.DICOMObject::Push(MakeElement(anEvent.itsInfoTag, VRCode::CS, anEvent.itsInfo).release());
   anInformation.DICOMObject::Push(MakeElement(PrintTags::kPrinterName, VRCode::LO, anEvent.itsPrinter).release());
   anEvent.itsMessages->NEventReportRQ::Write(theService, anInformation, anEvent.itsInstance, anEvent.itsType);
}

bool EventReports::TakeAnswer(PDU_Service& theService, const DICOMCommandObject& theCommand)
{
   UINT16 aField = 0;
   DICOMDataObject anIgnored; // whatever the client thinks of it
   if (itsEvents.empty() || !theCommand.GetUINT16(0, ElementOf(CommandTag::kCommandField), aField) ||
       aField != kResponse || !itsEvents.front().itsMessages->NEventReportRSP::Read(theCommand, theService, anIgnored))
   {
      return false;
   }
   itsEvents.pop_front();
   if (!itsEvents.empty())
   {
      SendFirst(theService);
   }
   return true;
}

#include "talvenor/print/StandardStatus.h"

#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/print/PrintOperations.h"

namespace
{
constexpr char kClass[] = "StandardStatus";
constexpr PrintOperation kGet = {kClass,
                                 "WriteGet",
                                 "NGetRQ::Write() failed",
                                 "thePDU::Read() failed",
                                 "NGetRSP::Read() received unexpected response",
                                 "NGetRSP::Read() received response without status",
                                 ErrorDescription::NGetRequestWrite,
                                 ErrorDescription::NGetResponseRead,
                                 kNGet.itsResponse.itsField,
                                 PrintStatusColumn::Set};
constexpr PrintOperation kEventReport = {kClass,
                                         "WriteEventReport",
                                         "NEventReportRQ::Write() failed",
                                         "thePDU::Read() failed",
                                         "NEventReportRSP::Read() received unexpected response",
                                         "NEventReportRSP::Read() received response without status",
                                         ErrorDescription::NEventReportRequestWrite,
                                         ErrorDescription::NEventReportResponseRead,
                                         kNEventReport.itsResponse.itsField,
                                         PrintStatusColumn::Set};
constexpr UINT16 kNotRecognized = 0x0107; // a warning: the rest is told
} // namespace

StandardStatus::~StandardStatus() = default;

int StandardStatus::GetUID(UID& theUID) const
{
   return uGetUID(theUID);
}

int StandardStatus::WriteGet(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theAttributes,
                             AbstractPrintManagementMeta& theMeta) const
{
   PrintExchange anExchange(kGet, theService, theMeta);
   const auto anOutcome = anExchange.Run([&] { return NGetRQ::Write(theService, theAttributes, theInstance); },
                                         [&](const DICOMCommandObject& theResponse, DICOMDataObject& theDataset) {
                                            if (!NGetRSP::Read(theResponse, theService, theDataset))
                                            {
                                               return 0;
                                            }
                                            if (HasDataset(theResponse))
                                            {
                                               theAttributes.Reset();
                                            }
                                            return 1;
                                         });
   MergeAttributes(theAttributes, anExchange.GetDataset());
   return anOutcome != PrintExchange::Failed;
}

int StandardStatus::WriteEventReport(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theInformation,
                                     UINT16 theEventTypeID, AbstractPrintManagementMeta& theMeta) const
{
   return PrintExchange(kEventReport, theService, theMeta)
              .Run(
                  [&] {
                     return theInformation.IsEmpty()
                                ? NEventReportRQ::Write(theService, theInstance, theEventTypeID)
                                : NEventReportRQ::Write(theService, theInformation, theInstance, theEventTypeID);
                  },
                  [&](const DICOMCommandObject& theResponse, DICOMDataObject& theReply) {
                     return NEventReportRSP::Read(theResponse, theService, theReply);
                  }) == PrintExchange::Done;
}

int StandardStatus::ReadGet(PDU_Service& theService, const DICOMCommandObject& theRequest,
                            DICOMDataObject& theSource) const
{
   UID anInstance;
   DICOMDataObject aList;
   if (!TakeInstance(*this, kNGet, theRequest, anInstance) || !NGetRQ::Read(theRequest, theService, aList))
   {
      return 0;
   }
   PrintAnswer anAnswer;
   if (aList.IsEmpty()) // all of them
   {
      anAnswer.itsDataset = &theSource;
      return SendAnswer<NGetRSP>(*this, theService, theRequest, anInstance, anAnswer);
   }
   DICOMDataObject aSelection(theSource.GetEndian());
   DICOMObjectIterator aWalk(aList, ExplicitNoGroupLength);
   for (const VR* aVR = aWalk.First(); aVR != nullptr; aVR = aWalk.Next())
   {
      const MAttributeTag aTag(aVR->GetGroup(), aVR->GetElement());
      if (const VR* const aValue = theSource.GetVR(aTag))
      {
         aSelection.Push(aValue->Copy());
      }
      else if (aTag.Element() != 0)
      {
         anAnswer.itsOffending.push_back(aTag);
         anAnswer.itsStatus = kNotRecognized;
      }
   }
   anAnswer.itsDataset = &aSelection;
   return SendAnswer<NGetRSP>(*this, theService, theRequest, anInstance, anAnswer);
}

int StandardStatus::ReadEventReport(PDU_Service& theService, const DICOMCommandObject& theRequest,
                                    DICOMDataObject& theInformation, const UID& theInstance) const
{
   UID anInstance;
   if (!TakeInstance(*this, kNEventReport, theRequest, anInstance) ||
       (!theInstance.IsNull() && anInstance != theInstance) ||
       !NEventReportRQ::Read(theRequest, theService, theInformation))
   {
      return 0;
   }
   return NEventReportRSP::Write(theService, theRequest, anInstance,
                                 theRequest.GetUINT16(0, CommandElement::EventTypeID), 0);
}

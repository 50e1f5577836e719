#include "talvenor/dimse/CMoveRSP.h"

#include "talvenor/dimse/CommandElement.h"
#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/dimse/DIMSEMessage.h"

namespace
{
constexpr UINT16 kPending = 0xFF00;
}

CMoveRSP::~CMoveRSP() = default;

int CMoveRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                    UINT16 theRemaining, UINT16 theCompleted, UINT16 theFailed, UINT16 theWarning,
                    const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending,
                    DICOMDataObject& theIdentifier) const
{
   UID aSOPClass;
   if (!WriteCommand(theService, theRequest, theStatus, theRemaining, theCompleted, theFailed, theWarning,
                     theErrorComment, theOffending, DataSetType::kDataset, aSOPClass, &theIdentifier))
   {
      return 0;
   }
   return SendResponse(theService, theIdentifier, 1);
}

int CMoveRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                    UINT16 theRemaining, UINT16 theCompleted, UINT16 theFailed, UINT16 theWarning,
                    const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   UID aSOPClass;
   return WriteCommand(theService, theRequest, theStatus, theRemaining, theCompleted, theFailed, theWarning,
                       theErrorComment, theOffending, DataSetType::kNoDataset, aSOPClass);
}

int CMoveRSP::WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                           UINT16 theRemaining, UINT16 theCompleted, UINT16 theFailed, UINT16 theWarning,
                           const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending,
                           UINT16 theDataSetType, UID& theSOPClass, const DICOMDataObject* theIdentifier) const
{
   if (!FindSOPClass(*this, theService, theSOPClass))
   {
      return 0;
   }
   TakeRequestSOPClass(theRequest, theSOPClass);
   DICOMCommandObject aCommand;
   CommandSetBuilder aBuilder(aCommand);
   aBuilder.PushResponse(kCMoveRSP.itsField, theSOPClass, theRequest, theDataSetType, theStatus);
   if (theStatus == kPending)
   {
      aBuilder.PushUS(CommandElement::RemainingSuboperations, theRemaining);
   }
   if (theStatus == kPending || theCompleted != 0 || theFailed != 0 || theWarning != 0)
   {
      aBuilder.PushUS(CommandElement::CompletedSuboperations, theCompleted);
      aBuilder.PushUS(CommandElement::FailedSuboperations, theFailed);
      aBuilder.PushUS(CommandElement::WarningSuboperations, theWarning);
   }
   aBuilder.PushExplanation(theErrorComment, theOffending);
   TraceWritten(kCMoveRSP, &aCommand, theIdentifier);
   return SendResponse(theService, aCommand, 1);
}

int CMoveRSP::Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theIdentifier) const
{
   return ReadResponse(kCMoveRSP, theCommand, theService, theIdentifier);
}

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
   if (!SendCommand(theService, theRequest, theStatus, {theRemaining, theCompleted, theFailed, theWarning},
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
                           UINT16 theDataSetType, UID& theSOPClass) const
{
   return SendCommand(theService, theRequest, theStatus, {theRemaining, theCompleted, theFailed, theWarning},
                      theErrorComment, theOffending, theDataSetType, theSOPClass, nullptr);
}

int CMoveRSP::SendCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                          const Counts& theCounts, const RWCString& theErrorComment,
                          const RWTValOrderedVector<MAttributeTag>& theOffending, UINT16 theDataSetType,
                          UID& theSOPClass, const DICOMDataObject* theIdentifier) const
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
      aBuilder.PushUS(CommandElement::RemainingSuboperations, theCounts.itsRemaining);
   }
   if (theStatus == kPending || theCounts.itsCompleted != 0 || theCounts.itsFailed != 0 || theCounts.itsWarning != 0)
   {
      aBuilder.PushUS(CommandElement::CompletedSuboperations, theCounts.itsCompleted);
      aBuilder.PushUS(CommandElement::FailedSuboperations, theCounts.itsFailed);
      aBuilder.PushUS(CommandElement::WarningSuboperations, theCounts.itsWarning);
   }
   aBuilder.PushExplanation(theErrorComment, theOffending);
   TraceWritten(kCMoveRSP, &aCommand, theIdentifier);
   return SendResponse(theService, aCommand, 1);
}

int CMoveRSP::Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theIdentifier) const
{
   return ReadResponse(kCMoveRSP, theCommand, theService, theIdentifier);
}

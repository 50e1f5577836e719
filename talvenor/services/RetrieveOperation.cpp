#include "talvenor/services/RetrieveOperation.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/MVRFactory.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/dimse/CommandElement.h"

namespace
{
constexpr UINT16 kIdentifyingGroup = 0x0008;
constexpr UINT16 kSOPInstanceUID = 0x0018;
constexpr UINT16 kFailedSOPInstanceUIDList = 0x0058;

// Of a text with a 16-bit length, as the encoders write it.
constexpr UINT32 kLongestValue = 32768;

constexpr UINT16 kNoWarnings = 0; // an instance that was stored with a warning is completed

// Numbers of sub-operations have 16 bits (PS3.7 9.3.4.2).
UINT16 Count(std::size_t theNumber)
{
   return static_cast<UINT16>(std::min<std::size_t>(theNumber, std::numeric_limits<UINT16>::max()));
}
} // namespace

RetrieveOperation::RetrieveOperation(StandardRetrieve& theRetrieve, PDU_Service& theMoveService,
                                     PDU_Service& theStoreService, const DICOMCommandObject& theCommand)
    : itsRetrieve(theRetrieve), itsMoveService(theMoveService), itsStoreService(theStoreService),
      itsCommand(theCommand), itsIdentifier(theCommand.GetEndian())
{}

int RetrieveOperation::Run(const UID& theSOPClass)
{
   if (!itsRetrieve.CMoveRQ::Read(itsCommand, itsMoveService, itsIdentifier))
   {
      return 0;
   }
   Tell(itsMoveService, Progress::IdentifierRead, itsIdentifier);
   if (!FindDestination() || !FindMatches(theSOPClass))
   {
      return 0;
   }
   itsRemaining = itsAnswer.itsMatches.size();
   itsAnswer.itsOffending.clear();
   for (const DICOMDataObject* const aMatch : itsAnswer.itsMatches)
   {
      itsIsCancelled = IsCancelled();
      if (itsIsCancelled)
      {
         break;
      }
      Move(aMatch);
   }
   return Finish();
}

bool RetrieveOperation::IsCancelled()
{
   try
   {
      return itsRetrieve.IsMoveCancelled(itsMoveService);
   }
   catch (...) // nobody knows: what was asked for goes on
   {
      return false;
   }
}

bool RetrieveOperation::FindDestination()
{
   if (!itsCommand.GetString(0, CommandElement::MoveDestination, itsDestination.itsTitle))
   {
      return Refuse(Progress::DestinationUnknown, QueryStatus::kNoDestination,
                    "Destination for CMOVE not specified in command.");
   }
   return AskForDestination() ||
          Refuse(Progress::DestinationUnknown, QueryStatus::kUnknownDestination, "Move destination unknown.");
}

bool RetrieveOperation::AskForDestination()
{
   try
   {
      return itsRetrieve.GetMoveDestination(itsDestination.itsTitle, itsDestination.itsCallingTitle,
                                            itsDestination.itsHost, itsDestination.itsPort) != 0;
   }
   catch (...) // whatever the host's code throws: the peer gets an answer
   {
      return false;
   }
}

bool RetrieveOperation::FindMatches(const UID& theSOPClass)
{
   const InformationModel aModel = FindRetrieveModel(theSOPClass);
   if (aModel == NoInformationModel)
   {
      itsMoveService.SetResultCode(TN_INTERNAL_ERROR);
      Tell(itsMoveService, Progress::ModelUnknown, itsIdentifier, QueryStatus::kUnableToProcess,
           "Unknown or missing query model specified");
      return false;
   }
   return itsAnswer.Ask(itsRetrieve, itsMoveService, aModel, itsIdentifier) ||
          Refuse(Progress::QueryRefused, itsAnswer.itsStatus, itsAnswer.itsComment);
}

void RetrieveOperation::Move(const DICOMDataObject* theMatch)
{
   if (!itsHasStoreFailed && Store(theMatch))
   {
      ++itsCompleted;
   }
   else
   {
      ++itsFailed;
      NoteFailure(theMatch);
   }
   --itsRemaining;
   if (!itsHasResponseFailed && !itsHasStoreFailed)
   {
      itsHasResponseFailed = !SendPending();
   }
   itsHasStoreFailed = itsHasStoreFailed || itsWasStoreRefused; // that it refused this one has been told
}

void RetrieveOperation::NoteFailure(const DICOMDataObject* theMatch)
{
   RWCString anInstance;
   if (theMatch != nullptr && theMatch->GetString(kIdentifyingGroup, kSOPInstanceUID, anInstance))
   {
      itsFailedInstances.push_back(anInstance);
   }
}

int RetrieveOperation::Finish()
{
   if (itsHasResponseFailed)
   {
      Tell(itsMoveService, Progress::ResponseFailed, itsCommand, QueryStatus::kUnableToProcess,
           "Error sending CMOVE Response");
      return 0;
   }
   itsOutcome.itsCompleted = itsCompleted;
   itsOutcome.itsFailed = itsFailed;
   if (itsIsCancelled)
   {
      itsOutcome.itsStatus = QueryStatus::kCancelled;
   }
   else if (itsFailed != 0 && itsCompleted == 0)
   {
      itsOutcome.itsStatus = QueryStatus::kAllFailed;
      itsOutcome.itsComment = "All CSTORE sub-operations failed.";
   }
   else if (itsFailed != 0)
   {
      itsOutcome.itsStatus = QueryStatus::kSomeFailed;
      itsOutcome.itsComment = "One or more CSTORE sub-operations failed.";
   }
   const int isSent = SendFinal();
   Tell(itsMoveService, Progress::FinalResponseSent, itsCommand, itsOutcome.itsStatus, itsOutcome.itsComment);
   return isSent;
}

int RetrieveOperation::SendPending()
{
   return itsRetrieve.CMoveRSP::Write(itsMoveService, itsCommand, QueryStatus::kPending, Count(itsRemaining),
                                      Count(itsCompleted), Count(itsFailed), kNoWarnings, RWCString(), {});
}

int RetrieveOperation::SendFinal()
{
   constexpr UINT16 kNoneRemaining = 0;
   DICOMDataObject anIdentifier(itsCommand.GetEndian());
   if (itsOutcome.itsStatus != QueryStatus::kSuccess && AddFailedInstances(anIdentifier))
   {
      return itsRetrieve.CMoveRSP::Write(itsMoveService, itsCommand, itsOutcome.itsStatus, kNoneRemaining,
                                         Count(itsCompleted), Count(itsFailed), kNoWarnings, itsOutcome.itsComment, {},
                                         anIdentifier);
   }
   return itsRetrieve.CMoveRSP::Write(itsMoveService, itsCommand, itsOutcome.itsStatus, kNoneRemaining,
                                      Count(itsCompleted), Count(itsFailed), kNoWarnings, itsOutcome.itsComment, {});
}

// False when there are none, or more than an element can hold: the numbers tell then that some failed.
bool RetrieveOperation::AddFailedInstances(DICOMDataObject& theIdentifier) const
{
   if (itsFailedInstances.empty())
   {
      return false;
   }
   const MVRFactory aFactory(theIdentifier.GetEndian(), false);
   std::unique_ptr<VR> aList(
       aFactory.InternalGetVR(kIdentifyingGroup, kFailedSOPInstanceUIDList, itsFailedInstances, '\0'));
   aList->SetTypeCode(VRCode::UI);
   return aList->GetLength() <= kLongestValue && theIdentifier.DICOMObject::Push(aList.release());
}

bool RetrieveOperation::Refuse(Progress theProgress, UINT16 theStatus, const RWCString& theComment)
{
   itsOutcome.itsStatus = theStatus;
   itsOutcome.itsComment = theComment;
   itsRetrieve.CMoveRSP::Write(itsMoveService, itsCommand, theStatus, 0, 0, 0, 0, theComment, itsAnswer.itsOffending);
   Tell(itsStoreService, theProgress, itsIdentifier, theStatus, theComment);
   return false;
}

void RetrieveOperation::Tell(PDU_Service& theService, Progress theProgress, const DICOMObject& theObject,
                             UINT16 theStatus, const RWCString& theMessage, unsigned int theSize)
{
   itsRetrieve.CMoveServiceProgressCallback(theService, theObject, theSize, theStatus, theMessage, theProgress);
}

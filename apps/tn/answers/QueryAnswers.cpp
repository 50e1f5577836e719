#include "apps/tn/answers/QueryAnswers.h"

#include "apps/tn/base/Tags.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/ul/DULStream.h"

namespace
{
// PS3.4 C.4.1.1.4
constexpr UINT16 kPending = 0xFF00;
constexpr UINT16 kPendingWithoutSomeKeys = 0xFF01;
constexpr UINT16 kCancelled = 0xFE00;

constexpr UINT16 kCancelRequest = 0x0FFF; // command field (PS3.7 E.1)
constexpr std::size_t kLongestComment = 64;

// Matches between two looks at what the peer has sent, each a system call.
constexpr unsigned long kInterval = 16;
} // namespace

QueryAnswers::QueryAnswers(PDU_Service& theService, const DICOMCommandObject& theRequest)
    : itsService(theService), itsRequest(theRequest)
{}

int QueryAnswers::GetUID(UID& theUID) const
{
   theUID = UID(TextOf(itsRequest, CommandTag::kAffectedSOPClassUID));
   return 1;
}

int QueryAnswers::ReadIdentifier(DICOMDataObject& theIdentifier) const
{
   return CFindRQ::Read(itsRequest, itsService, theIdentifier);
}

bool QueryAnswers::SendMatch(DICOMDataObject& theMatch, bool theIsFull)
{
   if (itsCount % kInterval == 0 && HasCancelled())
   {
      return false;
   }
   ++itsCount;
   itsIsLost =
       !CFindRSP::Write(itsService, itsRequest, theIsFull ? kPending : kPendingWithoutSomeKeys, "", {}, theMatch);
   return !itsIsLost;
}

// A peer that sends anything else in the middle of an operation, without having negotiated that it may, is not
// understood any more.
bool QueryAnswers::HasCancelled()
{
   DULStream* const aStream = itsService.GetDULStream();
   if (aStream == nullptr || aStream->BytesAvailable() <= 0)
   {
      return false;
   }
   const unsigned char aContext = itsService.GetCurrentPresentationContextID();
   DICOMCommandObject aCommand;
   UINT16 aField = 0;
   if (itsService.ReadCommand(aCommand))
   {
      aCommand.GetUINT16(0, ElementOf(CommandTag::kCommandField), aField);
   }
   itsIsCancelled = aField == kCancelRequest;
   itsIsLost = !itsIsCancelled;
   itsService.SetCurrentPresentationContextID(aContext);
   return true;
}

int QueryAnswers::Finish()
{
   return !itsIsLost && CFindRSP::Write(itsService, itsRequest, itsIsCancelled ? kCancelled : 0, "", {});
}

int QueryAnswers::Refuse(UINT16 theStatus, const std::string& theComment) const
{
   return CFindRSP::Write(itsService, itsRequest, theStatus, theComment.substr(0, kLongestComment), {});
}

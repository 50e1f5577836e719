#include "apps/tn/answers/QueryAnswers.h"

#include "apps/tn/answers/Interjection.h"
#include "apps/tn/base/Tags.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dictionary/UID.h"

namespace
{
// PS3.4 C.4.1.1.4
constexpr UINT16 kPending = 0xFF00;
constexpr UINT16 kPendingWithoutSomeKeys = 0xFF01;
constexpr UINT16 kCancelled = 0xFE00;

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

bool QueryAnswers::HasCancelled()
{
   const Interjection anInterjection = ReadInterjection(itsService);
   itsIsCancelled = anInterjection == Interjection::kCancel;
   itsIsLost = anInterjection == Interjection::kOther;
   return anInterjection != Interjection::kNone;
}

int QueryAnswers::Finish()
{
   return !itsIsLost && CFindRSP::Write(itsService, itsRequest, itsIsCancelled ? kCancelled : 0, "", {});
}

int QueryAnswers::Refuse(UINT16 theStatus, const std::string& theComment) const
{
   return CFindRSP::Write(itsService, itsRequest, theStatus, theComment.substr(0, kLongestComment), {});
}

// A PDU_Service whose peer is a script, what it came to, and the PDUs that its tests send again and again.
#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "support/MemoryDULStream.h"
#include "support/PDUBytes.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/ul/DULStreamFactory.h"

namespace ScriptedService
{
using namespace PDUBytes;
using Status = PDU_Service::AssociationStatus;

inline const std::string kVerification = "1.2.840.10008.1.1";
inline const std::string kCT = "1.2.840.10008.5.1.4.1.1.2";
inline const std::string kImplicit = "1.2.840.10008.1.2";
inline const std::string kExplicit = "1.2.840.10008.1.2.1";
inline const std::string kBaseline = "1.2.840.10008.1.2.4.50";

// A service whose transport is a script: what the peer sends, and then the end of the connection or silence.
class Scripted : public PDU_Service
{
public:
   explicit Scripted() : PDU_Service(Factory()) {}

   std::unique_ptr<MemoryDULStream> Connect(const std::string& theInput, bool isClosed = true)
   {
      auto aStream = std::make_unique<MemoryDULStream>(
          ScriptedChannel(std::vector<unsigned char>(theInput.begin(), theInput.end()), isClosed));
      itsOutput = aStream->ShareOutput();
      return aStream;
   }

   std::string Sent() const
   {
      const std::vector<unsigned char> aBytes = itsOutput->Everything();
      return {aBytes.begin(), aBytes.end()};
   }

   // As acceptor and as requester of CT storage with that input.
   int Accept(const std::string& theInput, bool isClosed = true)
   {
      return WaitForAssociationRequest(Connect(theInput, isClosed).release());
   }
   int Request(const std::string& theInput, bool isClosed = true)
   {
      SetLocalAddress("SCU");
      SetRemoteAddress("SCP");
      ClearProposedPresentationContexts();
      AddPresentationContextProposal(kCT, kExplicit);
      return RequestAssociation(Connect(theInput, isClosed).release());
   }

   int ShouldIAcceptLocalAppTitle(const RWCString&) override { return itsTakesCalled; }
   int ShouldIAcceptRemoteAppTitle(const RWCString&) override { return itsTakesCalling; }
   int ShouldIAcceptApplicationContext(const ApplicationContextItem&) override { return itsTakesApplication; }

   int itsTakesCalled = 1;
   int itsTakesCalling = 1;
   int itsTakesApplication = 1;

private:
   static DULStreamFactory& Factory()
   {
      static DULStreamFactory aFactory;
      return aFactory;
   }

   std::shared_ptr<MemoryChannel> itsOutput = std::make_shared<MemoryChannel>();
};

inline const std::string kGoodRequest = Request({{1, kCT, {kExplicit}}});
inline const std::string kGoodAnswer = Acceptance({{1, 0, kExplicit}});

// What came of an operation: its value, the result code, the status, and the PDUs that were sent.
struct Outcome
{
   bool operator==(const Outcome&) const = default;

   int itsValue;
   TNResultCode itsCode;
   Status itsStatus;
   std::string itsSent;
};

inline std::ostream& operator<<(std::ostream& theText, const Outcome& theOutcome)
{
   return theText << theOutcome.itsValue << ", result " << theOutcome.itsCode << ", status " << theOutcome.itsStatus
                  << ", sent \"" << theOutcome.itsSent << '"';
}

inline Outcome OutcomeOf(int theValue, const Scripted& theService)
{
   return {theValue != 0, theService.GetResultCode(), theService.GetAssociationStatus(), Describe(theService.Sent())};
}

// What becomes of an association again and again.
inline const Outcome kAccepted = {1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"};
inline const Outcome kNoContext = {0, TN_ALL_CONTEXTS_REJECTED, Status::Rejected, "AC"};
inline const Outcome kReleased = {0, TN_PEER_RELEASED, Status::ReleasedByPeer, "AC RELEASED"};
inline const Outcome kPeerAborted = {0, TN_PEER_ABORTED, Status::AbortedByPeer, "AC"};
inline const Outcome kUnexpected = {0, TN_UNEXPECTED_PDU, Status::AbortedByUs, "AC ABORT(2,2)"};

inline Outcome Violated(TNResultCode theCode)
{
   return {0, theCode, Status::ProtocolError, "AC ABORT(2,6)"};
}

inline Outcome Ended(TNResultCode theCode, const char* theSent)
{
   return {0, theCode, Status::Idle, theSent};
}

// A command set of one element: (0000,0100) Command Field 0030H, and a data set.
inline const std::string kCommand = "\0\0\0\1\2\0\0\0\x30\0"s;
inline const std::string kDataSet = "\x10\0\x10\0PN\4\0A^B "s;
} // namespace ScriptedService

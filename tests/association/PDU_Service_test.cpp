#include "talvenor/association/PDU_Service.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

#include "support/Elements.h"
#include "support/FakeClock.h"
#include "support/MemoryDULStream.h"
#include "support/PDUBytes.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"
#include "talvenor/ul/DICOMMessageOutputStream.h"
#include "talvenor/ul/DULStreamFactory.h"

namespace
{
using namespace PDUBytes;
using Status = PDU_Service::AssociationStatus;

const std::string kVerification = "1.2.840.10008.1.1";
const std::string kCT = "1.2.840.10008.5.1.4.1.1.2";
const std::string kImplicit = "1.2.840.10008.1.2";
const std::string kExplicit = "1.2.840.10008.1.2.1";
const std::string kBaseline = "1.2.840.10008.1.2.4.50";

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

const std::string kGoodRequest = Request({{1, kCT, {kExplicit}}});
const std::string kGoodAnswer = Acceptance({{1, 0, kExplicit}});

// What came of an operation: its value, the result code, the status, and the PDUs that were sent.
struct Outcome
{
   bool operator==(const Outcome&) const = default;

   int itsValue;
   TNResultCode itsCode;
   Status itsStatus;
   std::string itsSent;
};

std::ostream& operator<<(std::ostream& theText, const Outcome& theOutcome)
{
   return theText << theOutcome.itsValue << ", result " << theOutcome.itsCode << ", status " << theOutcome.itsStatus
                  << ", sent \"" << theOutcome.itsSent << '"';
}

Outcome OutcomeOf(int theValue, const Scripted& theService)
{
   return {theValue != 0, theService.GetResultCode(), theService.GetAssociationStatus(), Describe(theService.Sent())};
}

TEST(PDU_ServiceAccept, AnswersEveryRequest)
{
   const std::string kTooManyContexts = [] {
      std::vector<Proposal> aProposals;
      for (int i = 0; i < 200; ++i)
      {
         aProposals.push_back({static_cast<unsigned char>(2 * i + 1), kCT, {kExplicit}});
      }
      return Request(aProposals);
   }();
   const struct
   {
      const char* itsName;
      std::string itsInput;
      Outcome itsOutcome;
   } kCases[] = {
       {"good", kGoodRequest, {1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"}},
       {"no limit of the peer",
        Request({{1, kCT, {kExplicit}}}, 0),
        {1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"}},
       {"limit too small",
        Request({{1, kCT, {kExplicit}}}, 5),
        {0, TN_MAX_LENGTH_TOO_SMALL, Status::Rejected, "RJ(1,1,1)"}},
       {"no syntax that we take",
        Request({{1, kCT, {kBaseline}}}),
        {0, TN_ALL_CONTEXTS_REJECTED, Status::Rejected, "AC"}},
       {"nothing taken and limit too small",
        Request({{1, kCT, {kBaseline}}}, 5),
        {0, TN_ALL_CONTEXTS_REJECTED, Status::Rejected, "AC"}},
       {"no roles",
        Request({{1, kCT, {kExplicit}}}, 16384, Role(kCT, 0, 0)),
        {0, TN_ALL_CONTEXTS_REJECTED, Status::Rejected, "AC"}},
       {"no contexts", Request({}), {0, TN_ALL_CONTEXTS_REJECTED, Status::Rejected, "AC"}},
       {"even context ID", Request({{2, kCT, {kExplicit}}}), {0, TN_INVALID_ITEM, Status::Idle, ""}},
       {"the peer is gone", "", {0, TN_END_OF_FILE, Status::Idle, ""}},
       {"half a request", kGoodRequest.substr(0, 90), {0, TN_END_OF_FILE, Status::Idle, ""}},
       {"data first", PData(PDV(1, 3, "abcd")), {0, TN_PDU_TYPE_MISMATCH, Status::Idle, ""}},
       {"no PDU at all", "GET / HTTP/1.1\r\n\r\n", {0, TN_INVALID_PDU, Status::Idle, ""}},
       {"a length of 4 GiB", PDU(1, "", 0xFFFFFFFF), {0, TN_PDU_LENGTH_MISMATCH, Status::Idle, ""}},
       {"a length of 0", PDU(1, ""), {0, TN_END_OF_FILE, Status::Idle, ""}},
       {"a length that is short", PDU(1, kGoodRequest.substr(6), 70), {0, TN_END_OF_FILE, Status::Idle, ""}},
       {"200 contexts", kTooManyContexts, {1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"}},
   };
   for (const auto& aCase : kCases)
   {
      Scripted aService;
      EXPECT_EQ(OutcomeOf(aService.Accept(aCase.itsInput), aService), aCase.itsOutcome) << aCase.itsName;
      EXPECT_EQ(aService.GetDULStream() != nullptr && aService.Connected(), aCase.itsOutcome.itsValue != 0);
   }
}

TEST(PDU_ServiceAccept, TellsWhyItRefusesTitlesAndApplicationContexts)
{
   const struct
   {
      int itsTakesCalled, itsTakesCalling, itsTakesApplication;
      TNResultCode itsCode;
      const char* itsSent;
   } kCases[] = {
       {0, 1, 1, TN_CALLED_AE_REJECTED, "RJ(1,1,7)"},
       {1, 0, 1, TN_CALLING_AE_REJECTED, "RJ(1,1,3)"},
       {0, 0, 1, TN_CALLING_AE_REJECTED, "RJ(1,1,3)"}, // the later check stands
       {0, 0, 0, TN_APPLICATION_CONTEXT_REJECTED, "RJ(1,1,2)"},
   };
   for (const auto& aCase : kCases)
   {
      Scripted aService;
      aService.itsTakesCalled = aCase.itsTakesCalled;
      aService.itsTakesCalling = aCase.itsTakesCalling;
      aService.itsTakesApplication = aCase.itsTakesApplication;
      EXPECT_EQ(OutcomeOf(aService.Accept(kGoodRequest), aService),
                (Outcome{0, aCase.itsCode, Status::Rejected, aCase.itsSent}));
   }
}

TEST(PDU_ServiceAccept, DecidesEveryContext)
{
   Scripted aService;
   ASSERT_TRUE(aService.Accept(Request({{1, kCT, {kImplicit, kExplicit}},
                                        {3, kCT, {kBaseline}},
                                        {5, kCT, {kBaseline, kImplicit}},
                                        {7, kVerification, {kImplicit}},
                                        {9, "1.2.3", {kExplicit}}},
                                       16384, Role("1.2.3", 0, 0) + Role(kVerification, 1, 1))));
   std::string anAnswers;
   for (const auto& anItem : aService.GetAcceptedContextList())
   {
      anAnswers += std::to_string(anItem.PresentationContextID()) + ":" + std::to_string(anItem.GetResult()) + ":" +
                   RWCString(anItem.GetTransferSyntax().GetUID()) + " ";
   }
   EXPECT_EQ(anAnswers, "1:0:" + kExplicit + " 3:4:" + kImplicit + " 5:0:" + kImplicit + " 7:0:" + kImplicit +
                            " 9:3:" + kImplicit + " ");
   EXPECT_EQ(aService.GetUsablePresentationContextID(UID(kCT)), 1);
   EXPECT_EQ(aService.GetUsablePresentationContextID(UID(kCT), UID(kImplicit)), 5);
   EXPECT_EQ(aService.GetUsablePresentationContextCount(), 3U);
   EXPECT_EQ(aService.GetRemoteAddress(), "SCU");
   EXPECT_TRUE(aService.Sent().find(Role(kVerification, 1, 1)) != std::string::npos) << "roles are echoed";
}

TEST(PDU_ServiceRequest, TakesEveryAnswer)
{
   const struct
   {
      const char* itsName;
      std::string itsInput;
      Outcome itsOutcome;
   } kCases[] = {
       {"accepted", kGoodAnswer, {1, TN_NO_ERROR, Status::AcceptedAsRequester, "RQ"}},
       {"rejected", Rejection(1, 1, 7), {0, TN_ASSOCIATION_REJECTED, Status::Rejected, "RQ"}},
       {"context rejected", Acceptance({{1, 3, kImplicit}}), {0, TN_ALL_CONTEXTS_REJECTED, Status::Idle, "RQ"}},
       {"context not proposed", Acceptance({{3, 0, kExplicit}}), {0, TN_ALL_CONTEXTS_REJECTED, Status::Idle, "RQ"}},
       {"no contexts", Acceptance({}), {0, TN_ALL_CONTEXTS_REJECTED, Status::Idle, "RQ"}},
       {"aborted", Abort(2, 0), {0, TN_PEER_ABORTED, Status::AbortedByPeer, "RQ"}},
       {"closed", "", {0, TN_CLOSED_BY_PEER, Status::Idle, "RQ"}},
       {"half an answer", kGoodAnswer.substr(0, 80), {0, TN_END_OF_FILE, Status::Idle, "RQ"}},
       {"data", PData(PDV(1, 3, "abcd")), {0, TN_UNEXPECTED_PDU, Status::Idle, "RQ ABORT(2,1)"}},
       {"nonsense", "HTTP/1.1 400 Bad Request", {0, TN_INVALID_PDU, Status::Idle, "RQ ABORT(2,1)"}},
   };
   for (const auto& aCase : kCases)
   {
      Scripted aService;
      EXPECT_EQ(OutcomeOf(aService.Request(aCase.itsInput), aService), aCase.itsOutcome) << aCase.itsName;
   }
}

TEST(PDU_ServiceRequest, NeedsATransportAndProposals)
{
   Scripted aService;
   EXPECT_EQ(aService.RequestAssociation(nullptr), 0);
   EXPECT_EQ(aService.GetResultCode(), TN_CLOSED_BY_US);
   EXPECT_EQ(aService.RequestAssociation(aService.Connect(kGoodAnswer).release()), 0);
   EXPECT_EQ(aService.GetResultCode(), TN_NO_ABSTRACT_SYNTAX);
   EXPECT_EQ(aService.Sent(), "");
}

TEST(PDU_ServiceRequest, ComparesRoles)
{
   const struct
   {
      const char* itsName;
      int itsSCU, itsSCP; // asked for
      std::string itsAnswer;
      bool isUsable;
   } kCases[] = {
       {"answered as asked", 1, 1, Role(kCT, 1, 1), true},
       {"one refused", 1, 1, Role(kCT, 1, 0), false},
       {"not answered", 1, 1, "", false},
       {"not needed", 1, 0, "", true},
       {"none left", 0, 0, Role(kCT, 0, 0), false},
       {"other class", 1, 1, Role("1.2.3", 1, 1), false},
   };
   for (const auto& aCase : kCases)
   {
      Scripted aService;
      SCPSCURoleSelectSubItem aRole;
      aRole.SetName(ULUID(kCT));
      aRole.SetSCURole(static_cast<unsigned char>(aCase.itsSCU));
      aRole.SetSCPRole(static_cast<unsigned char>(aCase.itsSCP));
      aService.AddSCPSCURoleRequest(aRole);
      EXPECT_EQ(aService.Request(Acceptance({{1, 0, kExplicit}}, 16384, aCase.itsAnswer)) != 0, aCase.isUsable)
          << aCase.itsName;
   }
}

// A command set of one element: (0000,0100) Command Field 0030H.
const std::string kCommand = "\0\0\0\1\2\0\0\0\x30\0"s;
const std::string kDataSet = "\x10\0\x10\0PN\4\0A^B "s;

TEST(PDU_ServiceRead, TakesWhateverAPeerSends)
{
   const std::string aCommandPDV = PDV(1, 3, kCommand);
   const struct
   {
      const char* itsName;
      std::string itsInput;
      Outcome itsOutcome; // of ReadCommand
   } kCases[] = {
       {"command", PData(aCommandPDV), {1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"}},
       {"command in pieces",
        PData(PDV(1, 1, kCommand.substr(0, 3))) + PData(PDV(1, 1, "") + PDV(1, 3, kCommand.substr(3))),
        {1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"}},
       {"data set that nobody announced",
        PData(PDV(1, 2, kDataSet) + aCommandPDV),
        {0, TN_UNEXPECTED_DATASET, Status::ProtocolError, "AC ABORT(2,6)"}},
       {"PDU without PDVs", PData("") + PData(aCommandPDV), {1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"}},
       {"release", ReleaseRequest(), {0, TN_PEER_RELEASED, Status::ReleasedByPeer, "AC RELEASED"}},
       {"release behind an empty PDU",
        PData("") + ReleaseRequest(),
        {0, TN_PEER_RELEASED, Status::ReleasedByPeer, "AC RELEASED"}},
       {"release inside a message",
        PData(PDV(1, 1, kCommand)) + ReleaseRequest(),
        {0, TN_PEER_RELEASED, Status::ReleasedByPeer, "AC RELEASED"}},
       {"abort", Abort(0, 0), {0, TN_PEER_ABORTED, Status::AbortedByPeer, "AC"}},
       {"abort inside a message",
        PData(PDV(1, 1, kCommand)) + Abort(0, 0),
        {0, TN_PEER_ABORTED, Status::AbortedByPeer, "AC"}},
       {"second request", kGoodRequest, {0, TN_UNEXPECTED_PDU, Status::AbortedByUs, "AC ABORT(2,2)"}},
       {"acceptance", kGoodAnswer, {0, TN_UNEXPECTED_PDU, Status::AbortedByUs, "AC ABORT(2,2)"}},
       {"rejection", Rejection(1, 1, 1), {0, TN_UNEXPECTED_PDU, Status::AbortedByUs, "AC ABORT(2,2)"}},
       {"release response", ReleaseResponse(), {0, TN_UNEXPECTED_PDU, Status::AbortedByUs, "AC ABORT(2,2)"}},
       {"type 99", PDU(99, "abcd"), {0, TN_INVALID_PDU, Status::AbortedByUs, "AC ABORT(2,1)"}},
       {"type 0", PDU(0, "abcd"), {0, TN_INVALID_PDU, Status::AbortedByUs, "AC ABORT(2,1)"}},
       {"4 GiB", PDU(4, "", 0xFFFFFFFF), {0, TN_PDU_LENGTH_MISMATCH, Status::ProtocolError, "AC ABORT(2,6)"}},
       {"end", "", {0, TN_CLOSED_BY_PEER, Status::Idle, "AC"}},
       {"end inside a header", "\4\0\0"s, {0, TN_CLOSED_BY_PEER, Status::Idle, "AC"}},
       {"end inside a PDV",
        PDU(4, aCommandPDV, aCommandPDV.size() + 10),
        {1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"}}, // the command is whole
       {"end inside a message",
        PData(PDV(1, 1, kCommand)),
        {0, TN_END_OF_FILE, Status::ProtocolError, "AC ABORT(2,6)"}},
       {"context not accepted",
        PData(PDV(3, 3, kCommand)),
        {0, TN_CONTEXT_NOT_ACCEPTED, Status::ProtocolError, "AC ABORT(2,6)"}},
       {"PDV of length 0", PData("\0\0\0\0"s + "\1\3"s), {0, TN_INVALID_PDU, Status::ProtocolError, "AC ABORT(2,6)"}},
       {"PDV of length 1", PData("\0\0\0\1"s + "\1\3"s), {0, TN_INVALID_PDU, Status::ProtocolError, "AC ABORT(2,6)"}},
       {"data behind a command fragment",
        PData(PDV(1, 1, kCommand.substr(0, 3)) + PDV(1, 2, kDataSet)),
        {0, TN_INVALID_ENCODING, Status::ProtocolError, "AC ABORT(2,6)"}},
       {"other context inside a message",
        PData(PDV(1, 1, kCommand.substr(0, 3)) + PDV(3, 3, kCommand.substr(3))),
        {0, TN_PDV_CONTEXT_MISMATCH, Status::ProtocolError, "AC ABORT(2,6)"}},
       {"element longer than the command",
        PData(PDV(1, 3, "\0\0\0\1\xFE\xFF\xFF\xFF\x30\0"s)),
        {0, TN_END_OF_FILE, Status::ProtocolError, "AC ABORT(2,6)"}},
   };
   for (const auto& aCase : kCases)
   {
      Scripted aService;
      ASSERT_TRUE(aService.Accept(kGoodRequest + aCase.itsInput));
      DICOMCommandObject aCommand;
      const int isRead = aService.ReadCommand(aCommand);
      EXPECT_EQ(OutcomeOf(isRead, aService), aCase.itsOutcome) << aCase.itsName;
      if (isRead)
      {
         EXPECT_EQ(aCommand.GetUINT16(0x0000, 0x0100), 0x30) << aCase.itsName;
         EXPECT_EQ(aService.GetCurrentPresentationContextID(), 1);
      }
   }
}

TEST(PDU_ServiceRead, SilenceIsATimeOut)
{
   Scripted aService;
   ASSERT_TRUE(aService.Accept(kGoodRequest, false));
   DICOMCommandObject aCommand;
   EXPECT_FALSE(aService.ReadCommand(aCommand));
   EXPECT_EQ(aService.GetResultCode(), TN_REQUEST_WAIT_TIMED_OUT);
   ASSERT_TRUE(aService.Accept(kGoodRequest, false));
   EXPECT_FALSE(aService.Read(aCommand));
   EXPECT_EQ(aService.GetResultCode(), TN_TRANSPORT_TIMED_OUT);
}

TEST(PDU_ServiceRead, ACommandSetIsBounded)
{
   std::string anInput = kGoodRequest;
   for (int i = 0; i < 140; ++i)
   {
      anInput += PData(PDV(1, 1, "\0\0\x02\x09\xFF\xFF\xFF\x7F"s + std::string(8192, 'x')));
   }
   Scripted aService;
   ASSERT_TRUE(aService.Accept(anInput));
   DICOMCommandObject aCommand;
   EXPECT_FALSE(aService.ReadCommand(aCommand));
   EXPECT_EQ(aService.GetResultCode(), TN_INVALID_ENCODING);
   EXPECT_EQ(aService.GetAssociationStatus(), Status::ProtocolError);
}

// In bytes, and in elements and items of all levels.
TEST(PDU_ServiceRead, ADataSetIsBoundedWhereTheHostSaysSo)
{
   const std::string anAnnouncement = kCommand + "\0\0\0\x08\2\0\0\0\2\1"s;
   constexpr UINT64 kLong = 160000;
   constexpr std::size_t kMostElements = 16384 + kLong / 256;
   const auto aSequence = [](std::size_t theItems) { // with its delimiter
      std::string aText = "\x08\0\x40\x11SQ\0\0\xFF\xFF\xFF\xFF"s;
      for (std::size_t i = 0; i < theItems; ++i)
      {
         aText += "\xFE\xFF\0\xE0\0\0\0\0"s;
      }
      return aText + "\xFE\xFF\xDD\xE0\0\0\0\0"s;
   };
   const struct
   {
      const char* itsName;
      UINT64 itsLimit;
      std::string itsDataSet;
      bool itsIsTaken;
   } kRows[] = {{"as long as it may be", 12, kDataSet, true},
                {"a byte more", 11, kDataSet, false},
                {"as many elements as it may have", kLong, aSequence(kMostElements - 2), true},
                {"an item more", kLong, aSequence(kMostElements - 1), false},
                {"any number", ~UINT64{0}, aSequence(kMostElements), true}};
   for (const auto& aRow : kRows)
   {
      std::string anInput = kGoodRequest + PData(PDV(1, 3, anAnnouncement));
      constexpr std::size_t kPiece = 10000;
      for (std::size_t aPlace = 0; aPlace < aRow.itsDataSet.size(); aPlace += kPiece)
      {
         const bool isLast = aPlace + kPiece >= aRow.itsDataSet.size();
         anInput += PData(PDV(1, isLast ? 2 : 0, aRow.itsDataSet.substr(aPlace, kPiece)));
      }
      Scripted aService;
      aService.SetLongestDataset(aRow.itsLimit);
      ASSERT_TRUE(aService.Accept(anInput));
      DICOMCommandObject aCommand;
      ASSERT_TRUE(aService.ReadCommand(aCommand)) << "commands have a limit of their own";
      DICOMDataObject aDataSet;
      const Outcome anOutcome = aRow.itsIsTaken
                                    ? Outcome{1, TN_NO_ERROR, Status::AcceptedAsAcceptor, "AC"}
                                    : Outcome{0, TN_INVALID_ENCODING, Status::ProtocolError, "AC ABORT(2,6)"};
      EXPECT_EQ(OutcomeOf(aService.Read(aDataSet), aService), anOutcome) << aRow.itsName;
   }
}

TEST(PDU_ServiceWrite, MessagesArriveAsTheyWereSent)
{
   auto [aRequesterEnd, anAcceptorEnd] = ConnectedDULStreams(MemoryChannel::kWait);
   Scripted anAcceptor;
   std::thread aThread([&, aStream = anAcceptorEnd.release()] { anAcceptor.WaitForAssociationRequest(aStream); });
   Scripted aRequester;
   aRequester.AddPresentationContextProposal(kCT, "1.2.840.10008.1.2.1");
   ASSERT_TRUE(aRequester.RequestAssociation(aRequesterEnd.release()));
   aThread.join();
   ASSERT_TRUE(anAcceptor.Connected());

   DICOMCommandObject aCommand;
   aCommand.Push(NumberElement(0x00000100, VRCode::US, UINT16{1}));
   DICOMDataObject aDataSet;
   aDataSet.Push(TextElement(0x00100010, "A^B", VRCode::PN));
   aDataSet.Push(BytesElement(0x7FE00010, VRCode::OW, std::string(100000, 'p')));
   DICOMDataObject anEmpty;
   ASSERT_TRUE(aRequester.Write(aCommand, UID(kCT), 0));
   ASSERT_TRUE(aRequester.Write(aDataSet, UID(kCT), 1));
   ASSERT_TRUE(aRequester.Write(aCommand, 1, 0));
   ASSERT_TRUE(aRequester.Write(anEmpty, 1, 1));

   DICOMCommandObject aReceived;
   DICOMDataObject aReceivedSet;
   ASSERT_TRUE(anAcceptor.ReadCommand(aReceived));
   EXPECT_EQ(aReceived.GetUINT16(0x0000, 0x0100), 1);
   ASSERT_TRUE(anAcceptor.Read(aReceivedSet));
   EXPECT_TRUE(aReceivedSet.ValueEquals(aDataSet));
   ASSERT_TRUE(anAcceptor.ReadCommand(aReceived));
   aReceivedSet.Reset();
   ASSERT_TRUE(anAcceptor.Read(aReceivedSet)) << "an empty data set ends too";
   EXPECT_TRUE(aReceivedSet.IsEmpty());
   EXPECT_EQ(aRequester.GetWriteOKCount(), 4U);
   EXPECT_EQ(aRequester.GetBytesWritten(), anAcceptor.GetBytesRead());
}

TEST(PDU_ServiceWrite, WhatCannotBeSentIsTold)
{
   Scripted aService;
   DICOMCommandObject aCommand;
   aCommand.Push(NumberElement(0x00000100, VRCode::US, UINT16{1}));
   EXPECT_FALSE(aService.Write(aCommand, 1, 1));
   EXPECT_EQ(aService.GetResultCode(), TN_NOT_CONNECTED);
   ASSERT_TRUE(aService.Request(kGoodAnswer + ReleaseResponse()));
   EXPECT_FALSE(aService.Write(aCommand, 0, 1));
   EXPECT_EQ(aService.GetResultCode(), TN_NO_CONTEXT_CHOSEN);
   EXPECT_FALSE(aService.Write(aCommand, 3, 1));
   EXPECT_EQ(aService.GetResultCode(), TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX);
   EXPECT_FALSE(aService.Write(aCommand, UID(kVerification), 1));
   EXPECT_EQ(aService.GetResultCode(), TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX);

   DICOMDataObject aFragments;
   aFragments.Push(new EncapsulatedPixelVR(nullptr));
   ASSERT_TRUE(aService.Write(aCommand, 1, 0));
   EXPECT_FALSE(aService.Write(aFragments, 1, 1));
   EXPECT_EQ(aService.GetResultCode(), TN_ENCAPSULATED_WITH_NATIVE_SYNTAX);
   EXPECT_TRUE(aService.Close()) << "the association is still good";
   EXPECT_EQ(Describe(aService.Sent()), "RQ RELEASE");
}

TEST(PDU_ServiceClose, EndsWhateverThePeerDoes)
{
   const struct
   {
      const char* itsName;
      bool isRequester;
      std::string itsInput;
      Outcome itsOutcome;
   } kCases[] = {
       {"answered", true, ReleaseResponse(), {1, TN_NO_ERROR, Status::ReleasedByUs, "RELEASE"}},
       {"data on the way",
        true,
        PData(PDV(1, 3, kCommand)) + PData(PDV(1, 2, std::string(32750, 'x'))) + ReleaseResponse(),
        {1, TN_NO_ERROR, Status::ReleasedByUs, "RELEASE"}},
       {"collision, requester",
        true,
        ReleaseRequest() + ReleaseResponse(),
        {1, TN_NO_ERROR, Status::ReleasedByUs, "RELEASE RELEASED"}},
       {"collision, acceptor",
        false,
        ReleaseRequest() + ReleaseResponse(),
        {1, TN_NO_ERROR, Status::ReleasedByPeer, "RELEASE RELEASED"}},
       {"two requests",
        true,
        ReleaseRequest() + ReleaseRequest(),
        {0, TN_UNEXPECTED_PDU, Status::Idle, "RELEASE RELEASED ABORT(2,2)"}},
       {"abort", true, Abort(0, 0), {0, TN_PEER_ABORTED, Status::AbortedByPeer, "RELEASE"}},
       {"request", true, kGoodRequest, {0, TN_UNEXPECTED_PDU, Status::Idle, "RELEASE ABORT(2,2)"}},
       {"type 99", true, PDU(99, ""), {0, TN_INVALID_PDU, Status::ProtocolError, "RELEASE"}},
       {"end", true, "", {0, TN_END_OF_FILE, Status::Idle, "RELEASE"}},
   };
   for (const auto& aCase : kCases)
   {
      Scripted aService;
      ASSERT_TRUE(aCase.isRequester ? aService.Request(kGoodAnswer + aCase.itsInput)
                                    : aService.Accept(kGoodRequest + aCase.itsInput));
      const std::size_t aBefore = aService.Sent().size();
      const int isReleased = aService.Close();
      Outcome anOutcome = OutcomeOf(isReleased, aService);
      anOutcome.itsSent = Describe(aService.Sent().substr(aBefore));
      EXPECT_EQ(anOutcome, aCase.itsOutcome) << aCase.itsName;
      EXPECT_EQ(aService.GetDULStream(), nullptr);
      EXPECT_TRUE(aService.Close()) << "twice is once";
   }
}

TEST(PDU_ServiceClose, AfterTheirReleaseNothingMoreIsSent)
{
   Scripted aService;
   ASSERT_TRUE(aService.Accept(kGoodRequest + ReleaseRequest()));
   DICOMCommandObject aCommand;
   aService.ReadCommand(aCommand);
   EXPECT_TRUE(aService.Close());
   EXPECT_EQ(aService.GetAssociationStatus(), Status::ReleasedByPeer);
   EXPECT_EQ(Describe(aService.Sent()), "AC RELEASED");
}

TEST(PDU_ServiceAbort, WaitsForThePeerToCloseButNotForever)
{
   FakeClock aClock;
   Scripted aService;
   ASSERT_TRUE(aService.Accept(kGoodRequest + PData(PDV(1, 3, kCommand)) + kGoodRequest));
   EXPECT_TRUE(aService.Abort(static_cast<AAbortRQPDU::AbortSource>(0), static_cast<AAbortRQPDU::AbortReason>(0)));
   EXPECT_EQ(aService.GetAssociationStatus(), Status::AbortedByUs);
   EXPECT_TRUE(aService.WaitForTransportCloseOrTimeout());
   EXPECT_EQ(Describe(aService.Sent()), "AC ABORT(0,0) ABORT(2,2) ABORT(2,2)");
   EXPECT_EQ(aService.GetAssociationStatus(), Status::Idle);
   EXPECT_EQ(aService.GetResultCode(), TN_CLOSED_BY_PEER);
}

TEST(PDU_ServiceStreams, WhatOutlivesTheAssociationFails)
{
   Scripted aService;
   ASSERT_TRUE(aService.Request(kGoodAnswer + PData(PDV(1, 2, kDataSet))));
   const std::unique_ptr<DICOMMessageOutputStream> aMessage(aService.CreateDICOMMessageOutputStream());
   const std::unique_ptr<InputTransferSyntax> aDecoder(aService.GetInputTransferSyntax());
   ASSERT_TRUE(aDecoder);
   aService.Close();
   EXPECT_THROW(aDecoder->NextVR(), StreamIOException);
   const unsigned char aByte = 0;
   aMessage->Write(&aByte, 1);
   EXPECT_THROW(
       {
          aMessage->FinishMessage();
          aMessage->FinishPDU();
          aMessage->FlushOutput();
       },
       StreamIOException);
   EXPECT_THROW(std::unique_ptr<DICOMMessageOutputStream>(aService.CreateDICOMMessageOutputStream()),
                StreamIOException);
}

TEST(PDU_ServiceContexts, TheBestContextIsChosen)
{
   const std::string kJ2K = "1.2.840.10008.1.2.4.90";
   Scripted aService;
   aService.SetLocalAddress("SCU");
   aService.SetRemoteAddress("SCP");
   for (const std::string& aSyntax : {kImplicit, kExplicit, kJ2K})
   {
      aService.AddPresentationContextProposal(kCT, aSyntax);
   }
   ASSERT_TRUE(aService.RequestAssociation(
       aService.Connect(Acceptance({{1, 0, kImplicit}, {3, 0, kExplicit}, {5, 0, kJ2K}})).release()));
   const struct
   {
      std::string itsSyntax;
      int itsChecksRejected, isEnabled;
      int itsID;
   } kCases[] = {
       {kJ2K, 0, 1, 5},      {kImplicit, 0, 1, 1}, {"1.2.840.10008.1.2.2", 0, 1, 3},
       {kBaseline, 1, 1, 0}, {kBaseline, 0, 1, 0}, {kJ2K, 1, 0, 3},
       {kJ2K, 0, 0, 5},
   };
   for (const auto& aCase : kCases)
   {
      PDU_Service::SetEnableCompressedTransferSyntax(aCase.isEnabled);
      EXPECT_EQ(aService.GetBestPresentationContextID(UID(kCT), UID(aCase.itsSyntax), aCase.itsChecksRejected),
                aCase.itsID)
          << aCase.itsSyntax;
   }
   PDU_Service::SetEnableCompressedTransferSyntax(1);
   aService.AddAbstractSyntaxAlias(UID("1.2.3"), UID(kCT));
   EXPECT_EQ(aService.GetUsablePresentationContextID(UID("1.2.3"), UID(kJ2K)), 5);
}

TEST(PDU_ServiceFile, ObjectsGetMetaInformation)
{
   Scripted aService;
   DICOMDataObject anObject;
   anObject.Push(TextElement(0x00020010, "old", VRCode::UI));
   EXPECT_FALSE(aService.MakeChapter10(anObject, "", GivenOrLittleEndianExplicitFile, nullptr));
   EXPECT_EQ(anObject.Entries(), 1U);
   EXPECT_TRUE(anObject.HasAttribute(0x0002, 0x0001));
   anObject.Push(TextElement(0x00080016, "1.2.3", VRCode::UI));
   anObject.Push(TextElement(0x00080018, "1.2.3.4", VRCode::UI));
   EXPECT_FALSE(aService.MakeChapter10(anObject, "", static_cast<DICOMFileType>(4), nullptr));
   EXPECT_TRUE(aService.MakeChapter10(anObject, "SOURCE", GivenOrLittleEndianExplicitFile, nullptr));
   EXPECT_EQ(TextOf(anObject, 0x00020002), "1.2.3");
   EXPECT_EQ(TextOf(anObject, 0x00020003), "1.2.3.4");
   EXPECT_EQ(TextOf(anObject, 0x00020010), kExplicit);
   EXPECT_EQ(anObject.GetVR(0x0002, 0x0016)->GetLength(), 16U);
}
} // namespace

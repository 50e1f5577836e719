#include "talvenor/association/PDU_Service.h"

#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "support/ScriptedService.h"
#include "talvenor/dataset/DICOMCommandObject.h"

namespace
{
using namespace ScriptedService;

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
       {"good", kGoodRequest, kAccepted},
       {"no limit of the peer", Request({{1, kCT, {kExplicit}}}, 0), kAccepted},
       {"limit too small",
        Request({{1, kCT, {kExplicit}}}, 5),
        {0, TN_MAX_LENGTH_TOO_SMALL, Status::Rejected, "RJ(1,1,1)"}},
       {"no syntax that we take", Request({{1, kCT, {kBaseline}}}), kNoContext},
       {"nothing taken and limit too small", Request({{1, kCT, {kBaseline}}}, 5), kNoContext},
       {"no roles", Request({{1, kCT, {kExplicit}}}, 16384, Role(kCT, 0, 0)), kNoContext},
       {"no contexts", Request({}), kNoContext},
       {"even context ID", Request({{2, kCT, {kExplicit}}}), Ended(TN_INVALID_ITEM, "")},
       {"the peer is gone", "", Ended(TN_END_OF_FILE, "")},
       {"half a request", kGoodRequest.substr(0, 90), Ended(TN_END_OF_FILE, "")},
       {"data first", PData(PDV(1, 3, "abcd")), Ended(TN_PDU_TYPE_MISMATCH, "")},
       {"no PDU at all", "GET / HTTP/1.1\r\n\r\n", Ended(TN_INVALID_PDU, "")},
       {"a length of 4 GiB", PDU(1, "", 0xFFFFFFFF), Ended(TN_PDU_LENGTH_MISMATCH, "")},
       {"a length of 0", PDU(1, ""), Ended(TN_END_OF_FILE, "")},
       {"a length that is short", PDU(1, kGoodRequest.substr(6), 70), Ended(TN_END_OF_FILE, "")},
       {"200 contexts", kTooManyContexts, kAccepted},
   };
   for (const auto& aCase : kCases)
   {
      Scripted aService;
      EXPECT_EQ(OutcomeOf(aService.Accept(aCase.itsInput), aService), aCase.itsOutcome) << aCase.itsName;
      EXPECT_EQ(aService.GetDULStream() != nullptr && aService.Connected(), aCase.itsOutcome.itsValue != 0);
   }
}

// PS3.8 9.3.3: the titles and the application context come back, the implementation class is that of the acceptor.
TEST(PDU_ServiceAccept, EchoesTheTitlesAndNamesTheImplementation)
{
   Scripted aService;
   ASSERT_TRUE(aService.Accept(kGoodRequest));
   EXPECT_EQ(aService.GetDULState(), PDU_Service::Sta2);
   EXPECT_EQ(aService.Sent().substr(10, 32), kGoodRequest.substr(10, 32));
   ImplementationClassUIDSubItem aClass;
   aService.GetImplementationClassUIDSubItem(aClass);
   EXPECT_NE(aService.Sent().find(Item(0x52, RWCString(aClass.GetName()))), std::string::npos);
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

// A service that takes no transfer syntax any more has the one that it has accepted for the same SOP class.
TEST(PDU_ServiceAccept, WhatIsAcceptedOnceIsAcceptedAgain)
{
   struct Once : Scripted
   {
      int CanYouHandleTransferSyntax(const TransferSyntaxItem&) override { return itsTimes-- > 0; }
      int itsTimes = 1;
   } aService;
   ASSERT_TRUE(
       aService.Accept(Request({{1, kCT, {kExplicit}}, {3, kVerification, {kExplicit}}, {5, kCT, {kExplicit}}})));
   EXPECT_EQ(aService.GetUsablePresentationContextCount(), 2U);
   EXPECT_EQ(aService.GetAcceptedContextList().back().GetResult(), 0);
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
       {"context rejected", Acceptance({{1, 3, kImplicit}}), Ended(TN_ALL_CONTEXTS_REJECTED, "RQ")},
       {"context not proposed", Acceptance({{3, 0, kExplicit}}), Ended(TN_ALL_CONTEXTS_REJECTED, "RQ")},
       {"no contexts", Acceptance({}), Ended(TN_ALL_CONTEXTS_REJECTED, "RQ")},
       {"aborted", Abort(2, 0), {0, TN_PEER_ABORTED, Status::AbortedByPeer, "RQ"}},
       {"closed", "", Ended(TN_CLOSED_BY_PEER, "RQ")},
       {"half an answer", kGoodAnswer.substr(0, 80), Ended(TN_END_OF_FILE, "RQ")},
       {"data", PData(PDV(1, 3, "abcd")), Ended(TN_UNEXPECTED_PDU, "RQ ABORT(2,1)")},
       {"nonsense", "HTTP/1.1 400 Bad Request", Ended(TN_INVALID_PDU, "RQ ABORT(2,1)")},
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
   aService.SetSystemErrorCode(5); // what a failure before has left
   EXPECT_EQ(aService.RequestAssociation(aService.Connect(kGoodAnswer).release()), 0);
   EXPECT_EQ(aService.GetResultCode(), TN_NO_ABSTRACT_SYNTAX);
   EXPECT_EQ(aService.GetSystemErrorCode(), 0);
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
       {"two requests", true, ReleaseRequest() + ReleaseRequest(),
        Ended(TN_UNEXPECTED_PDU, "RELEASE RELEASED ABORT(2,2)")},
       {"abort", true, Abort(0, 0), {0, TN_PEER_ABORTED, Status::AbortedByPeer, "RELEASE"}},
       {"request", true, kGoodRequest, Ended(TN_UNEXPECTED_PDU, "RELEASE ABORT(2,2)")},
       {"type 99", true, PDU(99, ""), {0, TN_INVALID_PDU, Status::ProtocolError, "RELEASE"}},
       {"end", true, "", Ended(TN_END_OF_FILE, "RELEASE")},
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
} // namespace

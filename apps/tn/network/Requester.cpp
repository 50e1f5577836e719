#include "apps/tn/network/Requester.h"

#include <algorithm>
#include <bitset>
#include <cerrno>
#include <cmath>
#include <memory>
#include <sstream>
#include <system_error>

#include <CLI/CLI.hpp>

#include "apps/tn/base/ExitCode.h"
#include "apps/tn/network/AssociationAnswers.h"
#include "apps/tn/network/NetworkFailure.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNXInitializer.h"
#include "talvenor/ul/SocketDULStream.h"

namespace
{
constexpr int kPollMilliseconds = 50; // after which a wait notices the watchdog
constexpr char kInterrupted[] = "interrupted";
constexpr double kLongestTimeout = 86400;

// Of those that we send; a peer may ask for shorter ones.
constexpr unsigned int kLongestPDU = 131072;

// The operating system's own buffers grow with the connection; any size that is set would be a limit.
constexpr int kBufferOfTheSystem = 0;

std::string Seconds(double theSeconds)
{
   std::ostringstream aText;
   aText << theSeconds << " s";
   return aText.str();
}

std::string ResultText(TNResultCode theCode, int theSystemErrorCode)
{
   return TNResult::Describe(theCode) +
          (theSystemErrorCode != 0 ? " " + std::system_category().message(theSystemErrorCode) : "");
}

std::string ConnectionText(const StreamIOException& theException)
{
   if (theException.GetResultCode() == TN_INVALID_ARGUMENT)
   {
      return "the name of the host is not known";
   }
   const int anError = theException.GetSystemErrorCode();
   return anError != 0 ? std::system_category().message(anError) : TNResult::Describe(theException.GetResultCode());
}

// The service takes what a peer accepts; a peer that accepts what nobody offered is not to be trusted with a dataset.
bool AreSyntaxesOffered(const PDU_Service& theService)
{
   PDU_Service::UsableContextList aContexts;
   theService.GetUsablePresentationContexts(aContexts);
   return std::all_of(aContexts.begin(), aContexts.end(), [&](const UsablePresentationContext& theContext) {
      const PresentationContextItem* const anOffer =
          theService.GetRequestedPresentationContextItem(theContext.GetPresentationContextID());
      const auto& aSyntaxes = anOffer->GetTransferSyntaxList();
      return std::any_of(aSyntaxes.begin(), aSyntaxes.end(), [&](const auto& theSyntax) {
         return theSyntax->GetUID() == theContext.GetTransferSyntaxUID();
      });
   });
}

// The ID of a context that the peer answers more than once, 0 for none: which of the answers holds nobody knows.
unsigned int FindDoubledAnswer(const AAssociateACPDU& theAnswer)
{
   std::bitset<256> aSeen;
   for (const PresentationContextAcceptItem& aContext : theAnswer.GetAcceptedContextList())
   {
      if (aSeen.test(aContext.PresentationContextID()))
      {
         return aContext.PresentationContextID();
      }
      aSeen.set(aContext.PresentationContextID());
   }
   return 0;
}
} // namespace

Requester::Requester(CLI::App& theOptions)
{
   AddPeer(theOptions, itsPeer);
   theOptions.add_option("--aet", itsTitle, "The calling AE title")
       ->type_name("TITLE")
       ->check(CheckTitle)
       ->capture_default_str();
   theOptions.add_option("--timeout", itsTimeout, "For connecting and for each answer as a whole; 0 waits for ever")
       ->type_name("SECONDS")
       ->check(CLI::Range(0.0, kLongestTimeout))
       ->capture_default_str();
   theOptions.add_option("--max-pdu", itsMaxPDU, "The longest PDU that the peer may send; 0 is without limit")
       ->type_name("BYTES")
       ->capture_default_str();
}

void Requester::SetDefaults() const
{
   const int aTimeout = static_cast<int>(std::ceil(itsTimeout));
   TNXInitializer::SetDefaultSocketTimeout(aTimeout);
   TNXInitializer::SetDefaultPDUARRTimer(aTimeout);
   TNXInitializer::SetDefaultMaxPDUReceiveLength(itsMaxPDU);
   TNXInitializer::SetDefaultMaxPDUSendLength(kLongestPDU);
   TNXInitializer::SetDefaultTCPSendBufferSize(kBufferOfTheSystem);
   TNXInitializer::SetDefaultTCPReceiveBufferSize(kBufferOfTheSystem);
   TNXInitializer::SetEnableReverseDNSLookup(0);
   Socket::SetDefaultConnectTimeout(aTimeout);
   Socket::SetDefaultAbortPollMilliseconds(kPollMilliseconds);
}

void Requester::Associate(PDU_Service& theService, Watchdog& theWatchdog) const
{
   auto aStream = std::make_unique<SocketDULStream>();
   theWatchdog.Watch(aStream->GetSocket());
   theWatchdog.Begin(GetTimeout());
   try
   {
      aStream->Open(itsPeer.itsHost, itsPeer.itsPort);
   }
   catch (const StreamIOException& anException)
   {
      const bool wasLate = theWatchdog.End();
      if (anException.GetResultCode() == TN_CANCELLED && !wasLate)
      {
         throw NetworkFailure(ExitCode::kCancelled, kInterrupted);
      }
      throw NetworkFailure(ExitCode::kNoConnection,
                           "no connection to " + itsPeer.itsHost + " port " + itsPeer.itsPort +
                               (wasLate ? " within " + Seconds(itsTimeout) : ": " + ConnectionText(anException)));
   }
   theWatchdog.End();

   theService.SetLocalAddress(itsTitle);
   theService.SetRemoteAddress(itsPeer.itsTitle);
   theWatchdog.Begin(GetTimeout());
   const int isAccepted = theService.RequestAssociation(aStream.release());
   const bool wasLate = theWatchdog.End();
   if (!isAccepted)
   {
      throw ExplainFailure(theService, wasLate);
   }
   if (const unsigned int anID = FindDoubledAnswer(theService))
   {
      Abort(theService, theWatchdog);
      throw NetworkFailure(ExitCode::kPeerFailed,
                           "the peer answers context " + std::to_string(anID) + " more than once");
   }
   if (!AreSyntaxesOffered(theService))
   {
      Abort(theService, theWatchdog);
      throw NetworkFailure(ExitCode::kNoContext, ExplainContexts(theService));
   }
}

void Requester::Abort(PDU_Service& theService, Watchdog& theWatchdog) const
{
   if (theService.Connected())
   {
      theWatchdog.Begin(std::chrono::seconds(1));
      theService.AbortAndWaitForTransportCloseOrTimeout(PDU_Service::AbortSourceServiceUser,
                                                        PDU_Service::AbortReasonNotSpecified);
      theWatchdog.End();
   }
}

NetworkFailure Requester::ExplainFailure(const PDU_Service& theService, bool wasLate) const
{
   const TNResultCode aCode = theService.GetResultCode();
   const std::string aText = ResultText(aCode, theService.GetSystemErrorCode());
   if (wasLate || aCode == TN_TRANSPORT_TIMED_OUT || aCode == TN_REQUEST_WAIT_TIMED_OUT)
   {
      return NetworkFailure(ExitCode::kTimedOut, "no answer within " + Seconds(itsTimeout));
   }
   if (aCode == TN_CANCELLED || theService.GetSystemErrorCode() == ECANCELED)
   {
      return NetworkFailure(ExitCode::kCancelled, kInterrupted);
   }
   switch (aCode)
   {
   case TN_ASSOCIATION_REJECTED: return NetworkFailure(ExitCode::kRejected, ExplainRejection(theService));
   case TN_ALL_CONTEXTS_REJECTED: return NetworkFailure(ExitCode::kNoContext, ExplainContexts(theService));
   case TN_PEER_ABORTED: return NetworkFailure(ExitCode::kPeerFailed, ExplainAbort(theService));
   case TN_PEER_RELEASED:
      return NetworkFailure(ExitCode::kPeerFailed, "the peer released the association instead of answering");
   case TN_END_OF_FILE:
   case TN_CLOSED_BY_PEER:
      return NetworkFailure(ExitCode::kNoConnection, "the peer closed the connection instead of answering");
   case TN_NOT_CONNECTED:
   case TN_SYSTEM_CALL_FAILED: return NetworkFailure(ExitCode::kNoConnection, "the connection is lost: " + aText);
   default: return NetworkFailure(ExitCode::kPeerFailed, "the answer cannot be understood: " + aText);
   }
}

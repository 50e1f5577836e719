#include "apps/tn/NodeService.h"

#include <iostream>
#include <mutex>

#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/services/Verification.h"

namespace
{
const char kVerification[] = "1.2.840.10008.1.1";
} // namespace

void NodeService::Serve(GuardedStream* theStream)
{
   GuardedStream& aStream = *theStream; // the service's, as long as the association lasts
   if (itsIsFull)
   {
      RefuseAssociationRequest(theStream, RejectedTransient, ServiceProviderPresentation, LocalLimitExceeded);
      Log("refused: too many associations");
      return;
   }
   if (!WaitForAssociationRequest(theStream))
   {
      Log("not associated: " + TNResult::Describe(GetResultCode()));
      return;
   }
   ServeCommands(aStream);
}

void NodeService::ServeCommands(GuardedStream& theStream)
{
   DICOMCommandObject aCommand;
   theStream.AwaitMessage();
   while (ReadCommand(aCommand))
   {
      if (!Verification().Read(*this, aCommand))
      {
         Log("aborted: " + TNResult::Describe(GetResultCode()));
         Abort(AbortSourceServiceUser, AbortReasonNotSpecified);
         break;
      }
      ++itsEchoes;
      theStream.AwaitMessage();
   }
   const TNResultCode aCode = GetResultCode();
   if (aCode == TN_PEER_RELEASED || GetAssociationStatus() == AbortedByUs)
   {
      theStream.AwaitEnd();
      WaitForTransportCloseOrTimeout();
   }
   Log(std::to_string(itsEchoes) + (itsEchoes == 1 ? " echo, " : " echoes, ") +
       (aCode == TN_PEER_RELEASED ? "released" : TNResult::Describe(aCode)));
   Close();
}

int NodeService::ShouldIAcceptAbstractSyntax(const AbstractSyntaxSubItem& theSyntax, unsigned char& theSCPRole,
                                             unsigned char& theSCURole)
{
   return theSyntax.GetName() == kVerification &&
          CheckedPDU_Service::ShouldIAcceptAbstractSyntax(theSyntax, theSCPRole, theSCURole);
}

// PS3.8 9.3.8. A peer that was silent, or is gone, needs no answer.
void NodeService::OnUnreadableRequest(TNResultCode theCode)
{
   switch (theCode)
   {
   case TN_CANCELLED:
   case TN_TRANSPORT_TIMED_OUT:
   case TN_SYSTEM_CALL_FAILED: return;
   case TN_INVALID_PDU: Abort(AbortSourceServiceProvider, AbortReasonUnrecognizedPDU); return;
   case TN_PDU_TYPE_MISMATCH: Abort(AbortSourceServiceProvider, AbortReasonUnexpectedPDU); return;
   default: Abort(AbortSourceServiceProvider, AbortReasonInvalidPDUParameter);
   }
}

void NodeService::Log(const std::string& theText) const
{
   static std::mutex aMutex;
   const std::lock_guard aLock(aMutex);
   const std::string aTitle = GetCallingAppTitle();
   std::cerr << OnOneLine((aTitle.empty() ? "?" : aTitle) + "@" + GetPeerIPAddress() + ": " + theText) + "\n"
             << std::flush;
}

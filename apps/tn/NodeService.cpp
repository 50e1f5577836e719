#include "apps/tn/NodeService.h"

#include <algorithm>

#include "apps/tn/NodeLog.h"
#include "apps/tn/Tags.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
constexpr UINT16 kCancel = 0x0FFF; // C-CANCEL-RQ (PS3.7 E.1)
} // namespace

NodeService::NodeService(const CheckedPDU_Service& thePrototype, const NodeRoleMakers& theRoles)
    : CheckedPDU_Service(thePrototype)
{
   for (const NodeRoleMaker& aMaker : theRoles)
   {
      itsRoles.push_back(aMaker());
   }
}

void NodeService::Serve(GuardedStream* theStream)
{
   GuardedStream& aStream = *theStream; // the service's, as long as the association lasts
   if (!WaitForAssociationRequest(theStream))
   {
      NodeLog::Line(*this, "not associated: " + TNResult::Describe(GetResultCode()));
      return;
   }
   ServeCommands(aStream);
}

void NodeService::Refuse(GuardedStream* theStream)
{
   RefuseAssociationRequest(theStream, RejectedTransient, ServiceProviderPresentation, LocalLimitExceeded);
   NodeLog::Line(*this, "refused: too many associations");
}

void NodeService::ServeCommands(GuardedStream& theStream)
{
   DICOMCommandObject aCommand;
   theStream.AwaitMessage();
   while (ReadCommand(aCommand))
   {
      if (!ServeCommand(aCommand))
      {
         NodeLog::Line(*this, "aborted: " + TNResult::Describe(GetResultCode()));
         Abort(AbortSourceServiceUser, AbortReasonNotSpecified);
         break;
      }
      theStream.AwaitMessage();
   }
   const TNResultCode aCode = GetResultCode();
   if (aCode == TN_PEER_RELEASED || GetAssociationStatus() == AbortedByUs)
   {
      theStream.AwaitEnd();
      WaitForTransportCloseOrTimeout();
   }
   NodeLog::Line(*this, Describe(aCode));
   Close();
}

// The abstract syntax of the context tells whom a command is for: its SOP class may be another one where the abstract
// syntax stands for several (PS3.4 H.3). A request to cancel comes too late: what it is about has been answered in full.
bool NodeService::ServeCommand(DICOMCommandObject& theCommand)
{
   UINT16 aField = 0;
   if (theCommand.GetUINT16(0, ElementOf(CommandTag::kCommandField), aField) && aField == kCancel)
   {
      return true;
   }
   const UsablePresentationContext* const aContext = GetCurrentPresentationContext();
   NodeRole* const aRole = aContext != nullptr ? FindRole(aContext->GetAbstractSyntaxUID().ToString()) : nullptr;
   if (aRole == nullptr)
   {
      SetResultCode(TN_SOP_CLASS_MISMATCH);
      return false;
   }
   return aRole->Serve(*this, theCommand) != 0;
}

NodeRole* NodeService::FindRole(const RWCString& theSOPClass) const
{
   const auto aPlace = std::find_if(itsRoles.begin(), itsRoles.end(),
                                    [&](const auto& theRole) { return theRole->Accepts(theSOPClass); });
   return aPlace == itsRoles.end() ? nullptr : aPlace->get();
}

std::string NodeService::Describe(TNResultCode theEnd) const
{
   std::string aText;
   for (const auto& aRole : itsRoles)
   {
      const std::string aPart = aRole->Describe();
      aText += aPart.empty() ? "" : aPart + ", ";
   }
   return aText + (theEnd == TN_PEER_RELEASED ? "released" : TNResult::Describe(theEnd));
}

int NodeService::ShouldIAcceptAbstractSyntax(const AbstractSyntaxSubItem& theSyntax, unsigned char& theSCPRole,
                                             unsigned char& theSCURole)
{
   return FindRole(theSyntax.GetName()) != nullptr &&
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

// The peer's first choice among those that the library decodes: it knows best which it need not convert into.
const TransferSyntaxItem* NodeService::GetPreferredTransferSyntax(const AbstractSyntaxSubItem&,
                                                                  const TransferSyntaxCandidates& theCandidates)
{
   const TransferSyntaxManager& aRegistry = TransferSyntaxManager::GetDefaultInstance();
   const auto aPlace =
       std::find_if(theCandidates.begin(), theCandidates.end(), [&](const TransferSyntaxItem& theCandidate) {
          return aRegistry.GetTransferSyntaxType(RWCString(theCandidate.GetUID())) != nullptr;
       });
   return aPlace == theCandidates.end() ? nullptr : &*aPlace;
}

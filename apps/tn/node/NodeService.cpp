#include "apps/tn/node/NodeService.h"

#include <algorithm>
#include <cerrno>

#include "apps/tn/base/Tags.h"
#include "apps/tn/node/NodeLog.h"
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
// syntax stands for several (PS3.4 H.3). A request to cancel comes too late: what it is about has been answered in
// full.
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
   SetLongestDataset(aRole->GetLongestDataset());
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
   if (theEnd == TN_CANCELLED || (theEnd == TN_CLOSED_BY_PEER && GetSystemErrorCode() == ECANCELED))
   {
      return aText + "ended from here: idle or slow for too long, or the node stops";
   }
   return aText + (theEnd == TN_PEER_RELEASED ? "released" : TNResult::Describe(theEnd));
}

// PS3.8 9.3.2: the bit of version 1, whatever else is offered.
int NodeService::ShouldIAcceptProtocolVersion(UINT16 theVersions)
{
   return theVersions & 1;
}

// DICOM's own (PS3.7 A.2.1), and any other one only where the policy lists it: a list refuses the empty name.
int NodeService::ShouldIAcceptApplicationContext(const ApplicationContextItem& theContext)
{
   const bool isListed = !CheckedPDU_Service::ShouldIAcceptApplicationContext(ApplicationContextItem());
   return CheckedPDU_Service::ShouldIAcceptApplicationContext(theContext) &&
          (isListed || theContext.GetName() == "1.2.840.10008.3.1.1.1");
}

// An ID stands for one context (PS3.8 9.3.2.2): nobody could tell to which of two a message belongs.
int NodeService::ShouldIAcceptPresentationContext(const PresentationContextItem& theContext,
                                                  const PresentationContextAcceptItem& theAnswer)
{
   return GetUsablePresentationContext(theContext.GetPresentationContextID()) == nullptr &&
          CheckedPDU_Service::ShouldIAcceptPresentationContext(theContext, theAnswer);
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

// The peer's first choice among those that the library decodes: it knows best which it need not convert into. None that
// is compressed where the role has to look at what comes: an image to be printed has to come with its pixels.
const TransferSyntaxItem* NodeService::GetPreferredTransferSyntax(const AbstractSyntaxSubItem& theAbstractSyntax,
                                                                  const TransferSyntaxCandidates& theCandidates)
{
   const TransferSyntaxManager& aRegistry = TransferSyntaxManager::GetDefaultInstance();
   const NodeRole* const aRole = FindRole(theAbstractSyntax.GetName());
   const bool takesCompressed = aRole == nullptr || aRole->TakesCompressed();
   const auto aPlace =
       std::find_if(theCandidates.begin(), theCandidates.end(), [&](const TransferSyntaxItem& theCandidate) {
          const TransferSyntaxType* const aType = aRegistry.GetTransferSyntaxType(RWCString(theCandidate.GetUID()));
          return aType != nullptr && (takesCompressed || !aType->IsEncapsulated());
       });
   return aPlace == theCandidates.end() ? nullptr : &*aPlace;
}

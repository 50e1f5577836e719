#include "apps/tn/NodeService.h"

#include <algorithm>
#include <iostream>
#include <mutex>

#include "apps/tn/Tags.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/foundation/OneLine.h"

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
      Log("not associated: " + TNResult::Describe(GetResultCode()));
      return;
   }
   ServeCommands(aStream);
}

void NodeService::Refuse(GuardedStream* theStream)
{
   RefuseAssociationRequest(theStream, RejectedTransient, ServiceProviderPresentation, LocalLimitExceeded);
   Log("refused: too many associations");
}

void NodeService::ServeCommands(GuardedStream& theStream)
{
   DICOMCommandObject aCommand;
   theStream.AwaitMessage();
   while (ReadCommand(aCommand))
   {
      if (!ServeCommand(aCommand))
      {
         Log("aborted: " + TNResult::Describe(GetResultCode()));
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
   Log(Describe(aCode));
   Close();
}

// A request to cancel comes too late: what it is about has been answered in full.
bool NodeService::ServeCommand(DICOMCommandObject& theCommand)
{
   UINT16 aField = 0;
   if (theCommand.GetUINT16(0, ElementOf(CommandTag::kCommandField), aField) && aField == kCancel)
   {
      return true;
   }
   const RWCString anAffected = TextOf(theCommand, CommandTag::kAffectedSOPClassUID);
   NodeRole* const aRole =
       FindRole(anAffected.empty() ? TextOf(theCommand, CommandTag::kRequestedSOPClassUID) : anAffected);
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

void NodeService::Log(const std::string& theText) const
{
   static std::mutex aMutex;
   const std::lock_guard aLock(aMutex);
   const std::string aTitle = GetCallingAppTitle();
   std::cerr << OnOneLine((aTitle.empty() ? "?" : aTitle) + "@" + GetPeerIPAddress() + ": " + theText) + "\n"
             << std::flush;
}

// The requester's side of establishing an association (PS3.8 7.1, 9.2).
#include "talvenor/association/AssociationTransport.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/association/PDU_ServiceTrace.h"
#include "talvenor/association/PresentationContextUsageManager.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/TransferSyntaxType.h"

int PDU_Service::RequestAssociation(DULStream* theStream)
{
   if (!TakeTransport(std::unique_ptr<DULStream>(theStream)))
   {
      TracePDU("PDU_Service::RequestAssociation(): ", "bad DULStream passed to us");
      return 0;
   }
   if (itsProposedContextCount == 0)
   {
      TracePDU("PDU_Service::Connect(): Error: No proposed presentation contexts added yet.");
      return Fail(TN_NO_ABSTRACT_SYNTAX);
   }
   const int isAccepted = Guarded([&] {
      ComposeRequest();
      TracePDU("PDU_Service::Connect(): Send AAssociateRQPDU:", static_cast<const AAssociateRQPDU&>(*this));
      if (!AAssociateRQPDU::Write(itsTransport->GetOutput()))
      {
         return Fail(TN_INVALID_ITEM); // a proposal without transfer syntaxes
      }
      return ReadAnswer();
   });
   if (!isAccepted)
   {
      CloseTransport();
   }
   return isAccepted;
}

void PDU_Service::ComposeRequest()
{
   AAssociateRQPDU& aRequest = *this;
   aRequest.ClearPresentationContexts();
   for (const auto& aProposals : itsProposals)
   {
      aProposals->AddToRequest(aRequest);
   }
   UserInformationItem& anInformation = aRequest.GetUserInformationItem();
   anInformation.SetMax(MaximumLengthSubItem(itsTransport->GetInput().GetMaxPDUReceiveLength()));
   ImplementationClassUIDSubItem aClass;
   GetImplementationClassUIDSubItem(aClass);
   anInformation.SetClass(aClass);
   ImplementationVersionNameSubItem aVersion;
   GetImplementationVersionNameSubItem(aVersion);
   anInformation.SetVersion(aVersion);
}

int PDU_Service::ReadAnswer()
{
   PDUInputStream& anInput = itsTransport->GetInput();
   try
   {
      if (!anInput.Start())
      {
         TracePDU("PDU_Service::Connect(): ",
                  "Received EOF on connection while reading PDU header (Closing transport)");
         return Fail(TN_CLOSED_BY_PEER);
      }
   }
   catch (const StreamIOException& anException)
   {
      if (anException.GetResultCode() != TN_INVALID_PDU && anException.GetResultCode() != TN_PDU_LENGTH_MISMATCH)
      {
         throw;
      }
      itsResultCode = anException.GetResultCode();
      return RefuseAnswer();
   }
   unsigned int aCount = 0;
   switch (anInput.GetPDUType())
   {
   case PDUInputStream::AAssociateAC: return TakeAcceptance();
   case PDUInputStream::AAssociateRJ: return TakeRejection();
   case PDUInputStream::AAbortRQ:
      AAbortRQPDU::ReadDynamic(anInput, aCount);
      itsStatus = AbortedByPeer;
      return Fail(TN_PEER_ABORTED);
   default: itsResultCode = TN_UNEXPECTED_PDU; return RefuseAnswer();
   }
}

// The result is what was wrong, whatever comes while waiting for the peer to close.
int PDU_Service::RefuseAnswer()
{
   SaveResultCodes();
   AbortAndWaitForTransportCloseOrTimeout(AbortSourceServiceProvider, AbortReasonUnrecognizedPDU);
   RestoreResultCodes();
   return 0;
}

int PDU_Service::TakeRejection()
{
   unsigned int aCount = 0;
   AAssociateRJPDU::ReadDynamic(itsTransport->GetInput(), aCount);
   TracePDU("PDU_Service::Connect(): Received AAssociateRJPDU (Rejection):",
            static_cast<const AAssociateRJPDU&>(*this));
   itsStatus = Rejected;
   return Fail(TN_ASSOCIATION_REJECTED);
}

int PDU_Service::TakeAcceptance()
{
   unsigned int aCount = 0;
   AAssociateACPDU::ReadDynamic(itsTransport->GetInput(), aCount);
   if (!InterogateAAssociateACPDU())
   {
      itsStatus = Idle;
      return Fail(TN_ALL_CONTEXTS_REJECTED);
   }
   SetSendLimit(AAssociateACPDU::GetUserInformationItem().GetMax().GetMaximumLength());
   itsTransport->GetStream().SetMaximumOutputBlockSize(itsTransport->GetOutput().GetMaxPDUSendLength());
   itsIsRequester = 1;
   itsResultCode = TN_NO_ERROR;
   return 1;
}

int PDU_Service::InterogateAAssociateACPDU()
{
   ClearContexts();
   for (const PresentationContextAcceptItem& anAnswer : GetAcceptedContextList())
   {
      TakeAcceptedContext(anAnswer);
   }
   itsStatus = itsUsableContexts.empty() ? Rejected : AcceptedAsRequester;
   return itsStatus == AcceptedAsRequester;
}

void PDU_Service::TakeAcceptedContext(const PresentationContextAcceptItem& theAnswer)
{
   const PresentationContextItem* const aRequested =
       GetRequestedPresentationContextItem(theAnswer.PresentationContextID());
   if (aRequested == nullptr)
   {
      return;
   }
   if (theAnswer.GetResult() != 0)
   {
      NoteRejectedSyntaxes(*aRequested);
      return;
   }
   const ULUID& anAbstract = aRequested->GetAbstractSyntax().GetName();
   if (!AreRolesAccepted(anAbstract))
   {
      return;
   }
   const ULUID& aTransfer = theAnswer.GetTransferSyntax().GetUID();
   itsAcceptedContexts.push_back(theAnswer);
   AddUsableContext(UsablePresentationContext(theAnswer.PresentationContextID(), UID(anAbstract), UID(aTransfer)));
   if (PresentationContextUsageManager::IsCompressed(RWCString(aTransfer)))
   {
      PresentationContextUsageManager::GetInstance().RemoveRejectedContext(GetCalledAppTitle(), RWCString(anAbstract),
                                                                           RWCString(aTransfer));
   }
}

namespace
{
// The first selection for the SOP class, null when there is none (PS3.7 D.3.3.4).
const SCPSCURoleSelectSubItem* FindRole(const UserInformationItem& theInformation, const ULUID& theSOPClass)
{
   for (const auto& aRole : theInformation.GetSCPSCURoleList())
   {
      if (aRole->Uid() == theSOPClass)
      {
         return &*aRole;
      }
   }
   return nullptr;
}
} // namespace

// A role that we asked for has to be answered as asked; without an answer the default holds: we are SCU only.
bool PDU_Service::AreRolesAccepted(const ULUID& theSOPClass) const
{
   const auto* const aRequested = FindRole(AAssociateRQPDU::GetUserInformationItem(), theSOPClass);
   const auto* const anAnswer = FindRole(AAssociateACPDU::GetUserInformationItem(), theSOPClass);
   if (aRequested == nullptr)
   {
      return true;
   }
   if (anAnswer == nullptr)
   {
      return aRequested->SCPRole() == 0;
   }
   return anAnswer->SCPRole() == aRequested->SCPRole() && anAnswer->SCURole() == aRequested->SCURole() &&
          (anAnswer->SCPRole() != 0 || anAnswer->SCURole() != 0);
}

void PDU_Service::NoteRejectedSyntaxes(const PresentationContextItem& theContext) const
{
   for (const auto& aSyntax : theContext.GetTransferSyntaxList())
   {
      const RWCString aTransfer(aSyntax->GetUID());
      if (PresentationContextUsageManager::IsCompressed(aTransfer))
      {
         PresentationContextUsageManager::GetInstance().AddRejectedContext(
             GetCalledAppTitle(), RWCString(theContext.GetAbstractSyntax().GetName()), aTransfer);
      }
   }
}

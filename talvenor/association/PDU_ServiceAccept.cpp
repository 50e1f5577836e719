// The acceptor's side of establishing an association (PS3.8 7.1, 9.2).
#include "talvenor/association/AssociationTransport.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/association/PDU_ServiceTrace.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
// A request is read whole into memory: without a limit of our own, the peer would set it.
constexpr unsigned int kLongestRequest = 1048576; // bytes

constexpr unsigned int kSmallestMaximum = 8; // bytes; a PDU that has room for a PDV with data

// PS3.8 9.3.3.2.
constexpr unsigned char kAccepted = 0;
constexpr unsigned char kUserRejected = 1;
constexpr unsigned char kAbstractSyntaxNotSupported = 3;
constexpr unsigned char kTransferSyntaxesNotSupported = 4;

// Bounds the length of a request while it is read, also where nothing else does.
class RequestLimit
{
public:
   explicit RequestLimit(PDUInputStream& theInput) : itsInput(theInput), itsLimit(theInput.GetMaxPDUReceiveLength())
   {
      if (itsLimit == 0 || itsLimit > kLongestRequest)
      {
         itsInput.SetMaxPDUReceiveLength(kLongestRequest);
      }
   }
   RequestLimit(const RequestLimit&) = delete;
   RequestLimit& operator=(const RequestLimit&) = delete;
   ~RequestLimit() { itsInput.SetMaxPDUReceiveLength(itsLimit); }

private:
   PDUInputStream& itsInput;
   unsigned int itsLimit;
};
} // namespace

int PDU_Service::WaitForAssociationRequest(DULStream* theStream)
{
   if (!TakeTransport(std::unique_ptr<DULStream>(theStream)))
   {
      return 0;
   }
   SetDULState(Sta2);
   if (!ReadRequest())
   {
      itsStatus = Idle;
      CloseTransport();
      return 0;
   }
   if (Guarded([&] { return RespondToAssociationRequest(); }))
   {
      return 1;
   }
   TraceResultCode("PDU_Service::WaitForAssociationRequest(): RespondToAssociationRequest() failed:");
   CloseTransport(); // a refusal stays Rejected
   return 0;
}

int PDU_Service::ReadRequest()
{
   try
   {
      const RequestLimit aLimit(itsTransport->GetInput());
      unsigned int aCount = 0;
      AAssociateRQPDU::Read(itsTransport->GetInput(), aCount);
   }
   catch (...)
   {
      TakeException();
      TraceResultCode("PDU_Service::HandleAssociationRequest(): Error while reading AAssociateRQPDU:");
      const bool isAbort = itsResultCode == TN_PDU_TYPE_MISMATCH &&
                           itsTransport->GetInput().GetPDUType() == PDUInputStream::AAbortRQ; // PS3.8 9.2.3, AA-2
      if (!isAbort)
      {
         SaveResultCodes();
         Guarded([&] {
            OnUnreadableRequest(itsResultCode);
            return 1;
         });
         RestoreResultCodes();
      }
      return 0;
   }
   if (gTNTracer(TNTrace::TNTracePDU))
   {
      startentry(gTNTracer) << "PDU_Service::WaitForAssociationRequest(): Received Association Request from host "
                            << OnOneLine(GetPeerName()) << "\n"
                            << endentry;
   }
   return 1;
}

int PDU_Service::RespondToAssociationRequest()
{
   if (const std::optional<Refusal> aRefusal = FindRefusal())
   {
      return Reject(*aRefusal);
   }
   PrepareAcceptance();
   DecideContexts();
   if (itsUsableContexts.empty())
   {
      itsStatus = Rejected;
      AAssociateACPDU::Write(itsTransport->GetOutput());
      return Fail(TN_ALL_CONTEXTS_REJECTED);
   }
   const UINT32 aMaximum = AAssociateRQPDU::GetUserInformationItem().GetMax().GetMaximumLength();
   if (aMaximum != 0 && aMaximum < kSmallestMaximum)
   {
      return Reject({ServiceUser, UserNotGiven, TN_MAX_LENGTH_TOO_SMALL});
   }
   AAssociateACPDU::Write(itsTransport->GetOutput());
   SetSendLimit(aMaximum);
   itsResultCode = TN_NO_ERROR;
   itsStatus = AcceptedAsAcceptor;
   return 1;
}

int PDU_Service::InterogateAAssociateRQPDU()
{
   if (const std::optional<Refusal> aRefusal = FindRefusal())
   {
      return Fail(aRefusal->itsCode);
   }
   PrepareAcceptance();
   DecideContexts();
   return itsUsableContexts.empty() ? Fail(TN_ALL_CONTEXTS_REJECTED) : 1;
}

// Nothing can be said of a request in another protocol. Otherwise all three are asked; of several reasons the last one
// stands.
std::optional<PDU_Service::Refusal> PDU_Service::FindRefusal()
{
   if (!ShouldIAcceptProtocolVersion(GetRequestedProtocolVersion()))
   {
      return Refusal{ServiceProviderACSE, ProtocolVersionNotSupported, TN_UNSUPPORTED};
   }
   std::optional<Refusal> aRefusal;
   if (!ShouldIAcceptLocalAppTitle(GetCalledAppTitle()))
   {
      aRefusal = Refusal{ServiceUser, CalledAETitleNotRecognized, TN_CALLED_AE_REJECTED};
   }
   if (!ShouldIAcceptRemoteAppTitle(GetCallingAppTitle()))
   {
      aRefusal = Refusal{ServiceUser, CallingAETitleNotRecognized, TN_CALLING_AE_REJECTED};
   }
   if (!ShouldIAcceptApplicationContext(AAssociateRQPDU::GetApplicationContext()))
   {
      aRefusal = Refusal{ServiceUser, ApplicationContextNameNotSupported, TN_APPLICATION_CONTEXT_REJECTED};
   }
   return aRefusal;
}

int PDU_Service::Reject(const Refusal& theRefusal)
{
   SendRejection(RejectedPermanent, theRefusal.itsSource, theRefusal.itsReason);
   return Fail(theRefusal.itsCode);
}

void PDU_Service::SendRejection(unsigned char theResult, unsigned char theSource, unsigned char theReason)
{
   AAssociateRJPDU& aRejection = *this;
   aRejection.SetResult(theResult);
   aRejection.SetSource(theSource);
   aRejection.SetReason(theReason);
   itsStatus = PDU_Service::Rejected;
   aRejection.Write(itsTransport->GetOutput());
}

int PDU_Service::RefuseAssociationRequest(DULStream* theStream, unsigned char theResult, unsigned char theSource,
                                          unsigned char theReason)
{
   if (!TakeTransport(std::unique_ptr<DULStream>(theStream)))
   {
      return 0;
   }
   const int isRefused = ReadRequest() && Guarded([&] {
                            SendRejection(theResult, theSource, theReason);
                            itsResultCode = TN_NO_ERROR;
                            return 1;
                         });
   CloseTransport();
   return isRefused;
}

void PDU_Service::PrepareAcceptance()
{
   AAssociateACPDU& anAcceptance = *this;
   const AAssociateRQPDU& aRequest = *this;
   anAcceptance.SetCalledAppTitle(aRequest.GetCalledAppTitle());
   anAcceptance.SetCallingAppTitle(aRequest.GetCallingAppTitle());
   anAcceptance.AAssociateACPDU::SetApplicationContext(aRequest.GetApplicationContext());
   anAcceptance.ClearPresentationContextAccepts();
   ClearContexts();
}

void PDU_Service::DecideContexts()
{
   for (const auto& aContext : PresentationContextList())
   {
      DecideContext(*aContext);
   }
   // The roles may have changed in the request's items, which the acceptance echoes.
   UserInformationItem anInformation = AAssociateRQPDU::GetUserInformationItem();
   const unsigned int aMaximum = itsTransport ? itsTransport->GetInput().GetMaxPDUReceiveLength()
                                              : PDUInputStream::GetDefaultMaxPDUReceiveLength();
   anInformation.SetMax(MaximumLengthSubItem(aMaximum));
   ImplementationClassUIDSubItem aClass;
   GetImplementationClassUIDSubItem(aClass);
   anInformation.SetClass(aClass);
   ImplementationVersionNameSubItem aVersion;
   GetImplementationVersionNameSubItem(aVersion);
   anInformation.SetVersion(aVersion);
   AAssociateACPDU::SetUserInformationItem(anInformation);
}

void PDU_Service::DecideContext(const PresentationContextItem& theContext)
{
   PresentationContextAcceptItem anAnswer;
   anAnswer.SetPresentationContextID(theContext.GetPresentationContextID());
   anAnswer.SetTransferSyntax(TransferSyntaxItem(TransferSyntaxType::TSLEImplicitUID)); // of no meaning in a refusal
   anAnswer.SetResult(kAbstractSyntaxNotSupported);
   if (IsAbstractSyntaxAccepted(theContext))
   {
      anAnswer.SetResult(kTransferSyntaxesNotSupported);
      if (const TransferSyntaxItem* const aSyntax = ChooseTransferSyntax(theContext))
      {
         PresentationContextAcceptItem anAcceptance = anAnswer;
         anAcceptance.SetTransferSyntax(*aSyntax);
         anAcceptance.SetResult(kAccepted);
         anAnswer.SetResult(kUserRejected);
         if (ShouldIAcceptPresentationContext(theContext, anAcceptance))
         {
            anAnswer = anAcceptance;
            AddUsableContext(UsablePresentationContext(theContext.GetPresentationContextID(),
                                                       UID(theContext.GetAbstractSyntax().GetName()),
                                                       UID(aSyntax->GetUID())));
         }
      }
   }
   if (anAnswer.GetResult() == kAccepted)
   {
      itsAcceptedContexts.push_back(anAnswer);
   }
   AddPresentationContextAccept(anAnswer);
}

bool PDU_Service::IsAbstractSyntaxAccepted(const PresentationContextItem& theContext)
{
   const ULUID& aSyntax = theContext.GetAbstractSyntax().GetName();
   SCPSCURoleSelectSubItem* aSelection = nullptr;
   for (const auto& aRole : AAssociateRQPDU::GetUserInformationItem().GetSCPSCURoleList())
   {
      if (aSelection == nullptr && aRole->Uid() == aSyntax)
      {
         aSelection = &*aRole;
      }
   }
   unsigned char aSCURole = aSelection != nullptr ? aSelection->SCURole() : 1;
   unsigned char aSCPRole = aSelection != nullptr ? aSelection->SCPRole() : 0;
   if (aSCURole == 0 && aSCPRole == 0)
   {
      return false;
   }
   const int isAccepted = ShouldIAcceptAbstractSyntax(theContext.GetAbstractSyntax(), aSCPRole, aSCURole);
   if (aSelection != nullptr)
   {
      aSelection->SetSCURole(aSCURole);
      aSelection->SetSCPRole(aSCPRole);
   }
   return isAccepted && (aSCURole != 0 || aSCPRole != 0);
}

// Null when none can be used. The item belongs to theContext.
const TransferSyntaxItem* PDU_Service::ChooseTransferSyntax(const PresentationContextItem& theContext)
{
   const auto& aProposed = theContext.GetTransferSyntaxList();
   const auto aFind = [&](const auto& theCondition) -> const TransferSyntaxItem* {
      for (const auto& aSyntax : aProposed)
      {
         if (theCondition(*aSyntax))
         {
            return &*aSyntax;
         }
      }
      return nullptr;
   };
   TransferSyntaxCandidates aCandidates;
   for (const auto& aSyntax : aProposed)
   {
      if (CanYouHandleTransferSyntax(*aSyntax))
      {
         aCandidates.push_back(*aSyntax);
      }
   }
   if (!aCandidates.empty())
   {
      const TransferSyntaxItem* const aChoice = GetPreferredTransferSyntax(theContext.GetAbstractSyntax(), aCandidates);
      return aChoice == nullptr ? nullptr
                                : aFind([&](const TransferSyntaxItem& theItem) { return theItem == *aChoice; });
   }
   const UID anAbstract(theContext.GetAbstractSyntax().GetName());
   return aFind([&](const TransferSyntaxItem& theItem) {
      return GetUsablePresentationContext(anAbstract, UID(theItem.GetUID())) != nullptr;
   });
}

int PDU_Service::CanYouHandleTransferSyntax(const TransferSyntaxItem& theSyntax)
{
   return theSyntax.GetUID() == TransferSyntaxType::TSLEExplicitUID ||
          theSyntax.GetUID() == TransferSyntaxType::TSLEImplicitUID;
}

const TransferSyntaxItem* PDU_Service::GetPreferredTransferSyntax(const AbstractSyntaxSubItem&,
                                                                  const TransferSyntaxCandidates& theCandidates)
{
   using Type = TransferSyntaxType;
   const auto isSyntax = [](const RWCString& theUID) {
      return [&theUID](const Type& theType) { return theType.GetUID() == theUID; };
   };
   const std::function<bool(const Type&)> kPreferences[] = {
       isSyntax(Type::TSJPEG2KLosslessUID), isSyntax(Type::TSJPEG70UID),
       isSyntax(Type::TSJPEG57UID),         isSyntax(Type::TSRLEUID),
       isSyntax(Type::TSJPEG2KUID),         [](const Type& theType) { return theType.IsLosslessCompressed() != 0; },
       isSyntax(Type::TSLEExplicitUID),     isSyntax(Type::TSLEImplicitUID),
   };
   const TransferSyntaxManager& aRegistry = TransferSyntaxManager::GetDefaultInstance();
   for (const auto& isPreferred : kPreferences)
   {
      for (const TransferSyntaxItem& aCandidate : theCandidates)
      {
         const Type* const aType = aRegistry.GetTransferSyntaxType(RWCString(aCandidate.GetUID()));
         if (aType != nullptr && isPreferred(*aType))
         {
            return &aCandidate;
         }
      }
   }
   return nullptr;
}

void PDU_Service::AddTransferSyntaxes(PresentationContextItem& theContext)
{
   theContext.AddTransferSyntax(TransferSyntaxType::TSLEExplicitUID);
   theContext.AddTransferSyntax(TransferSyntaxType::TSLEImplicitUID);
}

int PDU_Service::ShouldIAcceptProtocolVersion(UINT16)
{
   return 1;
}

int PDU_Service::ShouldIAcceptRemoteAppTitle(const RWCString&)
{
   return 1;
}

int PDU_Service::ShouldIAcceptLocalAppTitle(const RWCString&)
{
   return 1;
}

int PDU_Service::ShouldIAcceptApplicationContext(const ApplicationContextItem&)
{
   return 1;
}

int PDU_Service::ShouldIAcceptPresentationContext(const PresentationContextItem&, const PresentationContextAcceptItem&)
{
   return 1;
}

int PDU_Service::ShouldIAcceptAbstractSyntax(const AbstractSyntaxSubItem&, unsigned char& theSCPRole,
                                             unsigned char& theSCURole)
{
   return theSCPRole != 0 || theSCURole != 0;
}

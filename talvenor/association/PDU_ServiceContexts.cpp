// The presentation contexts of an association: proposals, what may be used, and the choice among them.
#include "talvenor/association/PDU_Service.h"
#include "talvenor/association/PresentationContextUsageManager.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
constexpr unsigned int kMaximumContexts = 128; // the odd numbers of a byte (PS3.8 9.3.2.2)
}

int PDU_Service::AddPresentationContextProposal(const RWCString& theAbstractSyntax, const RWCString& theTransferSyntax)
{
   auto aProposals = std::make_unique<PresentationContextProposals>(theAbstractSyntax);
   aProposals->AddTransferSyntaxList(new PresentationContextProposals::TransferSyntaxList{theTransferSyntax});
   return AddPresentationContextProposals(aProposals.release());
}

int PDU_Service::AddPresentationContextProposals(PresentationContextProposals* theProposals)
{
   std::unique_ptr<PresentationContextProposals> aProposals(theProposals);
   if (!aProposals || itsProposedContextCount + aProposals->GetPresentationContextCount() > kMaximumContexts)
   {
      return 0;
   }
   itsProposedContextCount += static_cast<unsigned int>(aProposals->GetPresentationContextCount());
   itsProposals.push_back(std::move(aProposals));
   return 1;
}

void PDU_Service::SetProposedPresentationContexts(ProposalList*& theProposals)
{
   const std::unique_ptr<ProposalList> aList(std::exchange(theProposals, nullptr));
   ClearProposedPresentationContexts();
   if (aList)
   {
      for (PresentationContextProposals* const aProposals : *aList)
      {
         AddPresentationContextProposals(aProposals);
      }
   }
}

void PDU_Service::SetProposedPresentationContexts(const ProposalList& theProposals)
{
   ClearProposedPresentationContexts();
   for (const PresentationContextProposals* const aProposals : theProposals)
   {
      AddPresentationContextProposals(aProposals != nullptr ? new PresentationContextProposals(*aProposals) : nullptr);
   }
}

void PDU_Service::ClearProposedPresentationContexts()
{
   itsProposals.clear();
   itsProposedContextCount = 0;
}

unsigned char PDU_Service::GetRequestedPresentationContextID(const UID& theAbstractSyntax) const
{
   for (const auto& aContext : PresentationContextList())
   {
      if (aContext->GetAbstractSyntax().GetName() == theAbstractSyntax)
      {
         return aContext->GetPresentationContextID();
      }
   }
   return 0;
}

int PDU_Service::GetRequestedAbstractSyntaxUID(unsigned char theID, UID& theAbstractSyntax) const
{
   const PresentationContextItem* const aContext = GetRequestedPresentationContextItem(theID);
   if (aContext == nullptr)
   {
      return 0;
   }
   theAbstractSyntax = UID(aContext->GetAbstractSyntax().GetName());
   return 1;
}

void PDU_Service::AddUsableContext(const UsablePresentationContext& theContext)
{
   itsUsableContexts.push_back(theContext);
   const ContextKey aKey{theContext.GetAbstractSyntaxUID().ToString(), theContext.GetTransferSyntaxUID().ToString()};
   itsUsableContextIndex.emplace(aKey, &itsUsableContexts.back()); // the first one stays
}

void PDU_Service::ClearContexts()
{
   itsAcceptedContexts.clear();
   itsUsableContextIndex.clear();
   itsUsableContexts.clear();
   itsCurrentContext.reset();
}

const UsablePresentationContext* PDU_Service::GetUsablePresentationContext(unsigned char theID) const
{
   for (const UsablePresentationContext& aContext : itsUsableContexts)
   {
      if (aContext.GetPresentationContextID() == theID)
      {
         return &aContext;
      }
   }
   return nullptr;
}

const UsablePresentationContext* PDU_Service::GetUsablePresentationContext(const UID& theAbstractSyntax,
                                                                           const UID& theTransferSyntax) const
{
   const auto aPlace = itsUsableContextIndex.find({theAbstractSyntax.ToString(), theTransferSyntax.ToString()});
   return aPlace != itsUsableContextIndex.end() ? aPlace->second : nullptr;
}

unsigned char PDU_Service::GetUsablePresentationContextID(const UID& theAbstractSyntax,
                                                          const UID& theTransferSyntax) const
{
   const UsablePresentationContext* const aContext = GetUsablePresentationContext(theAbstractSyntax, theTransferSyntax);
   return aContext != nullptr ? aContext->GetPresentationContextID() : 0;
}

unsigned char PDU_Service::GetUsablePresentationContextID(const UID& theAbstractSyntax) const
{
   for (const UsablePresentationContext& aContext : itsUsableContexts)
   {
      if (aContext == theAbstractSyntax)
      {
         return aContext.GetPresentationContextID();
      }
   }
   return 0;
}

int PDU_Service::GetUsablePresentationContexts(const UID& theAbstractSyntax, UsableContextList& theContexts) const
{
   theContexts.clear();
   for (const UsablePresentationContext& aContext : itsUsableContexts)
   {
      if (aContext == theAbstractSyntax)
      {
         theContexts.push_back(aContext);
      }
   }
   return !theContexts.empty();
}

int PDU_Service::GetUsablePresentationContexts(UsableContextList& theContexts) const
{
   theContexts.assign(itsUsableContexts.begin(), itsUsableContexts.end());
   return !theContexts.empty();
}

int PDU_Service::GetUsablePresentationContextInfo(unsigned char theID, UsablePresentationContext& theContext) const
{
   const UsablePresentationContext* const aContext = GetUsablePresentationContext(theID);
   if (aContext == nullptr)
   {
      return 0;
   }
   theContext = *aContext;
   return 1;
}

int PDU_Service::GetUsableTransferSyntaxUID(unsigned char theID, UID& theTransferSyntax) const
{
   const UsablePresentationContext* const aContext = GetUsablePresentationContext(theID);
   if (aContext == nullptr)
   {
      return 0;
   }
   theTransferSyntax = aContext->GetTransferSyntaxUID();
   return 1;
}

const UsablePresentationContext* PDU_Service::GetCurrentPresentationContext() const
{
   return itsCurrentContext ? &*itsCurrentContext : nullptr;
}

unsigned char PDU_Service::GetCurrentPresentationContextID() const
{
   return itsCurrentContext ? itsCurrentContext->GetPresentationContextID() : 0;
}

int PDU_Service::SetCurrentPresentationContextID(unsigned char theID)
{
   const UsablePresentationContext* const aContext = GetUsablePresentationContext(theID);
   if (aContext == nullptr)
   {
      return 0;
   }
   itsCurrentContext = *aContext;
   return 1;
}

void PDU_Service::AddAbstractSyntaxAlias(const UID& theAlias, const UID& theAbstractSyntax)
{
   UsableContextList aContexts;
   GetUsablePresentationContexts(theAbstractSyntax, aContexts);
   for (UsablePresentationContext& aContext : aContexts)
   {
      aContext.SetAbstractSyntaxUID(theAlias);
      if (std::find(itsUsableContexts.begin(), itsUsableContexts.end(), aContext) == itsUsableContexts.end())
      {
         AddUsableContext(aContext);
      }
   }
}

const UsablePresentationContext* PDU_Service::GetBestPresentationContext(const UID& theAbstractSyntax,
                                                                         const UID& theTransferSyntax,
                                                                         int theCheckRejected) const
{
   using Type = TransferSyntaxType;
   const bool isEnabled = GetEnableCompressedTransferSyntax() != 0;
   const UsablePresentationContext* anExact = nullptr;
   const UsablePresentationContext* aFallback = nullptr; // explicit VR rather than implicit
   for (const UsablePresentationContext& aContext : itsUsableContexts)
   {
      if (!(aContext == theAbstractSyntax))
      {
         continue;
      }
      const UID& aSyntax = aContext.GetTransferSyntaxUID();
      if (aSyntax == theTransferSyntax)
      {
         anExact = &aContext;
         if (isEnabled)
         {
            break;
         }
      }
      if (aSyntax == Type::TSLEExplicitUID || (aSyntax == Type::TSLEImplicitUID && aFallback == nullptr))
      {
         aFallback = &aContext;
      }
   }
   if (isEnabled && anExact != nullptr)
   {
      return anExact;
   }
   const auto isRejected = [&] {
      return PresentationContextUsageManager::GetInstance().IsRejectedContext(
          GetRemoteAddress(), theAbstractSyntax.ToString(), theTransferSyntax.ToString());
   };
   if ((theCheckRejected && (!isEnabled || isRejected())) || Type::IsUncompressed(theTransferSyntax.ToString()))
   {
      return aFallback;
   }
   return anExact;
}

unsigned char PDU_Service::GetBestPresentationContextID(const UID& theAbstractSyntax, const UID& theTransferSyntax,
                                                        int theCheckRejected) const
{
   const UsablePresentationContext* const aContext =
       GetBestPresentationContext(theAbstractSyntax, theTransferSyntax, theCheckRejected);
   return aContext != nullptr ? aContext->GetPresentationContextID() : 0;
}

#include "talvenor/association/PresentationContextProposals.h"

#include <algorithm>
#include <memory>

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/ul/AAssociateRQPDU.h"
#include "talvenor/ul/PresentationContextItem.h"

void PresentationContextProposals::AddTransferSyntaxList(TransferSyntaxList* theList)
{
   const std::unique_ptr<TransferSyntaxList> aList(theList);
   if (!aList)
   {
      throw TNRuntimeException("PresentationContextProposals: error: AddTransferSyntaxList(null) attempted");
   }
   if (!ContainsTransferSyntaxList(*aList))
   {
      itsLists.push_back(std::move(*aList));
   }
}

void PresentationContextProposals::AddTransferSyntax(const RWCString& theUID)
{
   AddTransferSyntaxList(new TransferSyntaxList{theUID});
}

PresentationContextProposals::TransferSyntaxList*
PresentationContextProposals::RemoveTransferSyntaxList(const TransferSyntaxList& theList)
{
   const auto aPlace = std::find(itsLists.begin(), itsLists.end(), theList);
   if (aPlace == itsLists.end())
   {
      return nullptr;
   }
   auto aList = std::make_unique<TransferSyntaxList>(std::move(*aPlace));
   itsLists.erase(aPlace);
   return aList.release();
}

int PresentationContextProposals::ContainsTransferSyntaxList(const TransferSyntaxList& theList) const
{
   return std::find(itsLists.begin(), itsLists.end(), theList) != itsLists.end();
}

int PresentationContextProposals::ContainsTransferSyntax(const RWCString& theUID) const
{
   return std::any_of(itsLists.begin(), itsLists.end(), [&](const TransferSyntaxList& theList) {
      return std::find(theList.begin(), theList.end(), theUID) != theList.end();
   });
}

void PresentationContextProposals::ClearTransferSyntaxes()
{
   itsLists.clear();
}

void PresentationContextProposals::AddToRequest(AAssociateRQPDU& theRequest) const
{
   constexpr unsigned int kMaximumContexts = 128; // the odd numbers of a byte
   for (const TransferSyntaxList& aList : itsLists)
   {
      if (theRequest.GetPresentationContextCount() >= kMaximumContexts)
      {
         return;
      }
      auto aContext = std::make_unique<PresentationContextItem>();
      aContext->SetAbstractSyntax(itsAbstractSyntax);
      for (const RWCString& aSyntax : aList)
      {
         aContext->AddTransferSyntax(aSyntax);
      }
      theRequest.AddPresentationContext(aContext.release());
   }
}

RWCString PresentationContextProposals::ToString() const
{
   RWCString aText = "Abstract Syntax: " + OnOneLine(itsAbstractSyntax) + "\n";
   for (const TransferSyntaxList& aList : itsLists)
   {
      aText += "\tTransfer Syntaxes:";
      for (const RWCString& aSyntax : aList)
      {
         aText += " " + OnOneLine(aSyntax);
      }
      aText += "\n";
   }
   return aText;
}

// Presentation context item of an A-ASSOCIATE-AC (PS3.8 9.3.3.2): the answer to one context, by its ID. The transfer
// syntax means something only with result 0; it is sent always.
#pragma once

#include "talvenor/ul/TransferSyntaxItem.h"

class TALVENOR_API PresentationContextAcceptItem : public ULItem<PresentationContextAcceptItem>
{
public:
   static constexpr unsigned char itsItemType = 0x21;

   PresentationContextAcceptItem() = default;
   PresentationContextAcceptItem(unsigned char theID, unsigned char theResult, const TransferSyntaxItem& theSyntax)
       : itsID(theID), itsResult(theResult), itsTransferSyntax(theSyntax)
   {}

   bool operator==(const PresentationContextAcceptItem& theOther) const = default;

   unsigned char PresentationContextID() const { return itsID; }
   void SetPresentationContextID(unsigned char theID) { itsID = theID; }

   // PS3.8 table 9-18: 0 accepted, 1 rejected by the user, 2 by the provider, 3 abstract syntax not supported, 4
   // transfer syntaxes not supported.
   unsigned char GetResult() const { return itsResult; }
   void SetResult(unsigned char theResult) { itsResult = theResult; }

   const TransferSyntaxItem& GetTransferSyntax() const { return itsTransferSyntax; }
   void SetTransferSyntax(const TransferSyntaxItem& theSyntax) { itsTransferSyntax = theSyntax; }

private:
   friend class ULItem<PresentationContextAcceptItem>;
   template <class Self, class Visitor>
   static int Fields(Self& theItem, Visitor& theVisitor);

   unsigned char itsID = 0;
   unsigned char itsResult = 2;
   TransferSyntaxItem itsTransferSyntax;
};

extern template class ULItem<PresentationContextAcceptItem>;

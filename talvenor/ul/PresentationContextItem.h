// Presentation context item of an A-ASSOCIATE-RQ (PS3.8 9.3.2.2): an abstract syntax and the transfer syntaxes that are
// offered for it. One without transfer syntax can be received, but not sent.
#pragma once

#include "talvenor/ul/AbstractSyntaxSubItem.h"
#include "talvenor/ul/OwnedList.h"
#include "talvenor/ul/TransferSyntaxItem.h"

class TALVENOR_API PresentationContextItem : public ULItem<PresentationContextItem>
{
public:
   static constexpr unsigned char itsItemType = 0x20;

   PresentationContextItem() = default;
   explicit PresentationContextItem(unsigned char theID,
                                    const AbstractSyntaxSubItem& theSyntax = AbstractSyntaxSubItem())
       : itsID(theID), itsAbstractSyntax(theSyntax)
   {}

   bool operator==(const PresentationContextItem& theOther) const = default;

   unsigned char PresentationContextID() const { return itsID; }
   unsigned char GetPresentationContextID() const { return itsID; }
   // Odd (PS3.8 9.3.2.2). A request numbers its contexts itself.
   void SetPresentationContextID(unsigned char theID) { itsID = theID; }

   const AbstractSyntaxSubItem& GetAbstractSyntax() const { return itsAbstractSyntax; }
   // A text, a UID or a ULUID.
   void SetAbstractSyntax(const ULUID& theUID) { itsAbstractSyntax.Set(theUID); }
   void SetAbstractSyntax(const AbstractSyntaxSubItem& theSyntax) { itsAbstractSyntax = theSyntax; }

   const OwnedList<TransferSyntaxItem>& GetTransferSyntaxList() const { return itsTransferSyntaxes; }
   // Appends a copy. A text, a UID or a ULUID.
   void AddTransferSyntax(const ULUID& theUID) { itsTransferSyntaxes.push_back(TransferSyntaxItem(theUID)); }
   void AddTransferSyntax(const TransferSyntaxItem& theSyntax) { itsTransferSyntaxes.push_back(theSyntax); }

private:
   friend class ULItem<PresentationContextItem>;
   template <class Self, class Visitor>
   static int Fields(Self& theItem, Visitor& theVisitor);

   unsigned char itsID = 0;
   AbstractSyntaxSubItem itsAbstractSyntax;
   OwnedList<TransferSyntaxItem> itsTransferSyntaxes;
};

extern template class ULItem<PresentationContextItem>;

// What a requester proposes for one abstract syntax: one or more lists of transfer syntaxes. Each list becomes one
// presentation context of the A-ASSOCIATE-RQ (PS3.8 9.3.2.2), for which the acceptor picks one of the list's syntaxes;
// so several lists ask for several contexts of the same abstract syntax. UIDs are texts, compared exactly.
//
// A value. Not locked.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class AAssociateRQPDU;

class TALVENOR_API PresentationContextProposals
{
public:
   using TransferSyntaxList = RWTValOrderedVector<RWCString>;

   explicit PresentationContextProposals(const RWCString& theAbstractSyntax) : itsAbstractSyntax(theAbstractSyntax) {}

   // Takes theList; one that is equal to a list held already is destroyed. Throws TNRuntimeException for null.
   void AddTransferSyntaxList(TransferSyntaxList* theList);

   // Removes the list that is equal to theList and returns it, owned by the caller; null when there is none.
   TransferSyntaxList* RemoveTransferSyntaxList(const TransferSyntaxList& theList);

   int ContainsTransferSyntaxList(const TransferSyntaxList& theList) const;
   int ContainsTransferSyntax(const RWCString& theUID) const; // in any of the lists
   void ClearTransferSyntaxes();

   const RWCString& GetAbstractSyntax() const { return itsAbstractSyntax; }
   const RWTValOrderedVector<TransferSyntaxList>& GetTransferSyntaxLists() const { return itsLists; }
   unsigned int GetPresentationContextCount() const { return static_cast<unsigned int>(itsLists.size()); }

   // Adds one presentation context for each list in order, as long as the request has fewer than 128; the rest is left
   // out silently.
   void AddToRequest(AAssociateRQPDU& theRequest) const;

   // The abstract syntax, and indented below it one line for each list. UIDs may come from a peer: control characters
   // are written as full stops.
   RWCString ToString() const;

   // The same abstract syntax and the same lists in the same order.
   bool operator==(const PresentationContextProposals& theOther) const = default;

   // An addition: adds a list that holds this one syntax.
   void AddTransferSyntax(const RWCString& theUID);

private:
   RWCString itsAbstractSyntax;
   RWTValOrderedVector<TransferSyntaxList> itsLists; // no two equal
};

// The proposals of one association, in the order of its presentation contexts. Who holds the list owns them.
using PresentationContextProposalsList = RWTValOrderedVector<PresentationContextProposals*>;

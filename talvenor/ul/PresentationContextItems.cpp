#include "talvenor/ul/PresentationContextAcceptItem.h"
#include "talvenor/ul/PresentationContextItem.h"
#include "talvenor/ul/ULItemBodies.h"

// PS3.8 9.3.2.2. The abstract syntax comes first, also on receipt.
template <class Self, class Visitor>
int PresentationContextItem::Fields(Self& theItem, Visitor& theVisitor)
{
   return theVisitor.Number(nullptr, theItem.itsID) && theVisitor.Reserved("Reserved", 3) &&
          theVisitor.SubItem(theItem.itsAbstractSyntax, "::ReadDynamic: EOF while reading body") &&
          theVisitor.OneOrMore("Transfer Syntax(es)", theItem.itsTransferSyntaxes,
                               "::ReadDynamic: EOF while reading transfer syntax item");
}

RWCString HeadingDetail(const PresentationContextItem& theItem)
{
   return std::to_string(theItem.PresentationContextID());
}

namespace
{
// PS3.8 table 9-18.
const char* ResultText(unsigned char theResult)
{
   constexpr const char* kTexts[] = {
       "Accepted",
       "Rejected (User Rejected)",
       "Rejected (Provider No-Reason)",
       "Rejected (Provider Abstract-Syntax-Not-Supported)",
       "Rejected (Provider Transfer-Syntaxes-Not-Supported)",
   };
   return theResult < std::size(kTexts) ? kTexts[theResult] : "Invalid Result Code";
}
} // namespace

// PS3.8 9.3.3.2.
template <class Self, class Visitor>
int PresentationContextAcceptItem::Fields(Self& theItem, Visitor& theVisitor)
{
   return theVisitor.AtLeast(4, "::ReadDynamic: Length smaller than required items") &&
          theVisitor.Number("Presentation Context ID", theItem.itsID) && theVisitor.Reserved("Reserved2", 1) &&
          theVisitor.Coded("Result", theItem.itsResult, ResultText(theItem.itsResult)) &&
          theVisitor.Reserved("Reserved4", 1) &&
          theVisitor.SyntaxIfAccepted(theItem.itsTransferSyntax, theItem.itsResult == 0);
}

template class ULItem<PresentationContextItem>;
template class ULItem<PresentationContextAcceptItem>;

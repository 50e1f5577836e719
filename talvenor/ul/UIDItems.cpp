// The four items that are a UID.
#include "talvenor/ul/AbstractSyntaxSubItem.h"
#include "talvenor/ul/ApplicationContextItem.h"
#include "talvenor/ul/ImplementationClassUIDSubItem.h"
#include "talvenor/ul/TransferSyntaxItem.h"
#include "talvenor/ul/ULItemBodies.h"

namespace
{
constexpr const char* UIDLabel(unsigned char theItemType)
{
   switch (theItemType)
   {
   case ApplicationContextItem::itsItemType: return "Application Context";
   case AbstractSyntaxSubItem::itsItemType: return "Abstract Syntax";
   case TransferSyntaxItem::itsItemType: return "Transfer Syntax";
   default: return "Implementation Class";
   }
}
} // namespace

// PS3.8 9.3.2.1 and others: the characters, without padding.
template <class Item>
template <class Self, class Visitor>
int UIDItem<Item>::Fields(Self& theItem, Visitor& theVisitor)
{
   return theVisitor.UIDText(UIDLabel(Item::itsItemType), theItem.itsUID);
}

template class ULItem<ApplicationContextItem>;
template class ULItem<AbstractSyntaxSubItem>;
template class ULItem<TransferSyntaxItem>;
template class ULItem<ImplementationClassUIDSubItem>;

// Abstract syntax sub-item (PS3.8 9.3.2.2.1): the SOP class for which a presentation context is.
#pragma once

#include "talvenor/ul/UIDItem.h"

class TALVENOR_API AbstractSyntaxSubItem : public UIDItem<AbstractSyntaxSubItem>
{
public:
   static constexpr unsigned char itsItemType = 0x30;

   AbstractSyntaxSubItem() = default;
   explicit AbstractSyntaxSubItem(const ULUID& theUID) : UIDItem(theUID) {}

   bool operator==(const AbstractSyntaxSubItem& theOther) const = default;

   const ULUID& GetName() const { return itsUID; }
   void SetName(const ULUID& theName) { Set(theName); }
};

extern template class ULItem<AbstractSyntaxSubItem>;

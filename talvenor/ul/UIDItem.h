// What the items have in common whose content is one UID. See ULItem.
#pragma once

#include "talvenor/ul/ULItem.h"
#include "talvenor/ul/ULUID.h"

template <class Item>
class TALVENOR_API UIDItem : public ULItem<Item>
{
public:
   // A text, a UID or a ULUID.
   void Set(const ULUID& theUID) { itsUID.Set(theUID); }

   bool operator==(const UIDItem& theOther) const = default;

protected:
   UIDItem() = default;
   explicit UIDItem(const ULUID& theUID) : itsUID(theUID) {}

   ULUID itsUID;

private:
   friend class ULItem<Item>;
   template <class Self, class Visitor>
   static int Fields(Self& theItem, Visitor& theVisitor);
};

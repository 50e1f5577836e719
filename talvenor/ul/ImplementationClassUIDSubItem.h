// Implementation class UID sub-item (PS3.7 D.3.3.2.1): the implementation that speaks.
#pragma once

#include "talvenor/ul/UIDItem.h"

class TALVENOR_API ImplementationClassUIDSubItem : public UIDItem<ImplementationClassUIDSubItem>
{
public:
   static constexpr unsigned char itsItemType = 0x52;

   ImplementationClassUIDSubItem() = default;
   explicit ImplementationClassUIDSubItem(const ULUID& theUID) : UIDItem(theUID) {}

   bool operator==(const ImplementationClassUIDSubItem& theOther) const = default;

   const ULUID& GetName() const { return itsUID; }
   void SetName(const ULUID& theName) { Set(theName); }
   const ULUID& ImplementationName() const { return itsUID; }
};

extern template class ULItem<ImplementationClassUIDSubItem>;

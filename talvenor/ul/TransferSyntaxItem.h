// Transfer syntax sub-item (PS3.8 9.3.2.2.2): one that is offered for a presentation context, or accepted.
#pragma once

#include "talvenor/ul/UIDItem.h"

class TALVENOR_API TransferSyntaxItem : public UIDItem<TransferSyntaxItem>
{
public:
   static constexpr unsigned char itsItemType = 0x40;

   TransferSyntaxItem() = default;
   explicit TransferSyntaxItem(const ULUID& theUID) : UIDItem(theUID) {}

   bool operator==(const TransferSyntaxItem& theOther) const = default;

   const ULUID& GetUID() const { return itsUID; }
   void SetUID(const ULUID& theUID) { Set(theUID); }
};

extern template class ULItem<TransferSyntaxItem>;

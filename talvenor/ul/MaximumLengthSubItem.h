// Maximum length sub-item (PS3.8 D.1): the longest P-DATA-TF body that its sender accepts, in bytes; 0: any.
#pragma once

#include "talvenor/ul/ULItem.h"

class TALVENOR_API MaximumLengthSubItem : public ULItem<MaximumLengthSubItem>
{
public:
   static constexpr unsigned char itsItemType = 0x51;

   MaximumLengthSubItem() = default;
   explicit MaximumLengthSubItem(UINT32 theLength) : itsMaximumLength(theLength) {}

   bool operator==(const MaximumLengthSubItem& theOther) const = default;

   UINT32 Get() const { return itsMaximumLength; }
   UINT32 GetMaximumLength() const { return itsMaximumLength; }
   void Set(UINT32 theLength) { itsMaximumLength = theLength; }

private:
   friend class ULItem<MaximumLengthSubItem>;
   template <class Self, class Visitor>
   static int Fields(Self& theItem, Visitor& theVisitor);

   UINT32 itsMaximumLength = 0;
};

extern template class ULItem<MaximumLengthSubItem>;

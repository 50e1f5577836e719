// Application context item (PS3.8 9.3.2.1): the name of the protocol, for DICOM always "1.2.840.10008.3.1.1.1".
#pragma once

#include "talvenor/ul/UIDItem.h"

class TALVENOR_API ApplicationContextItem : public UIDItem<ApplicationContextItem>
{
public:
   static constexpr unsigned char itsItemType = 0x10;

   ApplicationContextItem() = default;
   explicit ApplicationContextItem(const ULUID& theUID) : UIDItem(theUID) {}

   bool operator==(const ApplicationContextItem& theOther) const = default;

   const ULUID& GetName() const { return itsUID; }
   void SetName(const ULUID& theName) { Set(theName); }
};

extern template class ULItem<ApplicationContextItem>;

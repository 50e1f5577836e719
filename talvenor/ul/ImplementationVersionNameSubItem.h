// Implementation version name sub-item (PS3.7 D.3.3.2.3).
#pragma once

#include "talvenor/ul/ImplementationVersionName.h"
#include "talvenor/ul/ULItem.h"

class TALVENOR_API ImplementationVersionNameSubItem : public ULItem<ImplementationVersionNameSubItem>
{
public:
   static constexpr unsigned char itsItemType = 0x55;

   ImplementationVersionNameSubItem() = default;
   explicit ImplementationVersionNameSubItem(const ImplementationVersionName& theName) : itsVersion(theName) {}

   bool operator==(const ImplementationVersionNameSubItem& theOther) const = default;

   const ImplementationVersionName& Version() const { return itsVersion; }
   void Set(const ImplementationVersionName& theName) { itsVersion = theName; }
   void SetName(const char* theName) { itsVersion.Set(theName); }

private:
   friend class ULItem<ImplementationVersionNameSubItem>;
   template <class Self, class Visitor>
   static int Fields(Self& theItem, Visitor& theVisitor);

   ImplementationVersionName itsVersion;
};

extern template class ULItem<ImplementationVersionNameSubItem>;

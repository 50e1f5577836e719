// User information item (PS3.8 9.3.2.3, annex D; PS3.7 annex D): what each side tells of itself. The maximum length,
// the implementation class UID and the implementation version name are always sent, also when empty, then the role
// selections.
//
// On receipt the asynchronous operations window (53H) and SOP class extended negotiation (56H) are passed over;
// sub-items of any other type are refused with TN_INVALID_ITEM, or passed over too: see SetOthersPassedOver.
#pragma once

#include <atomic>

#include "talvenor/ul/ImplementationClassUIDSubItem.h"
#include "talvenor/ul/ImplementationVersionNameSubItem.h"
#include "talvenor/ul/MaximumLengthSubItem.h"
#include "talvenor/ul/OwnedList.h"
#include "talvenor/ul/SCPSCURoleSelectSubItem.h"

class TALVENOR_API UserInformationItem : public ULItem<UserInformationItem>
{
public:
   static constexpr unsigned char itsItemType = 0x50;

   UserInformationItem() = default;
   UserInformationItem(const MaximumLengthSubItem& theMax, const ImplementationClassUIDSubItem& theClass,
                       const ImplementationVersionNameSubItem& theVersion)
       : itsMax(theMax), itsClass(theClass), itsVersion(theVersion)
   {}

   // All sub-items, the roles in order; not what was ignored.
   bool operator==(const UserInformationItem& theOther) const;

   const MaximumLengthSubItem& GetMax() const { return itsMax; }
   void SetMax(const MaximumLengthSubItem& theItem) { itsMax = theItem; }
   const ImplementationClassUIDSubItem& GetClass() const { return itsClass; }
   void SetClass(const ImplementationClassUIDSubItem& theItem) { itsClass = theItem; }
   const ImplementationVersionNameSubItem& GetVersion() const { return itsVersion; }
   void SetVersion(const ImplementationVersionNameSubItem& theItem) { itsVersion = theItem; }

   // Appends a copy, unless an equal one is listed.
   void AddSCPSCURole(const SCPSCURoleSelectSubItem& theItem);
   int ContainsSCPSCURole(const SCPSCURoleSelectSubItem& theItem) const { return GetSCPSCURole(theItem) != nullptr; }
   // The one that is listed and equal, or null.
   SCPSCURoleSelectSubItem* GetSCPSCURole(const SCPSCURoleSelectSubItem& theItem) const;
   void ClearSCPSCURoles() { itsRoles.clear(); }
   // Additions: the selections in order, in a received item with all duplicates; and the bytes of the sub-items that
   // were passed over, without their type bytes.
   const OwnedList<SCPSCURoleSelectSubItem>& GetSCPSCURoleList() const { return itsRoles; }
   UINT32 GetIgnoredSubItemsLength() const { return itsIgnoredLength; }

   // An addition: whether sub-items of types that this class does not know, such as those of user identity (58H), are
   // passed over, as PS3.8 9.3.1 wants it. Of the whole process, off at first; any thread.
   static int GetOthersPassedOver() { return itsOthersArePassedOver.load(std::memory_order_relaxed); }
   static void SetOthersPassedOver(int theFlag) { itsOthersArePassedOver = theFlag; }

private:
   friend class ULItem<UserInformationItem>;
   template <class Self, class Visitor>
   static int Fields(Self& theItem, Visitor& theVisitor);
   static int Fields(UserInformationItem& theItem, FieldReader& theReader);
   int ReadIgnored(PDUInputStream& theStream);

   static std::atomic<int> itsOthersArePassedOver;

   UINT32 itsIgnoredLength = 0;
   MaximumLengthSubItem itsMax;
   ImplementationClassUIDSubItem itsClass;
   ImplementationVersionNameSubItem itsVersion;
   OwnedList<SCPSCURoleSelectSubItem> itsRoles;
};

extern template class ULItem<UserInformationItem>;

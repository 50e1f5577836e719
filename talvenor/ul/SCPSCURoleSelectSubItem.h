// SCP/SCU role selection sub-item (PS3.7 D.3.3.4): which roles the requester proposes to play for a SOP class, or which
// of them the acceptor accepts. A role is 0 or 1; other bytes are kept as received.
#pragma once

#include "talvenor/ul/ULItem.h"
#include "talvenor/ul/ULUID.h"

class TALVENOR_API SCPSCURoleSelectSubItem : public ULItem<SCPSCURoleSelectSubItem>
{
public:
   static constexpr unsigned char itsItemType = 0x54;

   SCPSCURoleSelectSubItem() = default;
   explicit SCPSCURoleSelectSubItem(const ULUID& theUID, unsigned char theSCURole = 0, unsigned char theSCPRole = 0)
       : itsUID(theUID), itsSCURole(theSCURole), itsSCPRole(theSCPRole)
   {}

   // SOP class and both roles.
   bool operator==(const SCPSCURoleSelectSubItem& theOther) const = default;

   const ULUID& Uid() const { return itsUID; }
   const ULUID& GetName() const { return itsUID; }
   void SetName(const ULUID& theUID) { itsUID.Set(theUID); }

   unsigned char SCURole() const { return itsSCURole; }
   unsigned char SCPRole() const { return itsSCPRole; }
   void SetSCURole(unsigned char theRole) { itsSCURole = theRole; }
   void SetSCPRole(unsigned char theRole) { itsSCPRole = theRole; }

private:
   friend class ULItem<SCPSCURoleSelectSubItem>;
   template <class Self, class Visitor>
   static int Fields(Self& theItem, Visitor& theVisitor);

   ULUID itsUID;
   unsigned char itsSCURole = 0;
   unsigned char itsSCPRole = 0;
};

extern template class ULItem<SCPSCURoleSelectSubItem>;

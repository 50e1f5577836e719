// The key under which a dataset remembers a private block (PS3.5 7.8.1): a creator's identifier in one odd group.
// A value type.
#pragma once

#include "talvenor/dictionary/FlatIndex.h"

class TALVENOR_API PrivateAllocation
{
public:
   PrivateAllocation(const RWCString& theCreator, UINT16 theGroup)
       : itsHash(HashOf(theCreator, theGroup)), itsCreator(theCreator), itsGroup(theGroup)
   {}

   bool operator==(const PrivateAllocation& theOther) const
   {
      return itsHash == theOther.itsHash && itsGroup == theOther.itsGroup && itsCreator == theOther.itsCreator;
   }

   const RWCString& GetPrivateCreatorID() const { return itsCreator; }
   UINT16 GetGroup() const { return itsGroup; }

   static unsigned int HashOf(std::string_view theCreator, UINT16 theGroup)
   {
      return TextHash(theCreator) * 7 + theGroup;
   }
   unsigned int hash() const { return itsHash; }
   static unsigned int HashObject(const PrivateAllocation& theAllocation) { return theAllocation.itsHash; }

private:
   UINT32 itsHash;
   RWCString itsCreator;
   UINT16 itsGroup;
};

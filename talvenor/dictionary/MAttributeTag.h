// An attribute tag (PS3.5 7.1): group and element number, a value type ordered by group, then element.
// Threads: as an int; const operations write nothing.
#pragma once

#include <compare>

#include "talvenor/foundation/BasicTypes.h"

class InstanceSpecificDataDictionary;

class TALVENOR_API MAttributeTag
{
public:
   MAttributeTag() = default;
   MAttributeTag(UINT16 theGroup, UINT16 theElement) : itsGroup(theGroup), itsElement(theElement) {}
   MAttributeTag(const MAttributeTag&) = default;
   MAttributeTag& operator=(const MAttributeTag&) = default;
   virtual ~MAttributeTag() = default;

   bool operator==(const MAttributeTag& theOther) const { return GetTag() == theOther.GetTag(); }
   std::strong_ordering operator<=>(const MAttributeTag& theOther) const { return GetTag() <=> theOther.GetTag(); }

   UINT16 Group() const { return itsGroup; }
   UINT16 Element() const { return itsElement; }
   UINT16 GetGroup() const { return itsGroup; }
   UINT16 GetElement() const { return itsElement; }
   // group << 16 | element
   UINT32 GetTag() const { return static_cast<UINT32>(itsGroup) << 16 | itsElement; }

   void Group(UINT16 theGroup) { itsGroup = theGroup; }
   void Element(UINT16 theElement) { itsElement = theElement; }
   void SetGroup(UINT16 theGroup) { itsGroup = theGroup; }
   void SetElement(UINT16 theElement) { itsElement = theElement; }
   void SetTag(UINT16 theGroup, UINT16 theElement)
   {
      itsGroup = theGroup;
      itsElement = theElement;
   }
   void SetTag(UINT32 theTag) { SetTag(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag)); }

   // Never 0. Computed when asked for: a kept hash would make reading a shared tag a write.
   unsigned int Hash() const
   {
      const UINT32 aHash = GetTag() * 0x9E3779B1u;
      return aHash != 0 ? aHash : 1;
   }
   static unsigned int hash(const MAttributeTag& theTag) { return theTag.Hash(); }

   // Four lower-case hexadecimal digits each: "7fe0, 0010".
   RWCString AsNumericString() const;
   // The name that the dictionary has for the tag, or the numeric text.
   RWCString AsString(const InstanceSpecificDataDictionary& theDictionary) const;
   // The same with the default public dictionary and the default private catalog.
   RWCString AsString() const;

private:
   UINT16 itsGroup = 0;
   UINT16 itsElement = 0;
};

// What one dataset knows about its attributes: the public dictionary, the private ones, and which private creator owns
// which block of which odd group in this dataset (PS3.5 7.8.1). It resolves tags and names to dictionary entries, types
// elements and allocates blocks for new private elements. Making one costs no allocation; its tables come with the
// first registration.
//
// Ownership: the two dictionaries are borrowed and must outlive this object. Failure is 0 or null, never an exception,
// except from AssignVRToPrivateBlock. Threads: protected by the lock of the dataset that owns it; the process-wide
// default instance is used for look-ups only.
#pragma once

#include <memory>
#include <string_view>

#include "talvenor/dictionary/MAttributeTag.h"
#include "talvenor/dictionary/MDDEntry.h"
#include "talvenor/io/TNEndian.h"

class MDataDictionary;
class MPrivateDataDictionary;
class PrivateAllocation;
class PrivateDataDictionaryCatalog;
class VR;

class TALVENOR_API InstanceSpecificDataDictionary
{
public:
   // No allocations.
   InstanceSpecificDataDictionary(const MDataDictionary& thePublicDictionary,
                                  const PrivateDataDictionaryCatalog& theCatalog);
   // Copies the allocations.
   InstanceSpecificDataDictionary(const InstanceSpecificDataDictionary& theOther);
   InstanceSpecificDataDictionary& operator=(const InstanceSpecificDataDictionary& theOther);
   ~InstanceSpecificDataDictionary();

   // Odd, 0009 to FFFD.
   static constexpr bool IsValidPrivateGroup(UINT16 theGroup)
   {
      return (theGroup & 1) != 0 && theGroup >= 0x0009 && theGroup < 0xFFFF;
   }
   static constexpr bool IsValidPrivateElementCode(UINT16 theElement) { return theElement >= 0x1000; }
   // Odd groups in which files of certain makers put elements without reserving blocks.
   static constexpr bool IsCorvanHackGroup(UINT16 theGroup) { return theGroup == 0x1021 || theGroup == 0x0123; }
   static constexpr bool IsValidPrivateCreatorAllocation(UINT16 theGroup, UINT16 theElement)
   {
      return theElement >= 0x0010 && theElement <= 0x00FF && IsValidPrivateGroup(theGroup) &&
             !IsCorvanHackGroup(theGroup);
   }
   static bool IsValidPrivateCreatorAllocation(const MAttributeTag& theTag)
   {
      return IsValidPrivateCreatorAllocation(theTag.Group(), theTag.Element());
   }
   // Also looks at the value: 1 to 64 bytes that are, without blanks around them, a valid identifier.
   static bool IsValidPrivateCreatorAllocation(const VR& theVR);
   // 1 to 64 characters from space to tilde.
   static bool IsValidPrivateCreatorIdentifier(std::string_view theText);

   // The entry, or null. A tag in a private group is looked up in the dictionary of its block's creator, never in the
   // public dictionary.
   const MDDEntry* Find(const MAttributeTag& theTag) const;
   // By name: in the public dictionary when the creator text is empty, otherwise in that creator's dictionary.
   const MDDEntry* Find(std::string_view theName, std::string_view theCreator) const;
   // The dictionary of the creator that holds the tag's block, or null.
   const MPrivateDataDictionary* FindPrivateDictionary(const MAttributeTag& theTag) const;
   const MPrivateDataDictionary* FindPrivateDictionary(std::string_view theCreator) const;

   // Types the element: LO for a private creator element, otherwise as its entry says, and returns 1. UN and 0 when
   // the tag is unknown.
   int TypeVR(VR& theVR) const;
   // An addition for decoders, which need no element for it: the code TypeVR would give, but 0 for an unknown tag, so
   // that it can be told from one that the dictionary lists as UN.
   UINT16 TypeCodeOf(UINT16 theGroup, UINT16 theElement) const;

   // Notes that the creator holds the block of this creator element. Blanks around the text do not count. 1 when it
   // does now or did before; 0 when the text or the tag is not valid, the creator has another block in this group, or
   // the block has another owner.
   int RegisterPrivateCreator(std::string_view theCreator, const MAttributeTag& theTag);
   int RegisterPrivateCreator(const VR& theVR);

   // Gives theTag's element the creator's block number in theTag's group, allocating the first free block from that
   // element on when there is none. 0, and the tag unchanged, when the group is not private or no block is free.
   int GetPrivateAllocation(std::string_view theCreator, MAttributeTag& theTag);

   // The creator element under which the creator is registered in the group, or null; valid until the next change.
   const MAttributeTag* FindPrivateAllocation(std::string_view theCreator, UINT16 theGroup) const;
   // The same for the value of a creator element; for any other private element, that of its block's owner.
   const MAttributeTag* FindPrivateAllocation(const VR& theVR) const;
   bool ContainsCreatorAllocation(std::string_view theCreator, UINT16 theGroup) const
   {
      return FindPrivateAllocation(theCreator, theGroup) != nullptr;
   }
   // An addition: who owns the block of a private element (element 1000 or more), or null; valid until the next change.
   const PrivateAllocation* FindBlockOwner(UINT16 theGroup, UINT16 theElement) const;

   // The group of the creator's dictionary, or -1.
   int GetPrivateBlockGroup(std::string_view theCreator) const;

   // Moves the element into the creator's block of its group. 1 when the block had to be allocated, 0 when it was
   // there, and 0 with nothing done when the group is not private. Throws TNRuntimeException for an invalid creator
   // text and when no block is free.
   int AssignVRToPrivateBlock(VR& theVR, const RWCString& theCreator);

   // A new creator element, the caller's, for the registered block of the creator in the group of its dictionary (in
   // the lowest group in which it is registered when there is no dictionary). Null when there is no such block.
   VR* CreatePrivateCreatorAllocationAttribute(const RWCString& theCreator, TNEndian::EndianType theEndian) const;

   void ClearPrivateCreators();

   // Additions.
   const MDataDictionary& GetDataDictionary() const { return *itsPublicDictionary; }
   const PrivateDataDictionaryCatalog& GetPrivateDataDictionaryCatalog() const { return *itsCatalog; }

   static unsigned int HashPrivateAllocation(const PrivateAllocation& theAllocation);
   static unsigned int HashAttributeTag(const MAttributeTag& theTag) { return theTag.Hash(); }
   unsigned int GetHashTableSize() const { return itsHashTableSize; }

   // Over the default dictionaries, without allocations: for look-ups where no dataset is at hand.
   static InstanceSpecificDataDictionary itsDefaultInstanceSpecificDataDictionary;
   static InstanceSpecificDataDictionary& GetDefaultInstanceSpecificDataDictionary()
   {
      return itsDefaultInstanceSpecificDataDictionary;
   }

protected:
   // Noted only: what is registered is kept in order of tags, which needs no buckets.
   void SetHashTableSize(unsigned int theSize);

private:
   struct Tables;

   // NULs are no spaces: a value padded with them names no creator.
   static std::string_view WithoutSpaces(std::string_view theText);

   // The creator element of the creator's block in the group of its dictionary; without a dictionary, that in the
   // lowest group.
   const MAttributeTag* FindAnyAllocation(std::string_view theCreator) const;

   std::unique_ptr<Tables> itsTables; // null until something is registered
   const MDataDictionary* itsPublicDictionary;
   const PrivateDataDictionaryCatalog* itsCatalog;
   unsigned int itsHashTableSize = 128;
};

// A data dictionary (PS3.6): attributes by tag and by name, loaded from a text file. The process-wide default one is
// what datasets, decoders and the dump use; it is empty until the host loads it. Dictionaries of private attributes
// are MPrivateDataDictionary.
//
// A line of the file is `group, element, value representation, description, name, VM minimum, VM maximum`; the first
// six fields may stand in double quotes; `//` begins a comment line; `PrivateCreator = text` names the creator of a
// private dictionary, whose entries all have one group and elements up to FF.
//
// Ownership: the dictionary owns its entries; what Find returns stays valid until the next Load, Unload or
// destruction. Threads: filled once, then only read; concurrent look-ups are safe, Load and Add beside them are not.
#pragma once

#include <deque>
#include <iosfwd>
#include <memory>
#include <vector>

#include "talvenor/dictionary/FlatIndex.h"
#include "talvenor/dictionary/MDDEntry.h"

class DICOMObject;
class VR;

class TALVENOR_API MDataDictionary
{
public:
   using TagHash = unsigned int (*)(const MAttributeTag&);
   static constexpr std::size_t kDefaultBuckets = 2753;

   // The bucket count is the number of entries for which the first insertion makes room (0 counts as 2). An empty
   // dictionary holds no memory.
   explicit MDataDictionary(std::size_t theBuckets = kDefaultBuckets);
   // Load at once. Throw what Load throws, and InvalidEntryDescriptionException when it returns false.
   explicit MDataDictionary(const RWCString& theFileName, std::size_t theBuckets = kDefaultBuckets);
   explicit MDataDictionary(std::istream& theStream, std::size_t theBuckets = kDefaultBuckets);
   // Deep copies: no two dictionaries share an entry.
   MDataDictionary(const MDataDictionary& theOther);
   MDataDictionary& operator=(const MDataDictionary& theOther);

   virtual ~MDataDictionary();
   // The entry, or null. Curve and overlay groups (0x50xx, 0x60xx) are found under 0x5000 and 0x6000.
   virtual const MDDEntry* Find(const MAttributeTag& theTag) const;

   const MDDEntry* Find(std::string_view theName) const;

   // Replaces the contents. False when the name is empty or the file cannot be opened (the contents then stay) and
   // when reading fails. Throws InvalidEntryDescriptionException, with the number and the text of the line, for a line
   // that does not parse, a second entry of a tag or name, a private entry outside the block; InvalidValueTypeException
   // for an unknown value representation. Entries before that line stay.
   bool Load(const RWCString& theFileName);
   bool Load(std::istream& theStream);
   // Also forgets the private creator and its group.
   void Unload();

   // Takes the entry, unless it is null or its tag or its name is already there: then it stays the caller's.
   void Add(MDDEntry* theEntry);
   // Adds a copy under the same condition.
   void Add(const MDDEntry& theEntry);

   // Types an element: LO for a private creator element, otherwise the type of its entry; UN and false when the tag is
   // unknown.
   bool TypeVR(VR& theVR) const;
   bool RunTimeClass(VR& theVR) const { return TypeVR(theVR); }
   // Types every element of the dataset; returns 1.
   int RunTimeClass(DICOMObject& theObject) const;
   // The type code of the tag, UN when unknown. The description, or "Unknown", goes into the buffer, cut to its size
   // less one and terminated; a size of 0 writes nothing.
   UINT16 RunTimeClass(UINT16 theGroup, UINT16 theElement, char* theBuffer, std::size_t theSize) const;

   static MDataDictionary& GetDefaultDataDictionary() { return itsDefaultDataDictionary; }
   static bool SetDefaultDataDictionary(const RWCString& theFileName);
   static bool SetDefaultDataDictionary(std::istream& theStream);
   static unsigned int HashEntry(const MAttributeTag& theTag) { return theTag.Hash(); }
   static unsigned int HashName(const RWCString& theName) { return TextHash(theName); }

   // Additions: the number of entries, and a visit of them all in no stated order of tags.
   std::size_t Size() const { return itsByTag.Size(); }
   template <class Visitor>
   void ForEach(Visitor theVisitor) const
   {
      for (const MDDEntry& anEntry : itsLoaded)
      {
         theVisitor(anEntry);
      }
      for (const std::unique_ptr<MDDEntry>& anEntry : itsAdded)
      {
         theVisitor(static_cast<const MDDEntry&>(*anEntry));
      }
   }

   static MDataDictionary itsDefaultDataDictionary;

protected:
   // For derived classes with a tag hash of their own. The index mixes the whole tag itself, which is at least as
   // good as any such hash; the function is not called.
   MDataDictionary(TagHash theHash, std::size_t theBuckets);
   MDataDictionary(TagHash theHash, const RWCString& theFileName, std::size_t theBuckets);
   MDataDictionary(TagHash theHash, std::istream& theStream, std::size_t theBuckets);

   // Empty for a public dictionary.
   const RWCString& GetPrivateCreatorID() const { return itsPrivateCreatorID; }
   // -1 when not set.
   int GetPrivateBlockGroup() const { return itsPrivateBlockGroup; }
   // The entry listed under exactly this tag, or null: no group is mapped onto another.
   const MDDEntry* FindListed(UINT32 theTag) const { return itsByTag.Find(theTag); }

private:
   struct TagTraits
   {
      // Multiplication by an odd number loses nothing: equal hashes are equal tags.
      static UINT32 Hash(UINT32 theTag) { return theTag * 0x9E3779B1u; }
      static bool Equal(const MDDEntry&, UINT32) { return true; }
   };
   struct NameTraits
   {
      static UINT32 Hash(std::string_view theName) { return TextHash(theName); }
      static bool Equal(const MDDEntry& theEntry, std::string_view theName) { return theEntry.Name() == theName; }
   };

   void LoadLine(std::string_view theLine, unsigned int theNumber);
   void CheckPrivateBlock(const MDDEntry::Fields& theFields, std::string_view theLine, unsigned int theNumber);
   // theNameHash is the name's hash in itsByName.
   bool Holds(UINT32 theTag, std::string_view theName, UINT32 theNameHash) const;
   void Index(MDDEntry& theEntry, UINT32 theNameHash);
   void CopyFrom(const MDataDictionary& theOther);

   FlatIndex<MDDEntry, UINT32, TagTraits> itsByTag;
   FlatIndex<MDDEntry, std::string_view, NameTraits> itsByName;
   std::deque<MDDEntry> itsLoaded; // entries live in blocks: a file of thousands costs few allocations
   std::vector<std::unique_ptr<MDDEntry>> itsAdded;
   std::size_t itsBuckets;
   RWCString itsPrivateCreatorID;
   int itsPrivateBlockGroup = -1;
};

// The dictionary of registered UIDs (PS3.6 annex A), by mnemonic and by UID text. The process-wide default one is
// empty until the host loads it. File format: see MUIDDictionaryEntry; `//` begins a comment line.
//
// Ownership: the dictionary owns its entries; what the Find operations return stays valid until the next Load, Unload
// or destruction. Threads: filled once, then only read.
#pragma once

#include <deque>
#include <iosfwd>
#include <memory>
#include <vector>

#include "talvenor/dictionary/FlatIndex.h"
#include "talvenor/dictionary/MUIDDictionaryEntry.h"

class TALVENOR_API MUIDDictionary
{
public:
   MUIDDictionary();
   // Loads at once; throws what Load throws.
   explicit MUIDDictionary(std::istream& theStream);
   // Deep copies.
   MUIDDictionary(const MUIDDictionary& theOther);
   MUIDDictionary& operator=(const MUIDDictionary& theOther);
   ~MUIDDictionary();

   // Replaces the contents. False when the name is empty or the file cannot be opened (the contents then stay) and when
   // reading fails. Throws InvalidEntryDescriptionException with the number of the line for a line that does not parse
   // or repeats a mnemonic or a UID; entries before that line stay.
   bool Load(const RWCString& theFileName);
   bool Load(std::istream& theStream);
   void Unload();

   // Takes the entry's contents and destroys it, also when a mnemonic or UID that is already there makes this throw
   // InvalidEntryDescriptionException. Null is ignored.
   void Add(MUIDDictionaryEntry* theEntry);
   // Adds a copy.
   void Add(const MUIDDictionaryEntry& theEntry);

   // The entry, or null.
   const MUIDDictionaryEntry* FindMnemonic(std::string_view theMnemonic) const
   {
      return itsByMnemonic.Find(theMnemonic);
   }
   const MUIDDictionaryEntry* FindUID(std::string_view theUID) const { return itsByUID.Find(theUID); }

   static MUIDDictionary& GetDefaultUIDDictionary() { return itsDefaultUIDDictionary; }
   static bool SetDefaultUIDDictionary(const RWCString& theFileName);
   static bool SetDefaultUIDDictionary(std::istream& theStream);
   static unsigned int HashMnemonic(const RWCString& theMnemonic) { return TextHash(theMnemonic); }
   static unsigned int HashUID(const RWCString& theUID) { return TextHash(theUID); }

   // Additions: the number of entries, and a visit of them all in the order of their arrival.
   std::size_t Size() const { return itsEntries.size(); }
   template <class Visitor>
   void ForEach(Visitor theVisitor) const
   {
      for (const MUIDDictionaryEntry& anEntry : itsEntries)
      {
         theVisitor(anEntry);
      }
   }

   static MUIDDictionary itsDefaultUIDDictionary;

private:
   struct MnemonicTraits
   {
      static UINT32 Hash(std::string_view theText) { return TextHash(theText); }
      static bool Equal(const MUIDDictionaryEntry& theEntry, std::string_view theText)
      {
         return theEntry.GetMnemonic() == theText;
      }
   };
   struct UIDTraits
   {
      static UINT32 Hash(std::string_view theText) { return TextHash(theText); }
      static bool Equal(const MUIDDictionaryEntry& theEntry, std::string_view theText)
      {
         return theEntry.GetUID() == theText;
      }
   };

   // theLine is the line that a duplicate is reported at; 0 when it comes from no file.
   void Insert(MUIDDictionaryEntry&& theEntry, unsigned int theLine);

   std::deque<MUIDDictionaryEntry> itsEntries;
   FlatIndex<MUIDDictionaryEntry, std::string_view, MnemonicTraits> itsByMnemonic;
   FlatIndex<MUIDDictionaryEntry, std::string_view, UIDTraits> itsByUID;
};

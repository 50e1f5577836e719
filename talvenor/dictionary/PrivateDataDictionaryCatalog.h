// The private dictionaries that the process knows, by creator identifier (the exact text, inner blanks kept).
//
// Ownership: the catalog owns its dictionaries; what Find returns stays valid until the dictionary is removed.
// Threads: filled and changed at start-up, then only asked. Find and Contains may run in many threads at once, also
// when they read a deferred file; Add, Remove and assignment may not run beside them.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "talvenor/dictionary/MPrivateDataDictionary.h"

class TALVENOR_API PrivateDataDictionaryCatalog
{
public:
   PrivateDataDictionaryCatalog();
   // Deep copies; what is deferred stays deferred.
   PrivateDataDictionaryCatalog(const PrivateDataDictionaryCatalog& theOther);
   PrivateDataDictionaryCatalog& operator=(const PrivateDataDictionaryCatalog& theOther);
   ~PrivateDataDictionaryCatalog();

   // Takes the dictionary in any case. A null one returns 0; one without creator identifier, or whose identifier is
   // already in the catalog, is destroyed and 0 returned. It takes the place of a deferred file not yet read.
   int Add(MPrivateDataDictionary* theDictionary);

   bool Contains(std::string_view theCreator) const { return Find(theCreator) != nullptr; }
   // The dictionary, or null.
   const MPrivateDataDictionary* Find(std::string_view theCreator) const;
   // The dictionary, now the caller's, or null.
   MPrivateDataDictionary* Remove(std::string_view theCreator);
   int RemoveAndDestroy(std::string_view theCreator);

   // Additions: deferred dictionaries. There are hundreds of private creators and a process meets few of them. A
   // deferred file is read when Find or Contains first meets its creator. One that then fails to load, or that is of
   // another creator, counts as not there and is reported to gTNErrorLog once.
   //
   // 0 when the creator text is empty or already in the catalog.
   int AddDeferred(const RWCString& theCreator, const RWCString& theFileName);
   // Defers every file of an index, whose lines are `file name, creator identifier`; `//` begins a comment line. File
   // names are relative to the folder of the index. Creators already there are passed over. 0 when the index cannot be
   // read; throws InvalidEntryDescriptionException, with the number of the line, for a line that does not parse.
   int AddDeferredIndex(const RWCString& theIndexFileName);
   static int AddDeferredToDefaultCatalog(const RWCString& theCreator, const RWCString& theFileName);
   static int AddDeferredIndexToDefaultCatalog(const RWCString& theIndexFileName);
   // The number of creators, deferred ones included.
   std::size_t Size() const { return itsSlots.size(); }

   static PrivateDataDictionaryCatalog& GetDefaultPrivateDataDictionaryCatalog()
   {
      return itsDefaultPrivateDataDictionaryCatalog;
   }
   // Add to the default catalog. The file form loads the file first and throws what that throws. The vector form
   // returns 0 at the first dictionary that is refused; those before it stay.
   static int AddToDefaultCatalog(MPrivateDataDictionary* theDictionary);
   static int AddToDefaultCatalog(const RWCString& theFileName);
   static int AddToDefaultCatalog(const RWTValOrderedVector<RWCString>& theFileNames);
   static unsigned int HashCreatorKey(const RWCString& theCreator) { return TextHash(theCreator); }

   static PrivateDataDictionaryCatalog itsDefaultPrivateDataDictionaryCatalog;

private:
   // One creator. Once itsDictionary is set, or itsIsPending is false, nothing changes any more and no lock is needed.
   struct Slot
   {
      ~Slot() { delete itsDictionary.load(); }

      std::atomic<MPrivateDataDictionary*> itsDictionary{nullptr};
      std::atomic<bool> itsIsPending{false}; // the file is still to be read
      RWCString itsFileName;                 // of a deferred dictionary
   };
   struct TextHasher
   {
      using is_transparent = void;
      std::size_t operator()(std::string_view theText) const { return TextHash(theText); }
   };
   // Creators are few when compared with look-ups of tags, and can be removed: a standard table serves.
   using Slots = std::unordered_map<RWCString, std::unique_ptr<Slot>, TextHasher, std::equal_to<>>;

   const MPrivateDataDictionary* LoadDeferred(const RWCString& theCreator, Slot& theSlot) const;
   // Returns what is wrong with the file, nothing when theSlot has its dictionary now.
   static RWCString ReadFile(const RWCString& theCreator, Slot& theSlot);
   void CopyFrom(const PrivateDataDictionaryCatalog& theOther);

   Slots itsSlots;
   mutable std::mutex itsLoadMutex; // held while a deferred file is read
};

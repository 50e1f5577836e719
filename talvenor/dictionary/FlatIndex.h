// A hash index over entries that something else owns: open addressing, linear probing, one flat array of (hash, entry
// pointer). Empty until the first insertion, at most two thirds full, so a look-up touches one cache line or two.
// Entries must stay where they are and keep the key under which they were inserted; there is no removal of one entry.
//
// Traits: `static UINT32 Hash(const Key&)` and `static bool Equal(const Entry&, const Key&)`, asked only when the
// 32-bit hashes agree. Threads: concurrent look-ups are safe while nobody inserts.
#pragma once

#include <bit>
#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

#include "talvenor/foundation/BasicTypes.h"

template <class Entry, class Key, class Traits>
class FlatIndex
{
public:
   static UINT32 HashOf(const Key& theKey) { return Traits::Hash(theKey); }

   Entry* Find(const Key& theKey) const { return Find(theKey, HashOf(theKey)); }
   // With the hash of the key, for callers who need it twice.
   Entry* Find(const Key& theKey, UINT32 theHash) const
   {
      if (itsCapacity == 0)
      {
         return nullptr;
      }
      for (std::size_t aSlot = Home(theHash);; aSlot = Next(aSlot))
      {
         const Slot& aCandidate = itsSlots[aSlot];
         if (aCandidate.itsEntry == nullptr)
         {
            return nullptr;
         }
         if (aCandidate.itsHash == theHash && Traits::Equal(*aCandidate.itsEntry, theKey))
         {
            return aCandidate.itsEntry;
         }
      }
   }

   // Inserts under the hash of the entry's key, without looking for an equal one.
   void Insert(UINT32 theHash, Entry* theEntry)
   {
      Reserve(itsSize + 1);
      Place(Slot{theHash, theEntry});
      ++itsSize;
   }

   // Makes room for so many entries in all.
   void Reserve(std::size_t theCount)
   {
      if (theCount * 3 > itsCapacity * 2)
      {
         Rebuild(std::bit_ceil(theCount * 3 / 2 + 8));
      }
   }

   void Clear()
   {
      itsSlots.reset();
      itsCapacity = 0;
      itsSize = 0;
   }

   std::size_t Size() const { return itsSize; }

private:
   struct Slot
   {
      UINT32 itsHash;
      Entry* itsEntry; // null: the slot is free
   };

   // The high bits of a multiplicative hash are its good ones.
   std::size_t Home(UINT32 theHash) const { return theHash >> itsShift; }
   std::size_t Next(std::size_t theSlot) const { return (theSlot + 1) & (itsCapacity - 1); }

   void Place(const Slot& theSlot)
   {
      std::size_t aSlot = Home(theSlot.itsHash);
      while (itsSlots[aSlot].itsEntry != nullptr)
      {
         aSlot = Next(aSlot);
      }
      itsSlots[aSlot] = theSlot;
   }

   void Rebuild(std::size_t theCapacity)
   {
      const std::unique_ptr<Slot[]> anOld = std::move(itsSlots);
      const std::size_t anOldCapacity = itsCapacity;
      itsSlots = std::make_unique<Slot[]>(theCapacity);
      itsCapacity = theCapacity;
      itsShift = 32 - static_cast<unsigned int>(std::countr_zero(theCapacity));
      for (std::size_t aSlot = 0; aSlot < anOldCapacity; ++aSlot)
      {
         if (anOld[aSlot].itsEntry != nullptr)
         {
            Place(anOld[aSlot]);
         }
      }
   }

   std::unique_ptr<Slot[]> itsSlots;
   std::size_t itsCapacity = 0; // a power of two of at least 8, or 0
   std::size_t itsSize = 0;
   unsigned int itsShift = 32;
};

// 32 bits of a text's hash.
inline UINT32 TextHash(std::string_view theText)
{
   const std::size_t aHash = std::hash<std::string_view>{}(theText);
   return static_cast<UINT32>(aHash ^ (static_cast<UINT64>(aHash) >> 32));
}

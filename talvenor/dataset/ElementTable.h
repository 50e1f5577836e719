// The elements of one dataset node in ascending order of their tags. Not part of the library's interface.
//
// A dataset of a few hundred elements is one block: its tags stand together in one array, so that a binary search
// touches two or three cache lines and no element. Larger ones are a directory of blocks of at most kBlockCapacity
// elements, so that an insertion in the middle moves one block and not half the dataset: 10,000 elements in random
// order, or a hostile file in descending order, cost no more than a constant each.
#pragma once

#include <memory>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class VR;

class ElementTable
{
public:
   ElementTable() = default;
   ElementTable(const ElementTable&) = delete;
   ElementTable& operator=(const ElementTable&) = delete;
   ~ElementTable();   // destroys the elements

   // A place in the table: valid until the table changes (see GetVersion).
   struct Position
   {
      UINT32 itsBlock = 0;
      UINT32 itsIndex = 0;
   };

   VR* Find(UINT32 theTag) const;

   // Takes theVR under its present tag; an element that was there is destroyed. Returns 0, and destroys theVR, when
   // there is no memory.
   int Insert(VR* theVR);

   // Unlinks the element and returns it to the caller, null when there is none.
   VR* Remove(UINT32 theTag);

   // Destroys all elements.
   void Clear();

   UINT32 GetCount() const { return itsCount; }

   // Counts every change of the order: a Position is good while the version is the same.
   UINT32 GetVersion() const { return itsVersion; }

   // The place of the first element whose tag is theTag or above.
   Position LowerBound(UINT32 theTag) const;
   VR* At(const Position& thePosition) const;          // null behind the last
   UINT32 TagAt(const Position& thePosition) const;    // the element's key; only where At is not null
   void Advance(Position& thePosition) const;

private:
   struct Block;

   static constexpr UINT32 kFirstCapacity = 4;
   static constexpr UINT32 kBlockCapacity = 128;

   // More than one block: the blocks in order and the smallest tag of each.
   struct Directory
   {
      std::vector<UINT32> itsFirstTags;
      std::vector<Block*> itsBlocks;
   };

   UINT32 BlockFor(UINT32 theTag) const;
   Block* BlockAt(UINT32 theBlock) const { return itsDirectory ? itsDirectory->itsBlocks[theBlock] : itsOnly; }
   UINT32 GetBlockCount() const;

   Block* itsOnly = nullptr;                   // the single block, null when there is none or a directory
   std::unique_ptr<Directory> itsDirectory;
   UINT32 itsCount = 0;
   UINT32 itsVersion = 0;
};

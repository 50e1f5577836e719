// The elements of one dataset node in ascending order of their tags. Not part of the library's interface.
//
// A dataset of up to kBlockCapacity elements is one block: its tags stand together in one array, so that a binary
// search touches two or three cache lines and no element. A larger one is a directory of such blocks, so that an
// insertion in the middle moves one block and not half the dataset: 10,000 elements in random order, or a hostile file
// in descending order, cost no more than a constant each. A table without elements owns no memory.
//
// Not locked: the node that holds the table guards it.
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
   ~ElementTable(); // destroys the elements

   // A place in the table: good until the order changes (see GetVersion). One that has gone stale leads to a wrong
   // element or to none, never outside the table.
   struct Position
   {
      UINT32 itsBlock = 0;
      UINT32 itsIndex = 0;
   };

   VR* Find(UINT32 theTag) const; // null when there is none

   // Takes theVR under its present tag; an element that was there is destroyed. Returns 0, and destroys theVR, when
   // there is no memory.
   int Insert(VR* theVR);

   // Unlinks the element and returns it to the caller, null when there is none.
   VR* Remove(UINT32 theTag);

   // Destroys the elements from theFirstTag to theLastTag, both included, and returns their number.
   UINT32 RemoveRange(UINT32 theFirstTag, UINT32 theLastTag);

   // Destroys all elements.
   void Clear();

   UINT32 GetCount() const { return itsCount; }

   // Counts every change of the order: a Position is good while the version is the same.
   UINT32 GetVersion() const { return itsVersion; }

   // The place of the first element whose tag is theTag or above.
   Position LowerBound(UINT32 theTag) const;
   VR* At(const Position& thePosition) const;       // null behind the last
   UINT32 TagAt(const Position& thePosition) const; // the tag under which it was inserted; only where At is not null
   void Advance(Position& thePosition) const;

private:
   // Two arrays behind one header, in one allocation: the elements, then their tags. Never empty while in a table.
   struct Block
   {
      UINT32 itsCount;
      UINT32 itsCapacity;

      VR** Elements() { return reinterpret_cast<VR**>(this + 1); }
      UINT32* Tags() { return reinterpret_cast<UINT32*>(Elements() + itsCapacity); }

      UINT32 LowerBound(UINT32 theTag);
      void Append(Block& theOther, UINT32 theFirst);
      void Open(UINT32 theIndex, VR* theVR, UINT32 theTag);
      void Close(UINT32 theFirst, UINT32 theEnd);
   };
   struct FreeBlock
   {
      void operator()(Block* theBlock) const { ::operator delete(theBlock); }
   };
   using OwnedBlock = std::unique_ptr<Block, FreeBlock>;

   static constexpr UINT32 kFirstCapacity = 4;
   static constexpr UINT32 kFurtherCapacity = 32; // of a block that begins behind a full one
   static constexpr UINT32 kBlockCapacity = 128;

   // More than one block: the blocks in order. The tags of a block are at or below its limit, those of the next block
   // are above it; the last one's limit is the highest tag there can be.
   struct Slot
   {
      UINT32 itsLimit;
      OwnedBlock itsBlock;
   };
   using Directory = std::vector<Slot>;

   static OwnedBlock MakeBlock(UINT32 theCapacity);

   UINT32 BlockFor(UINT32 theTag) const;
   Block* BlockAt(UINT32 theBlock) const
   {
      return itsDirectory ? (*itsDirectory)[theBlock].itsBlock.get() : itsOnly.get();
   }
   UINT32 GetBlockCount() const;

   int InsertAnywhere(VR* theVR, UINT32 theTag);
   void InsertNew(VR* theVR, UINT32 theTag, Position thePosition);
   Position MakeRoom(const Position& thePosition);
   void Split(UINT32 theBlock);
   void ReplaceBlock(UINT32 theBlock, OwnedBlock theNew);
   void AddBlockBehind(UINT32 theBlock, UINT32 theLimit, OwnedBlock theNew);
   void FindLast();
   void DropEmptyBlocks(UINT32 theFirst, UINT32 theEnd);

   OwnedBlock itsOnly; // null when there is a directory
   std::unique_ptr<Directory> itsDirectory;
   Block* itsLast = nullptr; // the only block or the directory's last; null while there are no elements
   UINT32 itsCount = 0;
   UINT32 itsVersion = 0;
};
static_assert(sizeof(ElementTable) <= 32, "one in every dataset and every item");

inline UINT32 ElementTable::GetBlockCount() const
{
   return itsDirectory ? static_cast<UINT32>(itsDirectory->size()) : itsLast != nullptr;
}

inline VR* ElementTable::At(const Position& thePosition) const
{
   if (thePosition.itsBlock >= GetBlockCount())
   {
      return nullptr;
   }
   Block* aBlock = BlockAt(thePosition.itsBlock);
   return thePosition.itsIndex < aBlock->itsCount ? aBlock->Elements()[thePosition.itsIndex] : nullptr;
}

inline UINT32 ElementTable::TagAt(const Position& thePosition) const
{
   return BlockAt(thePosition.itsBlock)->Tags()[thePosition.itsIndex];
}

inline void ElementTable::Advance(Position& thePosition) const
{
   if (++thePosition.itsIndex >= BlockAt(thePosition.itsBlock)->itsCount)
   {
      // At finds nothing behind the last block, as it finds nothing behind the last element.
      ++thePosition.itsBlock;
      thePosition.itsIndex = 0;
   }
}

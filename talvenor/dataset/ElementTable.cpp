#include "talvenor/dataset/ElementTable.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

#include "talvenor/dataset/VR.h"

namespace
{

// The number of theKeys (ascending) below theTag. The number of steps depends on theCount alone, and the choice within
// a step is a conditional move: tags are looked up in an order that no branch predictor can learn.
template <class Key, class TagOf>
inline UINT32 CountBelow(const Key* theKeys, UINT32 theCount, UINT32 theTag, TagOf theTagOf)
{
   const Key* aFirst = theKeys;
   while (theCount > 1)
   {
      const UINT32 aHalf = theCount / 2;
      aFirst += aHalf & -static_cast<UINT32>(theTagOf(aFirst[aHalf - 1]) < theTag);
      theCount -= aHalf;
   }
   return static_cast<UINT32>(aFirst - theKeys) + (theCount == 1 && theTagOf(*aFirst) < theTag);
}

constexpr UINT32 kHighestTag = 0xFFFFFFFF;

template <class T>
void MoveWithin(T* theArray, UINT32 theFrom, UINT32 theTo, UINT32 theCount)
{
   std::memmove(theArray + theTo, theArray + theFrom, theCount * sizeof(T));
}

} // namespace

inline UINT32 ElementTable::Block::LowerBound(UINT32 theTag)
{
   return CountBelow(Tags(), itsCount, theTag, [](UINT32 theKey) { return theKey; });
}

// Adds the other block's elements from theFirst on; they still stand there as well.
inline void ElementTable::Block::Append(Block& theOther, UINT32 theFirst)
{
   const UINT32 aCount = theOther.itsCount - theFirst;
   std::copy_n(theOther.Elements() + theFirst, aCount, Elements() + itsCount);
   std::copy_n(theOther.Tags() + theFirst, aCount, Tags() + itsCount);
   itsCount += aCount;
}

// Makes room at theIndex for an element; the block must not be full.
inline void ElementTable::Block::Open(UINT32 theIndex, VR* theVR, UINT32 theTag)
{
   MoveWithin(Elements(), theIndex, theIndex + 1, itsCount - theIndex);
   MoveWithin(Tags(), theIndex, theIndex + 1, itsCount - theIndex);
   Elements()[theIndex] = theVR;
   Tags()[theIndex] = theTag;
   ++itsCount;
}

// Forgets the elements from theFirst to before theEnd.
inline void ElementTable::Block::Close(UINT32 theFirst, UINT32 theEnd)
{
   MoveWithin(Elements(), theEnd, theFirst, itsCount - theEnd);
   MoveWithin(Tags(), theEnd, theFirst, itsCount - theEnd);
   itsCount -= theEnd - theFirst;
}

ElementTable::~ElementTable()
{
   Clear();
}

void ElementTable::Clear()
{
   // Emptied before an element is destroyed, so that the table is whole whatever its destructor does.
   const std::unique_ptr<Directory> aDirectory = std::move(itsDirectory);
   const OwnedBlock anOnlyBlock = std::move(itsOnly);
   itsLast = nullptr;
   itsVersion += itsCount != 0;
   itsCount = 0;

   // Last first: an allocator that hands out the piece it got back last then serves the next dataset in the order of
   // the addresses, as it served this one. A large dataset loads twice as fast for it.
   const auto DestroyElements = [](Block& theBlock) {
      std::for_each(std::make_reverse_iterator(theBlock.Elements() + theBlock.itsCount),
                    std::make_reverse_iterator(theBlock.Elements()), [](VR* theVR) { delete theVR; });
   };
   if (anOnlyBlock)
   {
      DestroyElements(*anOnlyBlock);
   }
   else if (aDirectory)
   {
      std::for_each(aDirectory->rbegin(), aDirectory->rend(),
                    [&](const Slot& theSlot) { DestroyElements(*theSlot.itsBlock); });
   }
}

ElementTable::OwnedBlock ElementTable::MakeBlock(UINT32 theCapacity)
{
   const std::size_t aSize = sizeof(Block) + theCapacity * (sizeof(VR*) + sizeof(UINT32));
   return OwnedBlock(::new (::operator new(aSize)) Block{0, theCapacity});
}

// The block that holds theTag or would have to take it; 0 also for an empty table.
inline UINT32 ElementTable::BlockFor(UINT32 theTag) const
{
   return itsDirectory ? CountBelow(itsDirectory->data(), GetBlockCount(), theTag,
                                    [](const Slot& theSlot) { return theSlot.itsLimit; })
                       : 0;
}

VR* ElementTable::Find(UINT32 theTag) const
{
   if (itsLast == nullptr)
   {
      return nullptr;
   }
   Block& aBlock = *BlockAt(BlockFor(theTag));
   const UINT32 anIndex = aBlock.LowerBound(theTag);
   return anIndex < aBlock.itsCount && aBlock.Tags()[anIndex] == theTag ? aBlock.Elements()[anIndex] : nullptr;
}

ElementTable::Position ElementTable::LowerBound(UINT32 theTag) const
{
   Position aPosition;
   if (itsLast != nullptr)
   {
      aPosition.itsBlock = BlockFor(theTag);
      const Block& aBlock = *BlockAt(aPosition.itsBlock);
      aPosition.itsIndex = BlockAt(aPosition.itsBlock)->LowerBound(theTag);
      if (aPosition.itsIndex == aBlock.itsCount)
      {
         aPosition = {aPosition.itsBlock + 1, 0};
      }
   }
   return aPosition;
}

int ElementTable::Insert(VR* theVR)
{
   // Decoders and copies bring elements in order.
   const UINT32 aTag = theVR->GetTag();
   Block* aLast = itsLast;
   if (aLast != nullptr && aLast->itsCount < aLast->itsCapacity && aLast->Tags()[aLast->itsCount - 1] < aTag)
   {
      aLast->Elements()[aLast->itsCount] = theVR;
      aLast->Tags()[aLast->itsCount] = aTag;
      ++aLast->itsCount;
      ++itsCount;
      ++itsVersion;
      return 1;
   }
   return InsertAnywhere(theVR, aTag);
}

int ElementTable::InsertAnywhere(VR* theVR, UINT32 theTag)
{
   std::unique_ptr<VR> aVR(theVR);
   Position aPosition;
   if (itsLast != nullptr)
   {
      aPosition.itsBlock = BlockFor(theTag);
      Block& aBlock = *BlockAt(aPosition.itsBlock);
      aPosition.itsIndex = aBlock.LowerBound(theTag);
      if (aPosition.itsIndex < aBlock.itsCount && aBlock.Tags()[aPosition.itsIndex] == theTag)
      {
         // Under the old element's place; an element that replaces itself stays.
         VR*& aPlace = aBlock.Elements()[aPosition.itsIndex];
         const std::unique_ptr<VR> anOld(aPlace == theVR ? nullptr : aPlace);
         aPlace = aVR.release();
         return 1;
      }
   }
   try
   {
      InsertNew(theVR, theTag, aPosition);
   }
   catch (const std::bad_alloc&)
   {
      return 0;
   }
   aVR.release();
   return 1;
}

void ElementTable::InsertNew(VR* theVR, UINT32 theTag, Position thePosition)
{
   if (itsLast == nullptr)
   {
      itsOnly = MakeBlock(kFirstCapacity);
      itsLast = itsOnly.get();
   }
   else if (const Block* aBlock = BlockAt(thePosition.itsBlock); aBlock->itsCount == aBlock->itsCapacity)
   {
      thePosition = MakeRoom(thePosition);
   }
   BlockAt(thePosition.itsBlock)->Open(thePosition.itsIndex, theVR, theTag);
   ++itsCount;
   ++itsVersion;
}

// For an insertion at thePosition, whose block is full. Returns where the place has gone. What comes in order fills its
// blocks: a full one is split only for an insertion in the middle. Throws std::bad_alloc, and nothing has changed.
ElementTable::Position ElementTable::MakeRoom(const Position& thePosition)
{
   const UINT32 aBlockNumber = thePosition.itsBlock;
   Block& aBlock = *BlockAt(aBlockNumber);
   if (aBlock.itsCapacity < kBlockCapacity)
   {
      OwnedBlock aLarger = MakeBlock(2 * aBlock.itsCapacity);
      aLarger->Append(aBlock, 0);
      ReplaceBlock(aBlockNumber, std::move(aLarger));
      return thePosition;
   }
   if (&aBlock == itsLast && thePosition.itsIndex == aBlock.itsCount)
   {
      AddBlockBehind(aBlockNumber, aBlock.Tags()[aBlock.itsCount - 1], MakeBlock(kFurtherCapacity));
      return {aBlockNumber + 1, 0};
   }
   Split(aBlockNumber);
   return thePosition.itsIndex < aBlock.itsCount ? thePosition
                                                 : Position{aBlockNumber + 1, thePosition.itsIndex - aBlock.itsCount};
}

// Moves the upper half of a block into a new one behind it.
void ElementTable::Split(UINT32 theBlock)
{
   Block& aBlock = *BlockAt(theBlock);
   const UINT32 aKept = aBlock.itsCount / 2;
   OwnedBlock anUpper = MakeBlock(kBlockCapacity);
   anUpper->Append(aBlock, aKept);
   AddBlockBehind(theBlock, aBlock.Tags()[aKept - 1], std::move(anUpper));
   aBlock.itsCount = aKept;
}

void ElementTable::ReplaceBlock(UINT32 theBlock, OwnedBlock theNew)
{
   (itsDirectory ? (*itsDirectory)[theBlock].itsBlock : itsOnly) = std::move(theNew);
   FindLast();
}

// theLimit divides the block from the new one.
void ElementTable::AddBlockBehind(UINT32 theBlock, UINT32 theLimit, OwnedBlock theNew)
{
   if (!itsDirectory)
   {
      auto aDirectory = std::make_unique<Directory>();
      aDirectory->reserve(4);
      aDirectory->push_back({kHighestTag, std::move(itsOnly)});
      itsDirectory = std::move(aDirectory);
   }
   const UINT32 aLimitBehind = (*itsDirectory)[theBlock].itsLimit;
   itsDirectory->insert(itsDirectory->begin() + theBlock + 1, {aLimitBehind, std::move(theNew)});
   (*itsDirectory)[theBlock].itsLimit = theLimit;
   FindLast();
}

void ElementTable::FindLast()
{
   itsLast = itsDirectory ? itsDirectory->back().itsBlock.get() : itsOnly.get();
}

VR* ElementTable::Remove(UINT32 theTag)
{
   const Position aPosition = LowerBound(theTag);
   VR* aVR = At(aPosition);
   if (aVR == nullptr || TagAt(aPosition) != theTag)
   {
      return nullptr;
   }
   BlockAt(aPosition.itsBlock)->Close(aPosition.itsIndex, aPosition.itsIndex + 1);
   --itsCount;
   ++itsVersion;
   DropEmptyBlocks(aPosition.itsBlock, aPosition.itsBlock + 1);
   return aVR;
}

UINT32 ElementTable::RemoveRange(UINT32 theFirstTag, UINT32 theLastTag)
{
   const Position aFirst = LowerBound(theFirstTag);
   const UINT32 aCountBefore = itsCount;
   UINT32 aBlockNumber = aFirst.itsBlock;
   for (UINT32 aBegin = aFirst.itsIndex; aBlockNumber < GetBlockCount(); ++aBlockNumber, aBegin = 0)
   {
      Block& aBlock = *BlockAt(aBlockNumber);
      const UINT32* aTags = aBlock.Tags();
      const UINT32 anEnd =
          static_cast<UINT32>(std::upper_bound(aTags + aBegin, aTags + aBlock.itsCount, theLastTag) - aTags);
      const bool isLast = anEnd < aBlock.itsCount;
      std::for_each(aBlock.Elements() + aBegin, aBlock.Elements() + anEnd, [](VR* theVR) { delete theVR; });
      aBlock.Close(aBegin, anEnd);
      itsCount -= anEnd - aBegin;
      if (isLast)
      {
         break;
      }
   }
   if (itsCount != aCountBefore)
   {
      ++itsVersion;
      DropEmptyBlocks(aFirst.itsBlock, std::min(aBlockNumber + 1, GetBlockCount()));
   }
   return aCountBefore - itsCount;
}

// Frees the blocks from theFirst to before theEnd that have no elements.
void ElementTable::DropEmptyBlocks(UINT32 theFirst, UINT32 theEnd)
{
   if (itsCount == 0)
   {
      itsDirectory.reset();
      itsOnly.reset();
   }
   else if (itsDirectory)
   {
      const auto aFirst = itsDirectory->begin() + theFirst;
      const auto anEnd = itsDirectory->begin() + theEnd;
      itsDirectory->erase(
          std::remove_if(aFirst, anEnd, [](const Slot& theSlot) { return theSlot.itsBlock->itsCount == 0; }), anEnd);
      itsDirectory->back().itsLimit = kHighestTag;
   }
   FindLast();
}

// The memory heaps of the process, as far as its allocator lets them be looked at. This class is what the allocators of
// Linux allow, nothing: they list no heaps, and neither lock nor walk them, and walking one unlocked would read blocks
// that other threads change. A host whose allocator can do more derives from it and puts its object in place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "talvenor/Export.h"

// One step of a walk over a heap: a block, or a region of memory that the heap has taken.
struct _PROCESS_HEAP_ENTRY
{
   enum Flag : std::uint16_t
   {
      RegionFlag = 0x0001,
      UncommittedRangeFlag = 0x0002,
      BusyFlag = 0x0004, // an allocated block
      MoveableFlag = 0x0010,
      ShareableFlag = 0x0020
   };

   struct BlockDetails
   {
      void* hMem;
   };
   struct RegionDetails
   {
      std::uint32_t dwCommittedSize; // bytes
      std::uint32_t dwUnCommittedSize;
      void* lpFirstBlock;
      void* lpLastBlock;
   };

   void* lpData;
   std::uint32_t cbData; // bytes
   std::uint8_t cbOverhead;
   std::uint8_t iRegionIndex;
   std::uint16_t wFlags;
   union
   {
      BlockDetails Block;   // of a busy and moveable block
      RegionDetails Region; // of a region
   };
};

namespace TNPlatform
{

// A heap is known by a pointer that only its allocator understands. Operations may be called from any thread.
class TALVENOR_API ProcessHeaps
{
public:
   static constexpr unsigned long kNoMoreItems = 259; // the error at the end of a walk

   // Fills theHeaps, which has room for theCapacity, and returns how many heaps there are.
   virtual std::size_t List(void** theHeaps, std::size_t theCapacity);

   // Keeps other threads out of the heap until Unlock.
   virtual bool Lock(void* theHeap);
   virtual bool Unlock(void* theHeap);

   // The entry after theEntry; the first one after an empty entry. False at the end (kNoMoreItems) and on failure.
   virtual bool Walk(void* theHeap, _PROCESS_HEAP_ENTRY& theEntry);

   // Whether the whole heap is consistent.
   virtual bool Validate(void* theHeap);

   // thePolicy is 2 for low fragmentation, 0 for the standard one. False when it is refused or cannot be set.
   virtual bool SetPolicy(void* theHeap, unsigned long thePolicy);

   // The error of the calling thread's last operation, and its text.
   virtual unsigned long LastError();
   virtual std::string ErrorText(unsigned long theError);

   // The heaps in use.
   static ProcessHeaps& Get();
   // theHeaps is borrowed until it is replaced; null brings back the platform's. Returns the previous ones.
   static ProcessHeaps* Replace(ProcessHeaps* theHeaps);

protected:
   ~ProcessHeaps() = default;
};

} // namespace TNPlatform

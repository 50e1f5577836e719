// Looks at the memory heaps of the process: sizes, the block that holds an address, damage. What can be seen is the
// allocator's matter (TNPlatform::ProcessHeaps); with the allocators of Linux there are no heaps to list, so that sizes
// are 0, no address is found and there is nothing to find damaged.
//
// A heap is given as the allocator's pointer. Any thread may call; a walk holds the lock of the heap, in which nobody
// else allocates meanwhile, and it is released before an operation ends in whatever way.
#pragma once

#include <iosfwd>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/platform/ProcessHeaps.h"

class TALVENOR_API HeapDebug
{
public:
   // The number of allocated blocks and their bytes, overhead included; 0 when the heap cannot be locked. Throws
   // TNRuntimeException when the walk fails; both are 0 then.
   static void calculateHeapSize(void* theHeap, UINT64& theTotalSize, unsigned long& theBlockCount);

   // Whether the allocator accepted the policy.
   static bool setLowFragmentationHeap(void* theHeap, bool theEnable);

   // Finds the heap and the entry that hold theAddress, among the first 512 heaps. False, and theHeap null, when none
   // does. Throws TNRuntimeException when a walk fails.
   static bool getHeapEntryForAddress(void* theAddress, void*& theHeap, _PROCESS_HEAP_ENTRY& theEntry);

   // Checks the first 512 heaps. At one that is damaged false, or TNRuntimeException if theThrowOnError.
   static bool validateAllHeaps(bool theThrowOnError);

   // Several lines; sizes in bytes.
   static void printHeapEntry(std::ostream& theOut, int theHeapIndex, int theEntryIndex,
                              const _PROCESS_HEAP_ENTRY& theEntry);

private:
   static bool getHeapEntry(void* theAddress, void* theHeap, _PROCESS_HEAP_ENTRY& theEntry);

   // From the entry's data address; 0xFFFFFFFF outside of the entry.
   static unsigned long getAddressOffsetInHeapEntry(const _PROCESS_HEAP_ENTRY& theEntry, const void* theAddress);

   // theText, and the last error in number and words.
   static void printError(std::ostream& theOut, const char* theText);
};

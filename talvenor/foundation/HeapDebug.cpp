#include "talvenor/foundation/HeapDebug.h"

#include <algorithm>
#include <ostream>
#include <span>
#include <sstream>
#include <string>

#include "talvenor/foundation/Exceptions.h"

namespace
{
using Entry = _PROCESS_HEAP_ENTRY;
using TNPlatform::ProcessHeaps;

constexpr unsigned long kOutside = 0xFFFFFFFF;

// The handles of the heaps of the process.
class HeapList
{
public:
   HeapList() : itsCount(std::min(ProcessHeaps::Get().List(itsHeaps, kCapacity), kCapacity)) {}
   std::span<void* const> Get() const { return {itsHeaps, itsCount}; }

private:
   static constexpr std::size_t kCapacity = 512;
   void* itsHeaps[kCapacity] = {};
   std::size_t itsCount;
};

class HeapLock
{
public:
   explicit HeapLock(void* theHeap) : itsHeap(theHeap), itsIsLocked(ProcessHeaps::Get().Lock(theHeap)) {}
   ~HeapLock()
   {
      if (itsIsLocked)
      {
         ProcessHeaps::Get().Unlock(itsHeap);
      }
   }
   HeapLock(const HeapLock&) = delete;
   HeapLock& operator=(const HeapLock&) = delete;
   bool IsLocked() const { return itsIsLocked; }

private:
   void* itsHeap;
   bool itsIsLocked;
};

UINT64 SizeOf(const Entry& theEntry)
{
   return UINT64{theEntry.cbData} + theEntry.cbOverhead;
}

// The address of an entry's end may be beyond the last one that there is: distances are compared.
bool Holds(const Entry& theEntry, const void* theAddress)
{
   const auto aStart = reinterpret_cast<std::uintptr_t>(theEntry.lpData);
   const auto anAddress = reinterpret_cast<std::uintptr_t>(theAddress);
   return anAddress >= aStart && anAddress - aStart < SizeOf(theEntry);
}

bool HasAll(const Entry& theEntry, unsigned int theFlags)
{
   return (theEntry.wFlags & theFlags) == theFlags;
}

struct FlagName
{
   Entry::Flag itsFlag;
   const char* itsName;
};
constexpr FlagName kFlagNames[] = {
    {Entry::RegionFlag, "PROCESS_HEAP_REGION "},
    {Entry::UncommittedRangeFlag, "PROCESS_HEAP_UNCOMMITTED_RANGE "},
    {Entry::BusyFlag, "PROCESS_HEAP_ENTRY_BUSY "},
    {Entry::MoveableFlag, "PROCESS_HEAP_ENTRY_MOVEABLE "},
    {Entry::ShareableFlag, "PROCESS_HEAP_ENTRY_DDESHARE "},
};

void PrintFlags(std::ostream& theOut, unsigned int theFlags)
{
   theOut << "\t\tFlags\t\t: ";
   for (const FlagName& aRow : kFlagNames)
   {
      if ((theFlags & aRow.itsFlag) != 0)
      {
         theOut << aRow.itsName;
         theFlags &= ~static_cast<unsigned int>(aRow.itsFlag);
      }
   }
   if (theFlags != 0)
   {
      theOut << " Unknown remaining flags: " << std::hex << theFlags << std::dec;
   }
   theOut << '\n';
}

void PrintAddress(std::ostream& theOut, const char* theLabel, const void* theAddress)
{
   theOut << theLabel << theAddress << std::dec << '\n';
}

void PrintSize(std::ostream& theOut, const char* theLabel, UINT64 theBytes)
{
   theOut << theLabel << theBytes << " bytes\n";
}
} // namespace

void HeapDebug::calculateHeapSize(void* theHeap, UINT64& theTotalSize, unsigned long& theBlockCount)
{
   theTotalSize = 0;
   theBlockCount = 0;
   const HeapLock aLock(theHeap);
   if (!aLock.IsLocked())
   {
      return;
   }

   UINT64 aTotalSize = 0;
   unsigned long aBlockCount = 0;
   Entry anEntry = {};
   while (ProcessHeaps::Get().Walk(theHeap, anEntry))
   {
      if (HasAll(anEntry, Entry::BusyFlag))
      {
         aTotalSize += SizeOf(anEntry);
         ++aBlockCount;
      }
   }
   if (ProcessHeaps::Get().LastError() != ProcessHeaps::kNoMoreItems)
   {
      throw TNRuntimeException("::HeapWalk failed.");
   }
   theTotalSize = aTotalSize;
   theBlockCount = aBlockCount;
}

bool HeapDebug::setLowFragmentationHeap(void* theHeap, bool theEnable)
{
   constexpr unsigned long kStandard = 0;
   constexpr unsigned long kLowFragmentation = 2;
   return theHeap != nullptr && ProcessHeaps::Get().SetPolicy(theHeap, theEnable ? kLowFragmentation : kStandard);
}

bool HeapDebug::getHeapEntryForAddress(void* theAddress, void*& theHeap, Entry& theEntry)
{
   theHeap = nullptr;
   const HeapList aList;
   for (void* aHeap : aList.Get())
   {
      if (getHeapEntry(theAddress, aHeap, theEntry))
      {
         theHeap = aHeap;
         return true;
      }
   }
   return false;
}

bool HeapDebug::getHeapEntry(void* theAddress, void* theHeap, Entry& theEntry)
{
   theEntry = {};
   const HeapLock aLock(theHeap);
   if (!aLock.IsLocked())
   {
      return false; // not walked while others change it
   }
   while (ProcessHeaps::Get().Walk(theHeap, theEntry))
   {
      if (Holds(theEntry, theAddress))
      {
         return true;
      }
   }
   const unsigned long anError = ProcessHeaps::Get().LastError();
   if (anError != ProcessHeaps::kNoMoreItems)
   {
      throw TNRuntimeException(("::HeapWalk failed with WIN32 Error Code = " + std::to_string(anError)).c_str());
   }
   return false;
}

bool HeapDebug::validateAllHeaps(bool theThrowOnError)
{
   const HeapList aList;
   const auto aHeaps = aList.Get();
   for (std::size_t i = 0; i < aHeaps.size(); ++i)
   {
      if (ProcessHeaps::Get().Validate(aHeaps[i]))
      {
         continue;
      }
      if (!theThrowOnError)
      {
         return false;
      }
      std::ostringstream aMessage;
      aMessage << "HeapDebug::validateAllHeaps: ::HeapValidate reports that heap at index " << i
               << "(handle = " << aHeaps[i] << ") is invalid";
      throw TNRuntimeException(aMessage.str().c_str());
   }
   return true;
}

void HeapDebug::printHeapEntry(std::ostream& theOut, int theHeapIndex, int theEntryIndex, const Entry& theEntry)
{
   theOut << std::dec << "\tHeap " << theHeapIndex << " Entry " << theEntryIndex << ":\n";
   PrintAddress(theOut, "\t\tlpData=\t\t", theEntry.lpData);
   PrintSize(theOut, "\t\tcbData=\t\t", theEntry.cbData);
   PrintSize(theOut, "\t\tcbOverhead=\t", theEntry.cbOverhead);
   PrintSize(theOut, "\t\ttotal size=\t", SizeOf(theEntry));
   theOut << "\t\tiRegionIndex=\t" << unsigned{theEntry.iRegionIndex} << '\n';
   PrintFlags(theOut, theEntry.wFlags);
   if (HasAll(theEntry, Entry::BusyFlag | Entry::MoveableFlag))
   {
      PrintAddress(theOut, "\t\tBlock.hMem=\t\t", theEntry.Block.hMem);
   }
   if (HasAll(theEntry, Entry::RegionFlag))
   {
      PrintSize(theOut, "\t\tRegion.dwCommittedSize=\t\t", theEntry.Region.dwCommittedSize);
      PrintSize(theOut, "\t\tRegion.dwUnCommittedSize=\t", theEntry.Region.dwUnCommittedSize);
      PrintAddress(theOut, "\t\tRegion.lpFirstBlock=\t\t", theEntry.Region.lpFirstBlock);
      PrintAddress(theOut, "\t\tRegion.lpLastBlock=\t\t", theEntry.Region.lpLastBlock);
   }
}

unsigned long HeapDebug::getAddressOffsetInHeapEntry(const Entry& theEntry, const void* theAddress)
{
   if (!Holds(theEntry, theAddress))
   {
      return kOutside;
   }
   return static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(theAddress) -
                                     reinterpret_cast<std::uintptr_t>(theEntry.lpData));
}

void HeapDebug::printError(std::ostream& theOut, const char* theText)
{
   const unsigned long anError = ProcessHeaps::Get().LastError();
   theOut << theText << ": Error Code (WIN32) = " << anError << " [" << ProcessHeaps::Get().ErrorText(anError) << "]\n";
}

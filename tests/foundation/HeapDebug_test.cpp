// HeapDebug over heaps that the test describes.
#include "talvenor/foundation/HeapDebug.h"

#include <gtest/gtest.h>
#include <sstream>
#include <vector>

#include "support/MessageOf.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
void* Address(std::uintptr_t theNumber)
{
   return reinterpret_cast<void*>(theNumber);
}

_PROCESS_HEAP_ENTRY Entry(std::uintptr_t theData, UINT32 theSize, UINT8 theOverhead, UINT16 theFlags)
{
   _PROCESS_HEAP_ENTRY anEntry = {};
   anEntry.lpData = Address(theData);
   anEntry.cbData = theSize;
   anEntry.cbOverhead = theOverhead;
   anEntry.wFlags = theFlags;
   return anEntry;
}

struct FakeHeap
{
   std::vector<_PROCESS_HEAP_ENTRY> itsEntries;
   unsigned long itsEnd = TNPlatform::ProcessHeaps::kNoMoreItems;
   bool itsCanLock = true;
   bool itsIsValid = true;
   int itsLocks = 0;
   long itsPolicy = -1;
   std::size_t itsNext = 0;
};

class FakeHeaps final : public TNPlatform::ProcessHeaps
{
public:
   FakeHeaps() : itsPrevious(Replace(this)) {}
   ~FakeHeaps() { Replace(itsPrevious); }
   FakeHeaps(const FakeHeaps&) = delete;

   std::size_t List(void** theHeaps, std::size_t theCapacity) override
   {
      for (std::size_t i = 0; i < std::min(theCapacity, itsHeaps.size()); ++i)
      {
         theHeaps[i] = &itsHeaps[i];
      }
      return itsHeaps.size();
   }
   bool Lock(void* theHeap) override
   {
      FakeHeap& aHeap = At(theHeap);
      aHeap.itsLocks += aHeap.itsCanLock;
      aHeap.itsNext = 0;
      return aHeap.itsCanLock;
   }
   bool Unlock(void* theHeap) override { return --At(theHeap).itsLocks >= 0; }
   bool Walk(void* theHeap, _PROCESS_HEAP_ENTRY& theEntry) override
   {
      FakeHeap& aHeap = At(theHeap);
      EXPECT_EQ(aHeap.itsLocks, 1) << "walked without a lock";
      itsError = aHeap.itsEnd;
      if (aHeap.itsNext == aHeap.itsEntries.size())
      {
         return false;
      }
      theEntry = aHeap.itsEntries[aHeap.itsNext++];
      return true;
   }
   bool Validate(void* theHeap) override { return At(theHeap).itsIsValid; }
   bool SetPolicy(void* theHeap, unsigned long thePolicy) override
   {
      At(theHeap).itsPolicy = static_cast<long>(thePolicy);
      return true;
   }
   unsigned long LastError() override { return itsError; }

   std::vector<FakeHeap> itsHeaps;
   unsigned long itsError = 0;

private:
   static FakeHeap& At(void* theHeap) { return *static_cast<FakeHeap*>(theHeap); }

   ProcessHeaps* itsPrevious;
};

struct Size
{
   UINT64 itsBytes = 77;
   unsigned long itsBlocks = 77;
};

Size SizeOf(void* theHeap)
{
   Size aSize;
   HeapDebug::calculateHeapSize(theHeap, aSize.itsBytes, aSize.itsBlocks);
   return aSize;
}

std::string Printed(const _PROCESS_HEAP_ENTRY& theEntry)
{
   std::ostringstream anOut;
   HeapDebug::printHeapEntry(anOut, 10, 11, theEntry);
   anOut << 10;
   return anOut.str();
}
} // namespace

TEST(HeapDebug, WithoutHeapsThereIsNothingToReport)
{
   int aVariable = 0;
   void* aHeap = &aVariable;
   _PROCESS_HEAP_ENTRY anEntry = {};
   EXPECT_FALSE(HeapDebug::getHeapEntryForAddress(&aVariable, aHeap, anEntry));
   EXPECT_EQ(aHeap, nullptr);
   EXPECT_TRUE(HeapDebug::validateAllHeaps(true));
   EXPECT_FALSE(HeapDebug::setLowFragmentationHeap(&aVariable, true));
   EXPECT_EQ(SizeOf(&aVariable).itsBytes, 0u);
}

TEST(HeapDebug, TheSizeOfAHeapIsThatOfItsBusyBlocks)
{
   FakeHeaps aFake;
   aFake.itsHeaps.resize(1);
   FakeHeap& aHeap = aFake.itsHeaps[0];
   aHeap.itsEntries = {Entry(0x1000, 4096, 0, 0x0001), Entry(0x1000, 0xFFFFFFFF, 255, 0x0004), Entry(0x1200, 50, 8, 0),
                       Entry(0x1300, 1, 16, 0x0014)};
   EXPECT_EQ(SizeOf(&aHeap).itsBytes, 0xFFFFFFFFull + 255 + 1 + 16);
   EXPECT_EQ(SizeOf(&aHeap).itsBlocks, 2u);
   EXPECT_EQ(aHeap.itsLocks, 0);

   aHeap.itsEnd = 5;
   EXPECT_EQ(MessageOf<TNRuntimeException>([&] { SizeOf(&aHeap); }), "::HeapWalk failed.");
   EXPECT_EQ(aHeap.itsLocks, 0) << "unlocked before the exception leaves";

   aHeap.itsCanLock = false;
   EXPECT_EQ(SizeOf(&aHeap).itsBytes, 0u);
   EXPECT_EQ(SizeOf(&aHeap).itsBlocks, 0u);
}

TEST(HeapDebug, AnAddressIsFoundFromTheDataToTheEndOfTheOverhead)
{
   FakeHeaps aFake;
   aFake.itsHeaps.resize(3);
   aFake.itsHeaps[0].itsCanLock = false;
   aFake.itsHeaps[1].itsEntries = {Entry(0x1000, 0x10, 4, 0x0004)};
   aFake.itsHeaps[2].itsEntries = {Entry(0x2000, 0x10, 0, 0), Entry(0x1010, 0x10, 0, 0x0004)};
   const struct
   {
      std::uintptr_t itsAddress;
      int itsHeap; // -1: none
      std::uintptr_t itsData;
   } kCases[] = {{0x0FFF, -1, 0}, {0x1000, 1, 0x1000}, {0x1013, 1, 0x1000}, {0x1014, 2, 0x1010}, {0x2010, -1, 0}};
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsAddress);
      void* aHeap = &aFake;
      _PROCESS_HEAP_ENTRY anEntry = {};
      EXPECT_EQ(HeapDebug::getHeapEntryForAddress(Address(aCase.itsAddress), aHeap, anEntry), aCase.itsHeap >= 0);
      EXPECT_EQ(aHeap, aCase.itsHeap >= 0 ? &aFake.itsHeaps[static_cast<std::size_t>(aCase.itsHeap)] : nullptr);
      if (aCase.itsHeap >= 0)
      {
         EXPECT_EQ(anEntry.lpData, Address(aCase.itsData));
      }
      EXPECT_EQ(aFake.itsHeaps[1].itsLocks + aFake.itsHeaps[2].itsLocks, 0);
   }

   aFake.itsHeaps[1].itsEnd = 6;
   EXPECT_EQ(MessageOf<TNRuntimeException>([&] {
                void* aHeap = nullptr;
                _PROCESS_HEAP_ENTRY anEntry = {};
                HeapDebug::getHeapEntryForAddress(Address(0x2000), aHeap, anEntry);
             }),
             "::HeapWalk failed with WIN32 Error Code = 6");
   EXPECT_EQ(aFake.itsHeaps[1].itsLocks, 0);
}

TEST(HeapDebug, TheFirstDamagedHeapOf512IsNamed)
{
   FakeHeaps aFake;
   aFake.itsHeaps.resize(600);
   aFake.itsHeaps[512].itsIsValid = false;
   EXPECT_TRUE(HeapDebug::validateAllHeaps(true)) << "beyond those that are looked at";

   aFake.itsHeaps[1].itsIsValid = false;
   EXPECT_FALSE(HeapDebug::validateAllHeaps(false));
   std::ostringstream anExpected;
   anExpected << "HeapDebug::validateAllHeaps: ::HeapValidate reports that heap at index 1(handle = "
              << static_cast<void*>(&aFake.itsHeaps[1]) << ") is invalid";
   EXPECT_EQ(MessageOf<TNRuntimeException>([] { HeapDebug::validateAllHeaps(true); }), anExpected.str());
}

TEST(HeapDebug, LowFragmentationIsPolicy2)
{
   FakeHeaps aFake;
   aFake.itsHeaps.resize(1);
   EXPECT_FALSE(HeapDebug::setLowFragmentationHeap(nullptr, true));
   EXPECT_TRUE(HeapDebug::setLowFragmentationHeap(&aFake.itsHeaps[0], true));
   EXPECT_EQ(aFake.itsHeaps[0].itsPolicy, 2);
   EXPECT_TRUE(HeapDebug::setLowFragmentationHeap(&aFake.itsHeaps[0], false));
   EXPECT_EQ(aFake.itsHeaps[0].itsPolicy, 0);
}

TEST(HeapDebug, AnEntryIsPrintedLineByLine)
{
   _PROCESS_HEAP_ENTRY aBlock = Entry(0xAB, 0xFFFFFFFF, 255, 0x0014);
   aBlock.iRegionIndex = 65;
   aBlock.Block.hMem = Address(0xCD);
   EXPECT_EQ(Printed(aBlock), "\tHeap 10 Entry 11:\n"
                              "\t\tlpData=\t\t0xab\n"
                              "\t\tcbData=\t\t4294967295 bytes\n"
                              "\t\tcbOverhead=\t255 bytes\n"
                              "\t\ttotal size=\t4294967550 bytes\n"
                              "\t\tiRegionIndex=\t65\n"
                              "\t\tFlags\t\t: PROCESS_HEAP_ENTRY_BUSY PROCESS_HEAP_ENTRY_MOVEABLE \n"
                              "\t\tBlock.hMem=\t\t0xcd\n"
                              "10");

   _PROCESS_HEAP_ENTRY aRegion = Entry(0xAB, 1, 0, 0xFFE3);
   aRegion.Region = {100, 200, Address(0x1A), Address(0x1B)};
   EXPECT_EQ(Printed(aRegion),
             "\tHeap 10 Entry 11:\n"
             "\t\tlpData=\t\t0xab\n"
             "\t\tcbData=\t\t1 bytes\n"
             "\t\tcbOverhead=\t0 bytes\n"
             "\t\ttotal size=\t1 bytes\n"
             "\t\tiRegionIndex=\t0\n"
             "\t\tFlags\t\t: PROCESS_HEAP_REGION PROCESS_HEAP_UNCOMMITTED_RANGE PROCESS_HEAP_ENTRY_DDESHARE "
             " Unknown remaining flags: ffc0\n"
             "\t\tRegion.dwCommittedSize=\t\t100 bytes\n"
             "\t\tRegion.dwUnCommittedSize=\t200 bytes\n"
             "\t\tRegion.lpFirstBlock=\t\t0x1a\n"
             "\t\tRegion.lpLastBlock=\t\t0x1b\n"
             "10");

   EXPECT_NE(Printed(Entry(0, 0, 0, 0x0044)).find("PROCESS_HEAP_ENTRY_BUSY  Unknown remaining flags: 40\n"),
             std::string::npos);
}

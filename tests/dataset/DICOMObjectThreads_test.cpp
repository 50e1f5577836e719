// Datasets that several threads use at once; worth most under the thread sanitizer.
#include <algorithm>
#include <atomic>
#include <barrier>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "support/Elements.h"
#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"

namespace
{
constexpr int kRounds = 1000;

// Runs theWork(0), theWork(1), ... at the same time and waits for all of them.
template <class Work>
void InThreads(int theCount, Work theWork)
{
   std::barrier aStart(theCount);
   std::vector<std::jthread> aThreads;
   for (int aThread = 0; aThread < theCount; ++aThread)
   {
      aThreads.emplace_back([&aStart, &theWork, aThread] {
         aStart.arrive_and_wait();
         theWork(aThread);
      });
   }
}
} // namespace

// Each thread locks its own dataset first: without care the two would wait for each other for ever.
TEST(DICOMObjectThreads, TwoThreadsCompareCrosswise)
{
   DICOMDataObject aSets[2];
   for (DICOMDataObject& aSet : aSets)
   {
      Fill(aSet, {0x00080018, 0x00100010, 0x7FE00010});
   }
   std::atomic<int> aFailures = 0;
   InThreads(2, [&](int theThread) {
      for (int aRound = 0; aRound < kRounds; ++aRound)
      {
         aFailures += !aSets[theThread].ValueEquals(aSets[1 - theThread]);
      }
   });
   EXPECT_EQ(aFailures, 0);
}

TEST(DICOMObjectThreads, TwoThreadsAssignCrosswise)
{
   DICOMDataObject aSets[2];
   Fill(aSets[0], {0x00080018, 0x00100010});
   Fill(aSets[1], {0x00080018, 0x00100010, 0x7FE00010});
   InThreads(2, [&](int theThread) {
      for (int aRound = 0; aRound < kRounds; ++aRound)
      {
         aSets[theThread] = aSets[1 - theThread];
      }
   });
   for (const DICOMDataObject& aSet : aSets)
   {
      EXPECT_TRUE(aSet.Entries() == 2 || aSet.Entries() == 3); // one of the two, never a mixture
   }
}

TEST(DICOMObjectThreads, PushesReadsAndWalksMix)
{
   constexpr int kThreads = 4;
   DICOMDataObject aSet;
   std::atomic<int> aFailures = 0;
   InThreads(kThreads, [&](int theThread) {
      const UINT16 aGroup = static_cast<UINT16>(0x0010 + 2 * theThread);
      for (UINT16 aRound = 1; aRound <= kRounds; ++aRound)
      {
         aSet.Push(NumberElement<UINT16>(static_cast<UINT32>(aGroup) << 16 | aRound, VRCode::US, aRound));
         aFailures += aSet.GetUINT16(aGroup, aRound) != aRound;
         aFailures += !aSet.HasNonNullAttribute(aGroup, aRound);
         if (aRound % 64 == 0)
         {
            const DICOMObjectLock aLock(aSet); // the lengths of one state
            aFailures += aSet.GetEncodedLength(ImplicitNoGroupLength) != aSet.Entries() * 10;
         }
      }
   });
   EXPECT_EQ(aFailures, 0);
   EXPECT_EQ(aSet.Entries(), static_cast<UINT32>(kThreads * kRounds));
}

TEST(DICOMObjectThreads, PartsMadeOnFirstUseAreMadeOnce)
{
   const DICOMDataObject aSet;
   std::vector<const void*> aDictionaries(4);
   std::vector<const void*> anIterators(4);
   InThreads(4, [&](int theThread) {
      const auto aPlace = static_cast<std::size_t>(theThread);
      aDictionaries[aPlace] = &aSet.GetDataDictionary();
      anIterators[aPlace] = &aSet.GetIterator(ExplicitNoGroupLength);
   });
   EXPECT_EQ(std::count(aDictionaries.begin(), aDictionaries.end(), aDictionaries[0]), 4);
   EXPECT_EQ(std::count(anIterators.begin(), anIterators.end(), anIterators[0]), 4);
}

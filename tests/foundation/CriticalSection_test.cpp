#include "talvenor/foundation/CriticalSectionWhileInScope.h"

#include <cerrno>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

#include "support/OnAnotherThread.h"

namespace
{

bool IsFree(CriticalSection& theSection)
{
   return OnAnotherThread([&] {
      const bool isEntered = theSection.TryEnter();
      theSection.Leave(); // ignored when it was not entered
      return isEntered;
   });
}

TEST(CriticalSection, IsLeftAsOftenAsItWasEntered)
{
   CriticalSection aSection;
   aSection.Enter();
   aSection.Enter();
   EXPECT_TRUE(aSection.TryEnter());
   aSection.Leave();
   aSection.Leave();
   EXPECT_FALSE(IsFree(aSection));
   aSection.Leave();
   EXPECT_TRUE(IsFree(aSection));
   aSection.Leave();
   EXPECT_TRUE(IsFree(aSection)) << "one Leave too many";
}

TEST(CriticalSection, ExcludesEveryoneElse)
{
   for (const unsigned long aSpinCount : {0ul, 10ul, 2000ul}) // sleeps at once, spins a little, spins
   {
      CriticalSection aSection(aSpinCount);
      int aSum = 0;
      OnThreads(4, [&](int) {
         for (int j = 0; j < 5000; ++j)
         {
            const CriticalSectionWhileInScope anOuter(aSection), anInner(aSection);
            ++aSum;
         }
      });
      EXPECT_EQ(aSum, 20000) << aSpinCount;
   }
}

// However the sleeper and the leaver interleave, the sleeper gets in, and soon: a lost wake-up would show as a sum of
// sleeps far above what the rounds take.
TEST(CriticalSection, SleeperIsNotForgotten)
{
   CriticalSection aSection(0);
   const auto aStart = std::chrono::steady_clock::now();
   for (int aRound = 0; aRound < 100; ++aRound)
   {
      aSection.Enter();
      std::thread aSleeper([&] {
         errno = 0;
         const CriticalSectionWhileInScope aGuard(aSection);
         EXPECT_EQ(errno, 0) << "waiting disturbed errno";
      });
      std::this_thread::sleep_for(std::chrono::microseconds(aRound * 2));
      aSection.Leave();
      aSleeper.join();
   }
   EXPECT_LT(std::chrono::steady_clock::now() - aStart, std::chrono::seconds(5));
}

// A section may be destroyed as soon as it can be entered: Leave must not touch it after letting go. The address
// sanitizer watches.
TEST(CriticalSection, MayBeDestroyedByTheNextThreadInside)
{
   for (int aRound = 0; aRound < 200; ++aRound)
   {
      auto aSection = std::make_unique<CriticalSection>(aRound % 2 ? 2000 : 0);
      aSection->Enter();
      std::thread aNext([&] {
         aSection->Enter();
         aSection->Leave();
         aSection.reset();
      });
      CriticalSection& aReference = *aSection;
      aReference.Leave();
      aNext.join();
   }
}

} // namespace

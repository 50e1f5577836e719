#include "talvenor/foundation/Mutex.h"

#include <gtest/gtest.h>
#include <memory>
#include <thread>

#include "support/OnAnotherThread.h"
#include "talvenor/foundation/MutexWhileInScope.h"

namespace
{

// Whether another thread can take the mutex.
bool IsFree(Mutex& theMutex)
{
   return OnAnotherThread([&] { return theMutex.TryLock() && theMutex.Unlock(); });
}

TEST(Mutex, IsReleasedAsOftenAsItWasTaken)
{
   Mutex aMutex;
   EXPECT_EQ(aMutex.Lock(), 1);
   EXPECT_EQ(aMutex.TryLock(), 1);
   EXPECT_FALSE(IsFree(aMutex));
   EXPECT_EQ(aMutex.Unlock(), 1);
   EXPECT_FALSE(IsFree(aMutex));
   EXPECT_EQ(aMutex.Unlock(), 1);
   EXPECT_TRUE(IsFree(aMutex));
   EXPECT_EQ(aMutex.Unlock(), 0);
}

TEST(Mutex, OfAHolderThatEndedGoesToTheNext)
{
   Mutex aMutex;
   std::thread([&] { aMutex.Lock(), aMutex.Lock(); }).join();
   EXPECT_EQ(aMutex.TryLock(), 1);
   EXPECT_EQ(aMutex.Unlock(), 1);
   EXPECT_EQ(aMutex.Unlock(), 0) << "the dead holder's count was inherited";
   EXPECT_TRUE(IsFree(aMutex));
}

TEST(Mutex, InitAndUnlockAreForItsHolder)
{
   Mutex aMutex;
   EXPECT_EQ(aMutex.Init(), 1);
   aMutex.Lock();
   aMutex.Lock();
   EXPECT_EQ(OnAnotherThread([&] { return aMutex.Init() + aMutex.Unlock(); }), 0); // strangers
   EXPECT_FALSE(IsFree(aMutex));
   EXPECT_EQ(aMutex.Init(), 1);
   EXPECT_EQ(aMutex.Unlock(), 0);
   EXPECT_TRUE(IsFree(aMutex));
}

// The kernel walks the mutexes that an ending thread holds: one that was destroyed must not be among them.
TEST(Mutex, MayBeDestroyedByItsHolder)
{
   std::thread([] {
      auto aMutex = std::make_unique<Mutex>();
      aMutex->Lock();
      aMutex->Lock();
   }).join();
}

TEST(Mutex, ExcludesThreadsThatMeetAtItsFirstUse)
{
   for (int aRound = 0; aRound < 50; ++aRound)
   {
      Mutex aMutex;
      int aSum = 0;
      OnThreads(3, [&](int) {
         for (int j = 0; j < 100; ++j)
         {
            const MutexWhileInScope aLock(aMutex);
            ++aSum;
         }
      });
      ASSERT_EQ(aSum, 300);
   }
}

} // namespace

#include "talvenor/foundation/Condition.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "support/OnAnotherThread.h"
#include "talvenor/foundation/MutexWhileInScope.h"

namespace
{

using Clock = std::chrono::steady_clock;

double MillisecondsOf(const std::function<void()>& theWork)
{
   const Clock::time_point aStart = Clock::now();
   theWork();
   return std::chrono::duration<double, std::milli>(Clock::now() - aStart).count();
}

TEST(Semaphore, HoldsOneUnitAtMost)
{
   Semaphore aSemaphore;
   EXPECT_EQ(aSemaphore.P(0), 1);
   EXPECT_EQ(aSemaphore.V(2), 0);
   EXPECT_EQ(aSemaphore.V(-1), 0);
   EXPECT_EQ(aSemaphore.P(0), 1) << "a refused V added units";
   EXPECT_NE(aSemaphore.V(1), 0);
   EXPECT_EQ(aSemaphore.V(1), 0);
   EXPECT_EQ(aSemaphore.P(), 0);
   EXPECT_EQ(aSemaphore.P(0), 1);
}

TEST(Semaphore, WaitsForAUnitOrTheEndOfTheTime)
{
   Semaphore aSemaphore;
   EXPECT_GE(MillisecondsOf([&] { EXPECT_EQ(aSemaphore.P(20), 1); }), 20);
   for (const unsigned long aTimeout : {10000ul, ~0ul})
   {
      std::thread aGiver([&] { aSemaphore.V(1); });
      EXPECT_EQ(aSemaphore.P(aTimeout), 0) << aTimeout;
      aGiver.join();
   }
}

// Threads that wait until they may go, and how many of them have started to wait.
struct Gate
{
   Condition itsCondition;
   int itsWaiting = 0, itsPassed = 0;
   bool isOpen = false;

   void Pass()
   {
      itsCondition.Lock();
      ++itsWaiting;
      while (!isOpen)
      {
         EXPECT_EQ(itsCondition.Wait(), 1);
      }
      ++itsPassed;
      EXPECT_EQ(itsCondition.Unlock(), 1) << "Wait returned without the lock mutex";
   }

   int Passed()
   {
      const MutexWhileInScope aLock(itsCondition);
      return itsPassed;
   }

   // Once theCount threads are counted and the lock is free they are inside Wait: it counts before it lets go.
   void OpenFor(int theCount)
   {
      for (bool isDone = false; !isDone; std::this_thread::yield())
      {
         itsCondition.Lock();
         isDone = isOpen = itsWaiting == theCount;
         itsCondition.Unlock();
      }
   }
};

TEST(Condition, EverySignalWakesOneWaiterAndABroadcastTheRest)
{
   Gate aGate;
   std::vector<std::thread> aThreads;
   for (int i = 0; i < 4; ++i)
   {
      aThreads.emplace_back([&] { aGate.Pass(); });
   }
   aGate.OpenFor(4);
   EXPECT_EQ(aGate.itsCondition.Signal(), 1);
   EXPECT_EQ(aGate.itsCondition.Signal(), 1);
   while (aGate.Passed() < 2)
   {
      std::this_thread::yield();
   }
   EXPECT_EQ(aGate.itsCondition.Broadcast(), 1);
   for (std::thread& aThread : aThreads)
   {
      aThread.join();
   }
   EXPECT_EQ(aGate.itsPassed, 4);
}

TEST(Condition, WithoutItsLockDoesNotWait)
{
   Condition aCondition;
   EXPECT_EQ(aCondition.Wait(), 0);
   EXPECT_EQ(aCondition.Wait(3600, 0), 0);
   aCondition.Lock();
   EXPECT_EQ(OnAnotherThread([&] { return aCondition.Wait(); }), 0) << "another thread holds it";
   // Nobody is counted as waiting any more: a signal leaves nothing behind.
   aCondition.Signal();
   EXPECT_GE(MillisecondsOf([&] { aCondition.Wait(0, 10000000); }), 10);
   aCondition.Unlock();
}

TEST(Condition, TimeoutIsToldAsAWakeUpWithTheLockHeld)
{
   const struct
   {
      const char* itsName;
      unsigned long itsSeconds, itsNanoseconds;
      double itsLeast; // milliseconds
   } kTimeouts[] = {
       {"less than a millisecond is no wait", 0, 999999, 0},
       {"whole milliseconds", 0, 30999999, 30},
       {"milliseconds wrap at 32 bits", 4294967, 316000000, 20},
   };
   for (const auto& aCase : kTimeouts)
   {
      Condition aCondition;
      aCondition.Lock();
      const double aTime = MillisecondsOf(
          [&] { EXPECT_EQ(aCondition.Wait(aCase.itsSeconds, aCase.itsNanoseconds), 1) << aCase.itsName; });
      EXPECT_GE(aTime, aCase.itsLeast) << aCase.itsName;
      EXPECT_LT(aTime, 1000) << aCase.itsName;
      EXPECT_EQ(aCondition.Unlock(), 1) << aCase.itsName;
   }
}

} // namespace

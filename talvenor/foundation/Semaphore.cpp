#include "talvenor/foundation/Semaphore.h"

#include <algorithm>
#include <chrono>

namespace
{

// Longer waits would overflow the clock's nanoseconds; nobody sees the end of this one.
constexpr unsigned long kLongestWait = 1000ul * 60 * 60 * 24 * 365 * 10; // milliseconds

} // namespace

int Semaphore::P()
{
   std::unique_lock aLock(itsMutex);
   itsUnits.wait(aLock, [this] { return itsCount > 0; });
   --itsCount;
   return 0;
}

int Semaphore::P(unsigned long theTimeout)
{
   const std::chrono::milliseconds aTimeout(std::min(theTimeout, kLongestWait));
   std::unique_lock aLock(itsMutex);
   if (!itsUnits.wait_for(aLock, aTimeout, [this] { return itsCount > 0; }))
   {
      return 1;
   }
   --itsCount;
   return 0;
}

int Semaphore::V(int theUnits)
{
   const std::lock_guard aLock(itsMutex);
   if (theUnits <= 0 || theUnits > itsMaximum - itsCount)
   {
      return 0;
   }
   itsCount += theUnits;
   // Under the lock: a woken thread may destroy the semaphore as soon as it has its unit.
   for (int i = 0; i < theUnits; ++i)
   {
      itsUnits.notify_one();
   }
   return 1;
}

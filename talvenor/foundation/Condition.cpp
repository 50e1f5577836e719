#include "talvenor/foundation/Condition.h"

#include <limits>

#include "talvenor/foundation/MutexWhileInScope.h"

Condition::Condition() : itsWakeUps(std::numeric_limits<int>::max()) {}

int Condition::Wait()
{
   return WaitBy([this] { return itsWakeUps.P(); });
}

int Condition::Wait(unsigned long theSeconds, unsigned long theNanoseconds)
{
   if (theSeconds == 0 && theNanoseconds == 0)
   {
      return Wait();
   }
   const auto aTimeout = static_cast<UINT32>(theNanoseconds / 1000000 + theSeconds * 1000);
   return WaitBy([this, aTimeout] { return itsWakeUps.P(aTimeout); });
}

int Condition::Signal()
{
   const MutexWhileInScope aGuard(itsGuard);
   return itsWaiters > 0 ? itsWakeUps.V(1) : 1;
}

int Condition::Broadcast()
{
   const MutexWhileInScope aGuard(itsGuard);
   return itsWaiters > 0 ? itsWakeUps.V(itsWaiters) : 1;
}

template <class WaitForUnit>
int Condition::WaitBy(WaitForUnit theWait)
{
   CountWaiters(+1);
   const bool isDone = itsLock.Unlock() && theWait() >= 0 && itsLock.Lock(); // a time-out counts as woken
   CountWaiters(-1);
   return isDone;
}

void Condition::CountWaiters(INT32 theChange)
{
   const MutexWhileInScope aGuard(itsGuard);
   itsWaiters += theChange;
}

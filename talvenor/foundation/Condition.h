// A condition variable: threads wait, with the lock mutex held, until another thread says that something has changed.
//
//    aCondition.Lock();
//    while (!aPredicate) { aCondition.Wait(); }
//    aCondition.Unlock();
//
// A wait may end without a signal (a time-out is not told apart, and a thread that starts to wait late may take the
// wake-up meant for an earlier one), so the predicate is tested after every return. A signal with no waiter leaves
// nothing pending. Results are 1 for success and 0 for failure; nothing throws.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/Mutex.h"
#include "talvenor/foundation/Semaphore.h"

class TALVENOR_API Condition
{
public:
   Condition();
   Condition(const Condition&) = delete;
   Condition& operator=(const Condition&) = delete;

   int Init() { return 1; } // does nothing

   int Lock() { return itsLock.Lock(); }
   int Unlock() { return itsLock.Unlock(); }

   // The caller holds the lock mutex once: it is released for the wait and held again afterwards. Returns 0 without
   // waiting when the caller does not hold it.
   int Wait();
   // The same within a time limit in whole milliseconds: theSeconds * 1000 + theNanoseconds / 1000000 modulo 2^32. Both
   // 0 is no limit.
   int Wait(unsigned long theSeconds, unsigned long theNanoseconds);

   // Wake one or all of the threads that are waiting. The lock mutex may, but need not be held.
   int Signal();
   int Broadcast();

private:
   template <class WaitForUnit>
   int WaitBy(WaitForUnit theWait);
   void CountWaiters(INT32 theChange);

   Mutex itsLock;
   INT32 itsWaiters = 0; // threads between the start and the end of a wait
   Mutex itsGuard;       // protects itsWaiters; nobody waits while holding it
   Semaphore itsWakeUps;
};

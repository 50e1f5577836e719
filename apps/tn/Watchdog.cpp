#include "apps/tn/Watchdog.h"

#include "talvenor/ul/Socket.h"

Watchdog::Watchdog() : itsThread([this] { Watch(); }) {}

Watchdog::~Watchdog()
{
   {
      const std::lock_guard aLock(itsMutex);
      itsIsClosing = true;
   }
   itsChanged.notify_one();
   itsThread.join();
   End();
}

void Watchdog::Begin(std::chrono::duration<double> theLimit)
{
   const std::lock_guard aLock(itsMutex);
   if (theLimit.count() > 0)
   {
      itsEnd = Clock::now() + std::chrono::duration_cast<Clock::duration>(theLimit);
      itsChanged.notify_one();
   }
}

bool Watchdog::End()
{
   const std::lock_guard aLock(itsMutex);
   itsEnd.reset();
   Socket::SetGlobalAbortRequestedFlag(0);
   return std::exchange(itsHasPassed, false);
}

void Watchdog::Watch()
{
   std::unique_lock aLock(itsMutex);
   while (!itsIsClosing)
   {
      if (!itsEnd)
      {
         itsChanged.wait(aLock);
      }
      else if (Clock::now() < *itsEnd)
      {
         itsChanged.wait_until(aLock, *itsEnd);
      }
      else
      {
         itsHasPassed = true;
         itsEnd.reset();
         Socket::SetGlobalAbortRequestedFlag(1);
      }
   }
}

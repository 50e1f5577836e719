#include "apps/tn/network/Watchdog.h"

#include <utility>

#include "apps/tn/base/Interruption.h"
#include "talvenor/ul/Socket.h"

Watchdog::Watchdog() : itsThread([this] { Run(); }) {}

Watchdog::~Watchdog()
{
   {
      const std::lock_guard aLock(itsMutex);
      itsIsClosing = true;
   }
   itsChanged.notify_one();
   itsThread.join();
}

void Watchdog::Watch(Socket& theSocket) const
{
   theSocket.SetSharedAbortFlag(itsFlag);
}

void Watchdog::Begin(std::chrono::duration<double> theLimit)
{
   const std::lock_guard aLock(itsMutex);
   itsEnd = theLimit.count() > 0 ? Clock::now() + std::chrono::duration_cast<Clock::duration>(theLimit)
                                 : Clock::time_point::max();
   itsIsWatching = true;
}

bool Watchdog::End()
{
   const std::lock_guard aLock(itsMutex);
   itsIsWatching = false;
   *itsFlag = 0;
   return std::exchange(itsHasPassed, false);
}

void Watchdog::Run()
{
   std::unique_lock aLock(itsMutex);
   while (!itsIsClosing)
   {
      if (const Clock::time_point aNow = Clock::now(); itsIsWatching && IsOver(aNow))
      {
         itsHasPassed = itsHasPassed || aNow >= itsEnd;
         *itsFlag = 1;
      }
      itsChanged.wait_for(aLock, kInterval);
   }
}

bool Watchdog::IsOver(Clock::time_point theNow) const
{
   return theNow >= itsEnd || Interruption::WasBefore(theNow - kGrace);
}

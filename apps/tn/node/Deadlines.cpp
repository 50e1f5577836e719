#include "apps/tn/node/Deadlines.h"

#include "talvenor/ul/Socket.h"

Deadlines::Guard::Guard(Deadlines& theDeadlines, Socket& theSocket) : itsDeadlines(theDeadlines), itsSocket(theSocket)
{
   const std::lock_guard aLock(itsDeadlines.itsMutex);
   itsDeadlines.itsGuards.insert(this);
}

Deadlines::Guard::~Guard()
{
   const std::lock_guard aLock(itsDeadlines.itsMutex);
   itsDeadlines.itsGuards.erase(this);
}

void Deadlines::Guard::Set(Seconds theLimit, bool theIsIdle)
{
   itsEnd = theLimit.count() > 0 ? Clock::now() + std::chrono::duration_cast<Clock::duration>(theLimit)
                                 : Clock::time_point::max();
   itsIsIdle = theIsIdle;
}

Deadlines::Deadlines() : itsThread([this] { Watch(); }) {}

Deadlines::~Deadlines()
{
   {
      const std::lock_guard aLock(itsMutex);
      itsIsClosing = true;
   }
   itsClosing.notify_one();
   itsThread.join();
}

bool Deadlines::IsLate(const Guard& theGuard, Clock::time_point theNow) const
{
   return itsEndsAll || (itsEndsIdle && theGuard.itsIsIdle) || theGuard.itsEnd.load() <= theNow;
}

void Deadlines::Watch()
{
   std::unique_lock aLock(itsMutex);
   while (!itsIsClosing)
   {
      const Clock::time_point aNow = Clock::now();
      for (Guard* const aGuard : itsGuards)
      {
         if (IsLate(*aGuard, aNow))
         {
            aGuard->itsSocket.SetAbortRequestedFlag(1);
         }
      }
      itsClosing.wait_for(aLock, kInterval);
   }
}

// A clock that tells the time it is told and sleeps in no time: sleeping moves it on. In use from construction to
// destruction. Any thread may read and set it.
#pragma once

#include <atomic>
#include <functional>
#include <utility>

#include "talvenor/foundation/SystemClock.h"

class FakeClock final : public SystemClock
{
public:
   // Starts days ahead of the real clock and of every fake one before it: whatever remembers the last time it was asked
   // sees a clock that only goes forward.
   FakeClock() : FakeClock(0)
   {
      static std::atomic<INT64> aDays{0};
      itsWallMilliseconds = itsPrevious->WallMilliseconds() + ++aDays * 86'400'000;
   }
   explicit FakeClock(INT64 theWallMilliseconds)
       : itsWallMilliseconds(theWallMilliseconds), itsPrevious(SystemClock::Replace(this))
   {}
   ~FakeClock() { SystemClock::Replace(itsPrevious); }
   FakeClock(const FakeClock&) = delete;
   FakeClock& operator=(const FakeClock&) = delete;

   INT64 WallMilliseconds() override { return itsWallMilliseconds; }
   INT64 MonotonicMilliseconds() override { return itsMonotonicMilliseconds; }
   void Sleep(UINT64 theMilliseconds) override
   {
      itsSlept += theMilliseconds;
      itsWallMilliseconds += static_cast<INT64>(theMilliseconds);
      itsMonotonicMilliseconds += static_cast<INT64>(theMilliseconds);
      if (itsEvent && itsSlept >= itsEventTime)
      {
         std::exchange(itsEvent, nullptr)();
      }
   }

   // Somebody sets the wall clock, forward or back.
   void Advance(INT64 theSeconds) { itsWallMilliseconds += theSeconds * 1000; }

   // Once theMilliseconds have been slept theEvent happens, as if another thread had acted meanwhile.
   void OnceSlept(UINT64 theMilliseconds, std::function<void()> theEvent)
   {
      itsEventTime = theMilliseconds;
      itsEvent = std::move(theEvent);
   }

   UINT64 Slept() const { return itsSlept; } // milliseconds

private:
   std::atomic<INT64> itsWallMilliseconds;
   std::atomic<INT64> itsMonotonicMilliseconds{1000};
   std::atomic<UINT64> itsSlept{0};
   UINT64 itsEventTime = 0;
   std::function<void()> itsEvent;
   SystemClock* itsPrevious;
};

// Time and sleep as the library sees them. Code that names things by the time, waits or keeps deadlines asks the clock
// in use, which a host may replace: a test then decides what time it is and sleeps in no time. Any thread may ask.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API SystemClock
{
public:
   virtual INT64 WallMilliseconds() = 0;      // since 1970-01-01T00:00:00Z; the clock may be set back
   virtual INT64 MonotonicMilliseconds() = 0; // from an arbitrary start, never back; for deadlines
   virtual void Sleep(UINT64 theMilliseconds) = 0;

   INT64 WallSeconds() { return WallMilliseconds() / 1000; }

   // The clock in use: the operating system's until another one is put in its place.
   static SystemClock& Get();
   // theClock is borrowed until it is replaced; null brings back the operating system's. Returns the previous clock.
   static SystemClock* Replace(SystemClock* theClock);

protected:
   ~SystemClock() = default;
};

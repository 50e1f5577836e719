#include "talvenor/foundation/SystemClock.h"

#include <atomic>

#include "talvenor/platform/Clock.h"

namespace
{

class OperatingSystemClock final : public SystemClock
{
public:
   INT64 WallMilliseconds() override { return TNPlatform::WallClockMilliseconds(); }
   INT64 MonotonicMilliseconds() override { return TNPlatform::MonotonicNanoseconds() / 1000000; }
   void Sleep(UINT64 theMilliseconds) override { TNPlatform::SleepMilliseconds(theMilliseconds); }
};

constinit OperatingSystemClock gOperatingSystemClock;
constinit std::atomic<SystemClock*> gClock = &gOperatingSystemClock;

} // namespace

SystemClock& SystemClock::Get()
{
   return *gClock.load(std::memory_order_acquire);
}

SystemClock* SystemClock::Replace(SystemClock* theClock)
{
   return gClock.exchange(theClock ? theClock : &gOperatingSystemClock, std::memory_order_acq_rel);
}

#include "talvenor/platform/Clock.h"

#include <cerrno>
#if defined(__x86_64__) || defined(__i386__)
#include <x86intrin.h>
#endif

namespace TNPlatform
{

namespace
{

timespec Read(clockid_t theClock)
{
   timespec aTime = {};
   clock_gettime(theClock, &aTime);
   return aTime;
}

std::int64_t Nanoseconds(const timespec& theTime)
{
   return std::int64_t{theTime.tv_sec} * 1000000000 + theTime.tv_nsec;
}

} // namespace

std::int64_t WallClockMilliseconds()
{
   const timespec aTime = Read(CLOCK_REALTIME);
   return std::int64_t{aTime.tv_sec} * 1000 + aTime.tv_nsec / 1000000;
}

std::int64_t MonotonicNanoseconds()
{
   return Nanoseconds(Read(CLOCK_MONOTONIC));
}

bool ReadPerformanceCounter(std::int64_t& theTicks)
{
   timespec aTime = {};
   if (clock_gettime(CLOCK_MONOTONIC, &aTime) != 0)
   {
      return false;
   }
   theTicks = Nanoseconds(aTime);
   return true;
}

std::uint64_t ProcessorClockCount()
{
#if defined(__x86_64__) || defined(__i386__)
   return __rdtsc();
#else
   return static_cast<std::uint64_t>(MonotonicNanoseconds());
#endif
}

void SleepMilliseconds(std::uint64_t theMilliseconds)
{
   timespec aRest = {static_cast<std::time_t>(theMilliseconds / 1000),
                     static_cast<long>(theMilliseconds % 1000) * 1000000};
   while (clock_nanosleep(CLOCK_MONOTONIC, 0, &aRest, &aRest) == EINTR)
   {}
}

std::tm LocalTime(std::time_t theSeconds)
{
   std::tm aTime = {};
   localtime_r(&theSeconds, &aTime);
   return aTime;
}

std::tm UniversalTime(std::time_t theSeconds)
{
   std::tm aTime = {};
   gmtime_r(&theSeconds, &aTime);
   return aTime;
}

} // namespace TNPlatform

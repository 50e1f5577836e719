// The clocks of the operating system: wall clock and calendar, a clock that only goes forward, the processor's own
// counter, and sleep. Callers whose behaviour depends on time go through SystemClock, which tests can replace.
#pragma once

#include <cstdint>
#include <ctime>

namespace TNPlatform
{

std::int64_t WallClockMilliseconds(); // since 1970-01-01T00:00:00Z; follows the setting of the clock
std::int64_t MonotonicNanoseconds();  // from an arbitrary start; for differences and deadlines

// The counter for measurements: its ticks per second, 0 where there is no such counter, and its value.
constexpr double PerformanceCounterFrequency()
{
   return 1e9;
}
bool ReadPerformanceCounter(std::int64_t& theTicks); // false when it cannot be read

std::uint64_t ProcessorClockCount();                   // cycles or nanoseconds, whatever is cheap; for seeds only
void SleepMilliseconds(std::uint64_t theMilliseconds); // in full, whatever signals arrive

std::tm LocalTime(std::time_t theSeconds);
std::tm UniversalTime(std::time_t theSeconds);

} // namespace TNPlatform

#include "talvenor/foundation/HighResTimer.h"

#include "talvenor/platform/Clock.h"

constexpr double HighResTimer::GetFrequency()
{
   return TNPlatform::PerformanceCounterFrequency();
}

// A constant: it is set before any code of the process runs.
constinit const double HighResTimer::itsFrequency = GetFrequency();

double HighResTimer::Get()
{
   std::int64_t aTicks = 0;
   return itsFrequency > 0 && TNPlatform::ReadPerformanceCounter(aTicks) ? static_cast<double>(aTicks) / itsFrequency
                                                                         : 0.0;
}

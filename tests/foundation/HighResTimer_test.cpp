#include "talvenor/foundation/HighResTimer.h"

#include <chrono>
#include <gtest/gtest.h>

TEST(HighResTimer, MeasuresInSeconds)
{
   using Clock = std::chrono::steady_clock;
   const auto Seconds = [](Clock::duration theTime) { return std::chrono::duration<double>(theTime).count(); };
   constexpr double kRounding = 1e-6;

   const Clock::time_point anOuterStart = Clock::now();
   const double aStart = HighResTimer::Get();
   const Clock::time_point anInnerStart = Clock::now();
   Clock::time_point anInnerEnd = anInnerStart;
   while (anInnerEnd - anInnerStart < std::chrono::milliseconds(2))
   {
      anInnerEnd = Clock::now();
   }
   const double aTime = HighResTimer::Get() - aStart;
   EXPECT_GE(aTime, Seconds(anInnerEnd - anInnerStart) - kRounding);
   EXPECT_LE(aTime, Seconds(Clock::now() - anOuterStart) + kRounding);
}

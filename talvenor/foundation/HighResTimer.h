// A clock of high resolution for measurements. Any thread may ask.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API HighResTimer
{
public:
   // Seconds from an arbitrary start, never back; 0.0 when the clock cannot be read.
   static double Get();

private:
   static constexpr double GetFrequency();

   static const double itsFrequency; // ticks per second, 0.0 without such a clock
};

#include "talvenor/print/BusyMark.h"

#include "talvenor/foundation/SystemClock.h"

namespace
{
constexpr unsigned int kStep = 1000; // milliseconds
}

void BusyMark::WaitWhileBusy() const
{
   while (IsBusy())
   {
      SystemClock::Get().Sleep(kStep);
   }
}

#include "apps/tn/base/Interruption.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

namespace
{
using Interruption::Clock;

constexpr Clock::rep kNever = Clock::time_point::max().time_since_epoch().count();

// When the first signal came. A handler may use what is lock-free, and the clock (clock_gettime).
std::atomic<Clock::rep> gTime = kNever;
static_assert(std::atomic<Clock::rep>::is_always_lock_free);

void Note(int theSignal)
{
   gTime = std::min(gTime.load(), Clock::now().time_since_epoch().count());
   std::signal(theSignal, SIG_DFL);
}
} // namespace

void Interruption::Take()
{
   for (const int aSignal : {SIGINT, SIGTERM, SIGHUP})
   {
      std::signal(aSignal, Note);
   }
}

bool Interruption::HasCome()
{
   return gTime != kNever;
}

bool Interruption::WasBefore(Clock::time_point theTime)
{
   return gTime < theTime.time_since_epoch().count();
}

void Interruption::Sleep(std::chrono::duration<double> theTime)
{
   constexpr std::chrono::milliseconds kSlice{50};
   const Clock::time_point anEnd = Clock::now() + std::chrono::duration_cast<Clock::duration>(theTime);
   while (!HasCome() && Clock::now() < anEnd)
   {
      std::this_thread::sleep_for(std::min<Clock::duration>(kSlice, anEnd - Clock::now()));
   }
}

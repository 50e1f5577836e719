#include "talvenor/foundation/CriticalSection.h"

#include <bit>

#include "talvenor/platform/Threads.h"

namespace
{

constexpr unsigned int kLongestSleep = 1; // milliseconds; bounds the cost of an overlooked sleeper

// The operating system compares 32 bits: the low half of the owner. A new owner with the same low half only costs a
// sleep of bounded length.
const std::uint32_t* SleepWord(const std::atomic<std::uintptr_t>& theOwner)
{
   constexpr bool isLowHalfLast = std::endian::native == std::endian::big && sizeof theOwner == 8;
   return reinterpret_cast<const std::uint32_t*>(&theOwner) + (isLowHalfLast ? 1 : 0);
}

bool CanSpin()
{
   static const bool hasSeveralProcessors = TNPlatform::ProcessorCount() > 1;
   return hasSeveralProcessors;
}

} // namespace

void CriticalSection::WaitAndEnter()
{
   if (CanSpin())
   {
      for (unsigned long i = itsSpinCount.load(std::memory_order_relaxed); i > 0; --i)
      {
         TNPlatform::SpinPause();
         if (TryEnter())
         {
            return;
         }
      }
   }
   itsSleepers.fetch_add(1, std::memory_order_relaxed);
   while (!TryEnter())
   {
      if (const std::uintptr_t anOwner = itsOwner.load(std::memory_order_relaxed))
      {
         TNPlatform::SleepOnWord(SleepWord(itsOwner), static_cast<std::uint32_t>(anOwner), kLongestSleep);
      }
   }
   itsSleepers.fetch_sub(1, std::memory_order_relaxed);
}

void CriticalSection::WakeOne()
{
   TNPlatform::WakeOneSleeper(SleepWord(itsOwner));
}

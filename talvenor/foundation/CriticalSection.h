// A recursive lock of this process for short sections: every dataset and every dataset node has one.
//
// A thread that finds the section busy tries it again spinCount times before it blocks; with one processor it blocks at
// once, since the holder cannot move while others spin. The lock is not robust: a section whose holder ended without
// leaving stays busy. Leave by a thread that has not entered is ignored. Construction asks nothing of the operating
// system and cannot fail.
//
// Cost. Entering a free section is one compare-and-swap, leaving it is a plain store: half the price of a lock that
// also exchanges on the way out. What that saves it owes to the sleepers. Without a full fence in Leave, a thread that
// is about to sleep may be overlooked by the one that leaves; so nobody sleeps longer than a millisecond before looking
// again, and the worst case of the lost wake-up is that millisecond. (A membarrier(2) by the sleeper would close the
// gap exactly, were Leave to look for sleepers after its store. It must look before: once the store is visible another
// thread may enter, leave and destroy the section, so that Leave may no longer read it.)
#pragma once

#include <atomic>
#include <cstdint>

#include "talvenor/Export.h"
#include "talvenor/platform/ThreadIdentity.h"

class TALVENOR_API CriticalSection
{
public:
   explicit constexpr CriticalSection(unsigned long theSpinCount = 2000) : itsSpinCount(theSpinCount) {}
   CriticalSection(const CriticalSection&) = delete;
   CriticalSection& operator=(const CriticalSection&) = delete;

   void Enter()
   {
      if (!TryEnter())
      {
         WaitAndEnter();
      }
   }

   void Leave()
   {
      if (itsOwner.load(std::memory_order_relaxed) != TNPlatform::ThisThread() || --itsDepth != 0)
      {
         return;
      }
      const bool hasSleepers = itsSleepers.load(std::memory_order_relaxed) != 0;
      itsOwner.store(0, std::memory_order_release);
      if (hasSleepers)
      {
         WakeOne(); // uses the address of the section only
      }
   }

   // True when the section was entered without waiting.
   bool TryEnter()
   {
      const std::uintptr_t aThread = TNPlatform::ThisThread();
      std::uintptr_t anOwner = itsOwner.load(std::memory_order_relaxed);
      if (anOwner == aThread)
      {
         ++itsDepth;
         return true;
      }
      if (anOwner == 0 &&
          itsOwner.compare_exchange_strong(anOwner, aThread, std::memory_order_acquire, std::memory_order_relaxed))
      {
         itsDepth = 1;
         return true;
      }
      return false;
   }

   // Returns the previous spin count.
   unsigned long SetSpinCount(unsigned long theSpinCount)
   {
      return itsSpinCount.exchange(theSpinCount, std::memory_order_relaxed);
   }

private:
   void WaitAndEnter();
   void WakeOne();

   std::atomic<std::uintptr_t> itsOwner = 0; // 0 while the section is free
   std::uint32_t itsDepth = 0;               // entered this often; belongs to the owner
   std::atomic<std::uint32_t> itsSleepers = 0;
   std::atomic<unsigned long> itsSpinCount;
};
static_assert(sizeof(CriticalSection) <= 24, "one in every dataset and node");

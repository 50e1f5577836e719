// The operating system's mutex, recursive and robust.
//
// A holder that ended without unlocking counts as having unlocked: the next waiter gets the mutex. The POSIX mutex is
// built at the first use, because its robust kind has no static initialiser and a mutex of static storage must work
// before any constructor has run.
#pragma once

#include <atomic>
#include <cstdint>
#include <pthread.h>

#include "talvenor/platform/ThreadIdentity.h"

namespace TNPlatform
{

class RecursiveMutex
{
public:
   constexpr RecursiveMutex() = default;
   ~RecursiveMutex();
   RecursiveMutex(const RecursiveMutex&) = delete;
   RecursiveMutex& operator=(const RecursiveMutex&) = delete;

   // All return true on success.
   bool Lock();
   bool TryLock();
   bool Unlock(); // false when the calling thread does not hold it
   bool Renew();  // a fresh mutex; false while another thread holds it

private:
   enum State : unsigned char
   {
      kUnbuilt,
      kBeingBuilt,
      kBuilt
   };

   bool Ready() { return itsState.load(std::memory_order_acquire) == kBuilt || Build(); }
   bool Build();
   bool Acquired(int theError);
   bool ReleaseWhollyAndDestroy();

   pthread_mutex_t itsMutex = {};
   std::atomic<State> itsState = kUnbuilt;
   unsigned int itsDepth = 0;                 // taken this often; belongs to the holder
   std::atomic<std::uintptr_t> itsHolder = 0; // thread pointer, 0 while the mutex is free
};

} // namespace TNPlatform

#include "talvenor/platform/RecursiveMutex.h"

#include <cerrno>
#include <sched.h>

namespace TNPlatform
{

namespace
{

bool BuildRobustAndRecursive(pthread_mutex_t& theMutex)
{
   pthread_mutexattr_t anAttributes;
   if (pthread_mutexattr_init(&anAttributes) != 0)
   {
      return false;
   }
   const bool isBuilt = pthread_mutexattr_settype(&anAttributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                        pthread_mutexattr_setrobust(&anAttributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                        pthread_mutex_init(&theMutex, &anAttributes) == 0;
   pthread_mutexattr_destroy(&anAttributes);
   return isBuilt;
}

} // namespace

RecursiveMutex::~RecursiveMutex()
{
   if (itsState.load(std::memory_order_acquire) == kBuilt)
   {
      // Fails while another thread is inside, as detached threads may be when the process ends: then it is left alone.
      ReleaseWhollyAndDestroy();
   }
}

bool RecursiveMutex::Lock()
{
   return Ready() && Acquired(pthread_mutex_lock(&itsMutex));
}

bool RecursiveMutex::TryLock()
{
   return Ready() && Acquired(pthread_mutex_trylock(&itsMutex));
}

bool RecursiveMutex::Unlock()
{
   if (itsHolder.load(std::memory_order_relaxed) != ThisThread())
   {
      return false;
   }
   if (--itsDepth == 0)
   {
      itsHolder.store(0, std::memory_order_relaxed);
   }
   return pthread_mutex_unlock(&itsMutex) == 0;
}

bool RecursiveMutex::Renew()
{
   if (itsState.load(std::memory_order_acquire) == kBuilt && !ReleaseWhollyAndDestroy())
   {
      return false;
   }
   return Build();
}

// The first thread builds; others that arrive meanwhile wait for it, which takes less than a microsecond.
bool RecursiveMutex::Build()
{
   State aState = kUnbuilt;
   while (!itsState.compare_exchange_weak(aState, kBeingBuilt, std::memory_order_acquire))
   {
      if (aState == kBuilt)
      {
         return true;
      }
      aState = kUnbuilt;
      sched_yield();
   }
   const bool isBuilt = BuildRobustAndRecursive(itsMutex);
   itsState.store(isBuilt ? kBuilt : kUnbuilt, std::memory_order_release);
   return isBuilt;
}

bool RecursiveMutex::Acquired(int theError)
{
   if (theError == EOWNERDEAD)
   {
      // The holder ended inside; what it guarded is for the caller to judge.
      theError = pthread_mutex_consistent(&itsMutex);
      itsDepth = 0;
   }
   if (theError != 0)
   {
      return false;
   }
   itsHolder.store(ThisThread(), std::memory_order_relaxed);
   ++itsDepth;
   return true;
}

// A robust mutex that is destroyed while held stays on the list that the kernel walks when its holder ends. So a holder
// lets go of it first, however often it took it, and a mutex that another thread holds is not destroyed.
bool RecursiveMutex::ReleaseWhollyAndDestroy()
{
   if (!TryLock())
   {
      return false;
   }
   for (unsigned int aDepth = itsDepth; aDepth > 0; --aDepth)
   {
      Unlock();
   }
   if (pthread_mutex_destroy(&itsMutex) != 0)
   {
      return false;
   }
   // Built anew at the next use. That matters after the destructor too: a mutex of static storage may be wanted by
   // threads that still run while the process ends.
   itsState.store(kUnbuilt, std::memory_order_release);
   return true;
}

} // namespace TNPlatform

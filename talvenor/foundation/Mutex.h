// A lock of this process, waited for without time limit.
//
// Recursive: the thread that holds it may take it again and releases it as often. Robust: a mutex whose holder ended
// without releasing it goes to the next thread that waits. Results are 1 for success and 0 for failure; nothing throws.
//
// The operating system's mutex is made at the first use, so a Mutex at namespace scope needs no start-up code and may
// be used by the constructor of any other global.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/platform/RecursiveMutex.h"

class TALVENOR_API Mutex
{
public:
   constexpr Mutex() = default;
   ~Mutex();
   Mutex(const Mutex&) = delete;
   Mutex& operator=(const Mutex&) = delete;

   // Makes the object a fresh, unowned mutex. Returns 0 and changes nothing while another thread holds it.
   int Init();
   int Lock();
   int TryLock(); // 0 when another thread holds it
   int Unlock();  // 0 when the calling thread does not hold it

private:
   TNPlatform::RecursiveMutex itsMutex;
};

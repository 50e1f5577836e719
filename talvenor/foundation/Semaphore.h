// A counting semaphore of this process. Its count starts at 0 and holds one unit at most; nothing throws.
#pragma once

#include <condition_variable>
#include <mutex>

#include "talvenor/Export.h"

class TALVENOR_API Semaphore
{
public:
   Semaphore() : Semaphore(1) {}
   Semaphore(const Semaphore&) = delete;
   Semaphore& operator=(const Semaphore&) = delete;

   // Waits without limit until the count is not 0 and takes one unit. Returns 0; -1 on failure.
   int P();
   // The same within theTimeout milliseconds: 0 when a unit was taken, 1 when the time ran out, -1 on failure.
   int P(unsigned long theTimeout);

   // Adds theUnits. Returns 0 and adds nothing if there are none to add or the count would pass the maximum.
   int V(int theUnits);

private:
   friend class Condition; // needs a unit for every waiter
   explicit Semaphore(int theMaximum) : itsMaximum(theMaximum) {}

   std::mutex itsMutex;
   std::condition_variable itsUnits;
   const int itsMaximum;
   int itsCount = 0;
};

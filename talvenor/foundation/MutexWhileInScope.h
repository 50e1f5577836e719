// Holds a mutex from construction to destruction.
//
// If the mutex cannot be taken the guard holds nothing, releases nothing, and the guarded code runs unlocked: a log
// entry without its lock is better than none.
#pragma once

#include "talvenor/Export.h"

class Condition;
class Mutex;

class TALVENOR_API MutexWhileInScope
{
public:
   // Both borrow their argument, which must outlive the guard.
   explicit MutexWhileInScope(Mutex& theMutex);
   explicit MutexWhileInScope(Condition& theCondition); // takes the condition's lock mutex
   ~MutexWhileInScope();
   MutexWhileInScope(const MutexWhileInScope&) = delete;
   MutexWhileInScope& operator=(const MutexWhileInScope&) = delete;

private:
   // At most one of them is set.
   Mutex* itsMutex = nullptr;
   Condition* itsCondition = nullptr;
};

#include "talvenor/foundation/MutexWhileInScope.h"

#include "talvenor/foundation/Condition.h"

MutexWhileInScope::MutexWhileInScope(Mutex& theMutex) : itsMutex(theMutex.Lock() ? &theMutex : nullptr) {}

MutexWhileInScope::MutexWhileInScope(Condition& theCondition)
    : itsCondition(theCondition.Lock() ? &theCondition : nullptr)
{}

MutexWhileInScope::~MutexWhileInScope()
{
   if (itsMutex)
   {
      itsMutex->Unlock();
   }
   if (itsCondition)
   {
      itsCondition->Unlock();
   }
}

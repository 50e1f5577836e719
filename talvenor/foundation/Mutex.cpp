#include "talvenor/foundation/Mutex.h"

Mutex::~Mutex() = default;

int Mutex::Init()
{
   return itsMutex.Renew();
}

int Mutex::Lock()
{
   return itsMutex.Lock();
}

int Mutex::TryLock()
{
   return itsMutex.TryLock();
}

int Mutex::Unlock()
{
   return itsMutex.Unlock();
}

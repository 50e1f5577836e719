#include "talvenor/dimse/MessageID.h"

#include "talvenor/foundation/Mutex.h"
#include "talvenor/foundation/MutexWhileInScope.h"

namespace
{
constinit Mutex gMutex;
UINT16 gLastMessageID = 0;
thread_local UINT16 gLastOfThread = 0;
} // namespace

UINT16 NextMessageID()
{
   const MutexWhileInScope aGuard(gMutex);
   gLastOfThread = ++gLastMessageID;
   return gLastOfThread;
}

UINT16 LastMessageIDOfThread()
{
   return gLastOfThread;
}

// Time stamps that never repeat within a process: seconds since 1970 times 65536, plus a count within the second.
//
// More than 65536 stamps in one second wait for the next. A clock that was set back by up to 100 seconds is waited for;
// set back further, one call throws and the next goes on from the new time. Any thread may call.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/Mutex.h"

class TALVENOR_API UniqueTimestamp
{
public:
   // Throws TNRuntimeException when the clock went back by more than 100 seconds.
   static UINT64 GetTimestamp();
   static RWCString GetTimestampString(); // in decimal

   // Since 1970-01-01T00:00:00Z.
   static INT64 CurrentTimeMillis();
   static INT64 CurrentTimeSeconds();

private:
   UniqueTimestamp(); // throws ConstructorError: there are static operations only

   static Mutex itsMutex;
   static INT64 itsLastTime; // seconds of the last stamp
   static UINT32 itsCounter; // stamps given in that second, less one
};

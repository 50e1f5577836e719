#include "talvenor/foundation/UniqueTimestamp.h"

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/MutexWhileInScope.h"
#include "talvenor/foundation/SystemClock.h"

constinit Mutex UniqueTimestamp::itsMutex;
constinit INT64 UniqueTimestamp::itsLastTime = 0;
constinit UINT32 UniqueTimestamp::itsCounter = 0;

namespace
{

constexpr UINT32 kStampsPerSecond = 65536;
constexpr INT64 kLongestWait = 100; // seconds

INT64 WaitUntilAfter(INT64 theTime, INT64 theNow)
{
   while (theNow <= theTime)
   {
      SystemClock::Get().Sleep(1000);
      theNow = UniqueTimestamp::CurrentTimeSeconds();
   }
   return theNow;
}

[[noreturn]] void ThrowClockWentBackwards(INT64 theNow, INT64 theLastTime, UINT32 theCounter)
{
   throw TNRuntimeException(("UniqueTimestamp::GetTimeStamp: Clock went backwards. Now = " + std::to_string(theNow) +
                             " Last Time = " + std::to_string(theLastTime) + " Counter = " + std::to_string(theCounter))
                                .c_str());
}

} // namespace

UniqueTimestamp::UniqueTimestamp()
{
   throw ConstructorError("Attempt to re-instantiate singleton UniqueTimestamp");
}

UINT64 UniqueTimestamp::GetTimestamp()
{
   const MutexWhileInScope aLock(itsMutex);
   const INT64 aNow = CurrentTimeSeconds();
   if (aNow < itsLastTime - kLongestWait)
   {
      const INT64 aLastTime = std::exchange(itsLastTime, aNow);
      ThrowClockWentBackwards(aNow, aLastTime, itsCounter);
   }
   if (aNow == itsLastTime && itsCounter + 1 < kStampsPerSecond)
   {
      ++itsCounter;
   }
   else
   {
      itsLastTime = WaitUntilAfter(itsLastTime, aNow); // no wait when the clock is ahead
      itsCounter = 0;
   }
   return static_cast<UINT64>(itsLastTime) * kStampsPerSecond + itsCounter;
}

RWCString UniqueTimestamp::GetTimestampString()
{
   return std::to_string(GetTimestamp());
}

INT64 UniqueTimestamp::CurrentTimeMillis()
{
   return SystemClock::Get().WallMilliseconds();
}

INT64 UniqueTimestamp::CurrentTimeSeconds()
{
   return SystemClock::Get().WallSeconds();
}

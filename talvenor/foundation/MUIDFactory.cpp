#include "talvenor/foundation/MUIDFactory.h"

#include <cstdio>
#include <functional>

#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/foundation/MTRandomGenerator.h"
#include "talvenor/foundation/MutexWhileInScope.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/platform/Clock.h"
#include "talvenor/platform/HostAddress.h"
#include "talvenor/platform/Threads.h"

constinit Mutex MUIDFactory::itsMutex;

namespace
{

constexpr std::size_t kLongestUID = 64; // PS3.5 9.1
constexpr UINT32 kUIDsPerSecond = 65536;

// What all factories share; used under MUIDFactory::itsMutex.
struct SharedState
{
   RWCString itsDefaultRoot = kDefaultUIDRoot;
   INT64 itsLastTime = 0; // seconds since 1970
   UINT32 itsCounter = 0; // UIDs made in that second
   MTRandomGenerator itsGenerator;
   unsigned int itsSeededProcess = 0; // the process that seeded the generator
};

// Built at the first use and never destroyed: threads may still make UIDs while the process ends.
SharedState& Shared()
{
   static SharedState& aState = *new SharedState;
   return aState;
}

// Takes the next count of the last time used, moving on to the present time if that is later.
void TakeNextCount(SharedState& theState)
{
   for (;; SystemClock::Get().Sleep(1000))
   {
      INT64 aNow = SystemClock::Get().WallSeconds();
      if (aNow < theState.itsLastTime)
      {
         aNow = SystemClock::Get().WallSeconds(); // one reading may be wrong, two are a clock that was set back
      }
      if (aNow > theState.itsLastTime)
      {
         theState.itsLastTime = aNow;
         theState.itsCounter = 1;
         return;
      }
      if (theState.itsCounter < kUIDsPerSecond)
      {
         ++theState.itsCounter;
         return;
      }
   }
}

// A component of a UID has no leading zero and is not 0 here.
RWCString Component(UINT32 theNumber)
{
   return theNumber == 0 ? "1" : std::to_string(theNumber);
}

RWCString DateAndTime(INT64 theSeconds)
{
   const std::tm aTime = TNPlatform::LocalTime(static_cast<std::time_t>(theSeconds));
   char aText[96];
   std::snprintf(aText, sizeof aText, "%d%02d%02d%02d%02d%02d", aTime.tm_year + 1900, aTime.tm_mon + 1, aTime.tm_mday,
                 aTime.tm_hour, aTime.tm_min, aTime.tm_sec);
   return aText;
}

} // namespace

MUIDFactory::MUIDFactory() : MUIDFactory(GetDefaultRoot()) {}

MUIDFactory::MUIDFactory(const RWCString& theRoot) : itsRoot(theRoot)
{
   Seed();
}

RWCString MUIDFactory::GetUID()
{
   const MutexWhileInScope aLock(itsMutex);
   if (itsRoot.empty())
   {
      return {};
   }
   SharedState& aState = Shared();
   TakeNextCount(aState);
   RWCString aUID = itsRoot + "." + Component(GetRandomNumber()) + "." + DateAndTime(aState.itsLastTime) + "." +
                    Component(aState.itsCounter);
   return aUID.size() <= kLongestUID ? aUID : RWCString();
}

RWCString MUIDFactory::GetRoot() const
{
   const MutexWhileInScope aLock(itsMutex);
   return itsRoot;
}

void MUIDFactory::SetRoot(const RWCString& theRoot)
{
   const MutexWhileInScope aLock(itsMutex);
   itsRoot = theRoot;
}

RWCString MUIDFactory::GetDefaultRoot()
{
   const MutexWhileInScope aLock(itsMutex);
   return Shared().itsDefaultRoot;
}

void MUIDFactory::SetDefaultRoot(const RWCString& theRoot)
{
   const MutexWhileInScope aLock(itsMutex);
   Shared().itsDefaultRoot = theRoot;
}

MUIDFactory& MUIDFactory::GetInstance()
{
   static MUIDFactory& anInstance = *new MUIDFactory(kDefaultUIDRoot); // never destroyed, like the shared state
   return anInstance;
}

UINT32 MUIDFactory::GetStartupSeed()
{
   const RWCString anAddress = TNPlatform::FirstIPv4Address();
   const UINT64 aHash = anAddress.empty() ? 0 : std::hash<RWCString>()(anAddress);
   const auto aSeed = static_cast<UINT32>(aHash ^ TNPlatform::ProcessorClockCount() ^
                                          static_cast<UINT64>(SystemClock::Get().WallMilliseconds()));
   return aSeed == 0 ? 4357 : aSeed | 1u;
}

UINT32 MUIDFactory::GetRandomNumber()
{
   const MutexWhileInScope aLock(itsMutex);
   if (Shared().itsSeededProcess != TNPlatform::CurrentProcessId())
   {
      Seed(); // a forked process must not go on with its parent's sequence
   }
   return Shared().itsGenerator.GetRandomNumber();
}

void MUIDFactory::Seed()
{
   const MutexWhileInScope aLock(itsMutex);
   Shared().itsGenerator.SetSeed(GetStartupSeed());
   Shared().itsSeededProcess = TNPlatform::CurrentProcessId();
}

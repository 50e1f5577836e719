// The arithmetic of Socket: into which slices a wait is cut, and into which pieces a send. Not part of the library's
// interface.
#pragma once

#include <algorithm>

#include "talvenor/foundation/BasicTypes.h"

namespace SocketRules
{

// The size in bytes of the next piece when theLeft bytes are still to be sent through a send buffer of theBufferSize:
// never far more than half of the buffer, and of even sizes.
constexpr int PieceSize(int theLeft, int theBufferSize)
{
   if (theBufferSize > 49152 && theLeft > 16384)
   {
      return 16384;
   }
   if (theBufferSize >= 3 && theLeft > theBufferSize / 2)
   {
      return theBufferSize / 2;
   }
   return theLeft <= 8192 ? theLeft : 4096;
}

constexpr INT64 kNoLimit = -1; // of a time
constexpr INT64 kNanosecondsOfMillisecond = 1'000'000;

constexpr INT64 ShorterOf(INT64 theFirst, INT64 theSecond)
{
   return theFirst < 0 ? theSecond : theSecond < 0 ? theFirst : std::min(theFirst, theSecond);
}

enum class WaitResult
{
   kReady,
   kTimedOut,
   kCancelled,
   kFailed
};

// One wait, which may be resumed: what it was ready for may turn out not to be there. Times in milliseconds; kNoLimit
// is none. The flags that request an abort are looked at before and after each slice, if at all.
class SlicedWait
{
public:
   // Settings in seconds, as in Socket: a time-out of 0 or less and a poll interval of 0 or less are none.
   // thePollMilliseconds makes slices shorter when it is above 0.
   constexpr SlicedWait(int theTimeout, int theAbortPollInterval, int thePollMilliseconds)
       : itsWatchesFlags(theAbortPollInterval > 0)
   {
      itsRest = theTimeout > 0 ? theTimeout * kNanosecondsOfSecond : kNoLimit;
      itsSlice = ShorterOf(itsRest, itsWatchesFlags ? theAbortPollInterval * kNanosecondsOfSecond : kNoLimit);
      if (itsWatchesFlags && thePollMilliseconds > 0)
      {
         itsSlice = ShorterOf(itsSlice, thePollMilliseconds * kNanosecondsOfMillisecond);
      }
   }

   // The same slices within another limit in all.
   constexpr SlicedWait Within(INT64 theMilliseconds) const
   {
      SlicedWait aWait(*this);
      aWait.itsRest = theMilliseconds < 0 ? kNoLimit : theMilliseconds * kNanosecondsOfMillisecond;
      return aWait;
   }

   constexpr bool WatchesFlags() const { return itsWatchesFlags; }
   constexpr bool IsOver() const { return itsRest == 0; }

   // Time that passed outside of Wait.
   constexpr void Deduct(INT64 theNanoseconds)
   {
      if (itsRest > 0)
      {
         itsRest = std::max<INT64>(itsRest - theNanoseconds, 0);
      }
   }

   // isAborted: whether an abort is requested. theWaitOnce(milliseconds): kReady, kTimedOut or kFailed. theClock():
   // nanoseconds. A slice that ends without readiness counts in full, one that ends early as long as it took.
   template <class IsAborted, class WaitOnce, class Clock>
   WaitResult Wait(IsAborted isAborted, WaitOnce theWaitOnce, Clock theClock)
   {
      while (!IsOver())
      {
         if (itsWatchesFlags && isAborted())
         {
            return WaitResult::kCancelled;
         }
         const INT64 aSlice = ShorterOf(itsSlice, itsRest);
         const INT64 aStart = theClock();
         const WaitResult aResult = theWaitOnce(MillisecondsOf(aSlice));
         if (itsWatchesFlags && isAborted())
         {
            return WaitResult::kCancelled;
         }
         Deduct(aResult == WaitResult::kTimedOut ? aSlice : theClock() - aStart);
         if (aResult != WaitResult::kTimedOut)
         {
            return aResult;
         }
      }
      return WaitResult::kTimedOut;
   }

private:
   static constexpr INT64 kNanosecondsOfSecond = 1'000'000'000;

   // Rounded up: a wait of no time at all would spin.
   static constexpr INT64 MillisecondsOf(INT64 theNanoseconds)
   {
      return theNanoseconds < 0 ? kNoLimit
                                : (theNanoseconds + kNanosecondsOfMillisecond - 1) / kNanosecondsOfMillisecond;
   }

   bool itsWatchesFlags;
   INT64 itsSlice; // nanoseconds
   INT64 itsRest;  // nanoseconds
};

} // namespace SocketRules

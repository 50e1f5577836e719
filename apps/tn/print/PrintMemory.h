// The memory that all print sessions of a node have together, in bytes (AbstractPrintManagementMeta::GetMemoryUse).
// Each association has an account: what its sessions hold, and while a data set is being read, as much as that may
// become.
#pragma once

#include <condition_variable>
#include <mutex>

#include "talvenor/foundation/BasicTypes.h"

// Any thread.
class PrintMemory
{
public:
   explicit PrintMemory(UINT64 theLimit) : itsLimit(theLimit) {}

   // That a client may send: room for the image of the largest film, and for several at a time.
   UINT64 GetLongestDataset() const;

   // One thread; theMemory outlives it.
   class Account
   {
   public:
      explicit Account(PrintMemory& theMemory) : itsMemory(theMemory) {}
      ~Account();
      Account(const Account&) = delete;
      Account& operator=(const Account&) = delete;

      // Reserves room for a data set. Waits for those that are being read, for a while; false when there is none all
      // the same, or at once when what is held leaves none.
      bool BeginReading();

      // The data set has been read, or not; theHeld is what the sessions hold now.
      void End(UINT64 theHeld);

   private:
      PrintMemory& itsMemory;
      UINT64 itsHeld = 0;
      UINT64 itsReading = 0;
   };

private:
   std::mutex itsMutex;
   std::condition_variable itsChange;
   const UINT64 itsLimit;
   UINT64 itsHeld = 0;
   UINT64 itsReading = 0;
};

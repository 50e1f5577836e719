#include "apps/tn/print/PrintMemory.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace
{
constexpr UINT64 kLongest = UINT64{128} << 20; // 35 by 43 cm with 400 dots an inch and 16 bits each: 74 million bytes
constexpr UINT64 kAtATime = 4;                 // however small the memory is
constexpr std::chrono::seconds kPatience{5};
} // namespace

UINT64 PrintMemory::GetLongestDataset() const
{
   return std::min(kLongest, itsLimit / kAtATime);
}

PrintMemory::Account::~Account()
{
   End(0);
}

bool PrintMemory::Account::BeginReading()
{
   const UINT64 aLongest = itsMemory.GetLongestDataset();
   std::unique_lock aLock(itsMemory.itsMutex);
   const auto aRoom = [&](UINT64 theUsed) { return theUsed + aLongest <= itsMemory.itsLimit; };
   itsMemory.itsChange.wait_for(
       aLock, kPatience, [&] { return aRoom(itsMemory.itsHeld + itsMemory.itsReading) || !aRoom(itsMemory.itsHeld); });
   if (!aRoom(itsMemory.itsHeld + itsMemory.itsReading))
   {
      return false;
   }
   itsReading = aLongest;
   itsMemory.itsReading += aLongest;
   return true;
}

void PrintMemory::Account::End(UINT64 theHeld)
{
   {
      const std::lock_guard aLock(itsMemory.itsMutex);
      itsMemory.itsReading -= std::exchange(itsReading, 0);
      itsMemory.itsHeld -= std::exchange(itsHeld, theHeld);
      itsMemory.itsHeld += theHeld;
   }
   itsMemory.itsChange.notify_all();
}

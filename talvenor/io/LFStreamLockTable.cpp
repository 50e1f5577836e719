#include "talvenor/io/LFStreamLockTable.h"

#include <algorithm>

LFStreamLockTable::LFStreamLockTable()
{
   itsEntries.reserve(64);
}

bool LFStreamLockTable::Acquire(const LFStreamFileID& theFile, bool isShared)
{
   const auto anEntry = std::lower_bound(itsEntries.begin(), itsEntries.end(), theFile);
   if (anEntry == itsEntries.end() || !(*anEntry == theFile))
   {
      LFStreamFileID aNewEntry = theFile;
      aNewEntry.SetShared(isShared ? 1 : 0);
      aNewEntry.SetLockCount(1);
      itsEntries.insert(anEntry, aNewEntry);
      return true;
   }
   if (!isShared || !anEntry->IsShared())
   {
      return false;
   }
   anEntry->IncrementLockCount();
   return true;
}

void LFStreamLockTable::Release(const LFStreamFileID& theFile)
{
   const auto anEntry = std::lower_bound(itsEntries.begin(), itsEntries.end(), theFile);
   if (anEntry != itsEntries.end() && *anEntry == theFile && anEntry->DecrementLockCount() == 0)
   {
      itsEntries.erase(anEntry);
   }
}

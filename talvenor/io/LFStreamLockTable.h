// The files that streams of this process have locked, with the kind and number of the locks of each. The operating
// system's locks keep processes apart; this table keeps the streams of one process apart.
// Not locked: LFStream consults it under its process-wide mutex.
#pragma once

#include <cstddef>
#include <vector>

#include "talvenor/io/LFStreamFileID.h"

class TALVENOR_API LFStreamLockTable
{
public:
   LFStreamLockTable();

   // True, and the file has one lock more, when no lock on the file stands in the way: any number of shared locks or
   // one exclusive lock.
   bool Acquire(const LFStreamFileID& theFile, bool isShared);

   // Gives one lock back. Nothing happens when the file has none.
   void Release(const LFStreamFileID& theFile);

   std::size_t GetSize() const { return itsEntries.size(); }

private:
   std::vector<LFStreamFileID> itsEntries; // sorted; a file with locks once
};

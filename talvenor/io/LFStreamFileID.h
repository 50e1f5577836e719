// The identity of a file, whatever name it was opened by, and the state of its locks within this process.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

namespace TNPlatform
{
class FileHandle;
}

struct _LFStreamFileIDInfo_
{
   UINT32 itsVolumeSerialNumber = 0; // here: the device number folded to 32 bits
   UINT32 itsFileIndexHigh = 0;      // here: the upper half of the inode number
   UINT32 itsFileIndexLow = 0;       // and the lower half
   int itsSharedFlag = 0;
   int itsLockCount = 0;
};

class TALVENOR_API LFStreamFileID
{
public:
   LFStreamFileID() = default;
   explicit LFStreamFileID(const _LFStreamFileIDInfo_& theInfo) : itsInfo(theInfo) {}

   // An addition to the listed operations: reads the identity of an open file. False, with errno set, when the file
   // does not tell.
   bool ReadFrom(const TNPlatform::FileHandle& theFile);

   // Equal when the three identity numbers are, whatever the locks.
   bool operator==(const LFStreamFileID& theOther) const;

   // The order of the lock table: by file index low, then file index high, then volume, each descending.
   bool operator<(const LFStreamFileID& theOther) const;

   int IsShared() const { return itsInfo.itsSharedFlag; }
   void SetShared(int theFlag) { itsInfo.itsSharedFlag = theFlag; }
   int GetLockCount() const { return itsInfo.itsLockCount; }
   void SetLockCount(int theCount) { itsInfo.itsLockCount = theCount; }
   void IncrementLockCount() { ++itsInfo.itsLockCount; }

   // Returns the new count.
   int DecrementLockCount() { return --itsInfo.itsLockCount; }

   const _LFStreamFileIDInfo_& GetInfo() const { return itsInfo; }

private:
   _LFStreamFileIDInfo_ itsInfo;
};

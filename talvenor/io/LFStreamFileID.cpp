#include "talvenor/io/LFStreamFileID.h"

#include <tuple>

#include "talvenor/platform/FileHandle.h"

bool LFStreamFileID::ReadFrom(const TNPlatform::FileHandle& theFile)
{
   TNPlatform::FileInformation anInformation;
   if (!theFile.GetInformation(anInformation))
   {
      return false;
   }
   // Both halves of the device number count: majors stand above bit 8 and, in wide numbers, above bit 32.
   itsInfo.itsVolumeSerialNumber = static_cast<UINT32>(anInformation.itsDevice ^ (anInformation.itsDevice >> 32));
   itsInfo.itsFileIndexHigh = static_cast<UINT32>(anInformation.itsInode >> 32);
   itsInfo.itsFileIndexLow = static_cast<UINT32>(anInformation.itsInode);
   return true;
}

bool LFStreamFileID::operator==(const LFStreamFileID& theOther) const
{
   return itsInfo.itsFileIndexLow == theOther.itsInfo.itsFileIndexLow &&
          itsInfo.itsFileIndexHigh == theOther.itsInfo.itsFileIndexHigh &&
          itsInfo.itsVolumeSerialNumber == theOther.itsInfo.itsVolumeSerialNumber;
}

bool LFStreamFileID::operator<(const LFStreamFileID& theOther) const
{
   const auto aKey = [](const _LFStreamFileIDInfo_& theInfo) {
      return std::tie(theInfo.itsFileIndexLow, theInfo.itsFileIndexHigh, theInfo.itsVolumeSerialNumber);
   };
   return aKey(itsInfo) > aKey(theOther.itsInfo);
}

// What a dataset says of its pixel data (PS3.3 C.7.6.3), as far as decoders need it, and how samples lie in native
// cells.
#pragma once

#include <cstddef>

#include "talvenor/foundation/BasicTypes.h"

class DICOMObject;

struct ImageDescription
{
   // Throws StreamIOException (TN_DECOMPRESSION_FAILED), naming the attribute, for what is missing, contradicts itself
   // or cannot be decompressed: a frame of more than 512 MiB, or frames that native pixel data cannot hold.
   static ImageDescription Of(const DICOMObject& theHeader);

   UINT16 itsRows = 0;
   UINT16 itsColumns = 0;
   UINT16 itsSamples = 1; // 1 or 3
   UINT16 itsBitsAllocated = 8;
   UINT16 itsBitsStored = 8;
   UINT16 itsHighBit = 7;
   bool itsIsSigned = false;
   RWCString itsPhotometric;
   UINT32 itsFrames = 1;

   std::size_t GetSampleCount() const { return std::size_t{itsRows} * itsColumns * itsSamples; }
   unsigned int GetCellSize() const { return itsBitsAllocated / 8u; } // in bytes
   std::size_t GetFrameSize() const { return (GetSampleCount() * itsBitsAllocated + 7) / 8; }
   bool IsYBR() const { return itsPhotometric.compare(0, 3, "YBR") == 0; }

   // Throws when a codestream says something else. Bits of precision may be fewer than are allocated.
   void CheckAgainst(UINT64 theRows, UINT64 theColumns, UINT64 theSamples, UINT64 thePrecision) const;
};

// Throws StreamIOException (TN_DECOMPRESSION_FAILED).
[[noreturn]] void FailDecompression(const RWCString& theText);

// The native form of one frame: little endian, the samples of a pixel side by side.
class SampleCells
{
public:
   // thePixels has room for a frame. thePrecision is that of the codestream in bits. Samples that have no more than
   // Bits Stored are cut and extended with their sign as Pixel Representation says; wider ones bring all their bits.
   SampleCells(const ImageDescription& theImage, unsigned int thePrecision, unsigned char* thePixels)
       : itsPixels(thePixels), itsCellSize(theImage.GetCellSize())
   {
      if (thePrecision <= theImage.itsBitsStored && theImage.itsHighBit + 1 == theImage.itsBitsStored)
      {
         itsMask = static_cast<UINT32>((UINT64{1} << theImage.itsBitsStored) - 1);
         itsSign = theImage.itsIsSigned ? UINT32{1} << (theImage.itsBitsStored - 1) : 0;
      }
   }

   void Put(std::size_t theIndex, UINT32 theValue)
   {
      UINT32 aValue = ((theValue & itsMask) ^ itsSign) - itsSign;
      unsigned char* const aCell = itsPixels + theIndex * itsCellSize;
      for (unsigned int aByte = 0; aByte < itsCellSize; ++aByte, aValue >>= 8)
      {
         aCell[aByte] = static_cast<unsigned char>(aValue);
      }
   }

private:
   unsigned char* itsPixels;
   unsigned int itsCellSize;
   UINT32 itsMask = 0xFFFFFFFF;
   UINT32 itsSign = 0;
};

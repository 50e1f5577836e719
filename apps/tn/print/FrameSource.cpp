#include "apps/tn/print/FrameSource.h"

#include "apps/tn/codec/Decompression.h"
#include "apps/tn/files/DatasetChecks.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"

FrameSource::FrameSource(const std::string& thePath, UINT32 theFrame)
    : itsData(thePath), itsImage(ImageDescription::Of(itsData.GetHeader()))
{
   if (theFrame == 0 || theFrame > itsImage.itsFrames)
   {
      throw IncompleteDataset("it has no frame " + std::to_string(theFrame) + ", but " +
                              std::to_string(itsImage.itsFrames));
   }
   itsData.GetFragments() != nullptr ? TakeCompressed(theFrame) : TakeNative(theFrame);
}

void FrameSource::TakeCompressed(UINT32 theFrame)
{
   DICOMDataObject aHeader(itsData.GetHeader());
   Decompression aDecompression(aHeader, itsData.GetDecoder().GetTransferSyntaxType(), *itsData.GetFragments());
   for (UINT32 aFrame = 1; aFrame < theFrame; ++aFrame)
   {
      aDecompression.NextFrame();
   }
   itsImage = aDecompression.GetImage();
   itsBytes.assign(aDecompression.GetFrame().begin(), aDecompression.GetFrame().end());
}

void FrameSource::TakeNative(UINT32 theFrame)
{
   PixelInputStreamVR& aPixels = *itsData.GetNativePixels();
   const std::size_t aSize = itsData.GetNativeFrameSize();
   itsIsSubsampled = itsImage.itsSamples == 3 && aSize < itsImage.GetFrameSize();
   itsIsPlanar = itsImage.itsSamples == 3 && GetHeader().GetUINT16(0x0028, 0x0006) == 1;
   itsIsBigEndian = aPixels.GetDataEndian() == TNEndian::BigEndian && aPixels.GetTypeCode() == VRCode::OW;
   if (aSize == 0 || itsImage.itsBitsAllocated < 8)
   {
      throw IncompleteDataset("its pixels cannot be printed: Bits Allocated is " +
                              std::to_string(itsImage.itsBitsAllocated));
   }
   if (itsIsSubsampled && itsImage.itsColumns % 2 != 0)
   {
      throw IncompleteDataset("its columns are odd, and two pixels share their colours");
   }
   for (UINT64 aLeft = UINT64{aSize} * (theFrame - 1); aLeft > 0;)
   {
      const unsigned int aCount = aPixels.Skip(static_cast<unsigned int>(std::min<UINT64>(aLeft, 0x40000000)));
      if (aCount == 0)
      {
         throw IncompleteDataset("its pixel data is cut");
      }
      aLeft -= aCount;
   }
   itsBytes.resize(aSize + aSize % 2); // whole words
   if (aPixels.ReadFully(itsBytes.data(), static_cast<unsigned int>(aSize)) != aSize)
   {
      throw IncompleteDataset("its pixel data is cut");
   }
}

INT32 FrameSource::At(std::size_t thePixel, unsigned int theSample) const
{
   const std::size_t aPlane = std::size_t{itsImage.itsRows} * itsImage.itsColumns;
   std::size_t aCell = itsIsPlanar ? theSample * aPlane + thePixel : thePixel * itsImage.itsSamples + theSample;
   if (itsIsSubsampled) // Y, Y, Cb, Cr for two pixels
   {
      aCell = thePixel / 2 * 4 + (theSample == 0 ? thePixel % 2 : theSample + 1);
   }
   const unsigned int aSize = itsImage.GetCellSize();
   UINT32 aValue = 0;
   for (unsigned int aByte = 0; aByte < aSize; ++aByte)
   {
      const std::size_t aPlace = aCell * aSize + aByte;
      // What came in big endian words (OW) stands the other way round in each of them (PS3.5 8.1.1).
      aValue |= UINT32{itsBytes[itsIsBigEndian ? aPlace ^ 1 : aPlace]} << (8 * aByte);
   }
   const unsigned int aShift =
       itsImage.itsHighBit + 1u - std::min<unsigned int>(itsImage.itsBitsStored, itsImage.itsHighBit + 1u);
   const auto aMask = static_cast<UINT32>((UINT64{1} << itsImage.itsBitsStored) - 1);
   const UINT32 aSign = itsImage.itsIsSigned ? UINT32{1} << (itsImage.itsBitsStored - 1) : 0;
   return static_cast<INT32>((((aValue >> aShift) & aMask) ^ aSign) - aSign);
}

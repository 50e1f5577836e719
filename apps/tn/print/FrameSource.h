// One frame of a DICOM file as native samples, whether the file has it compressed or not.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "apps/tn/codec/ImageDescription.h"
#include "apps/tn/files/PixelData.h"

class FrameSource
{
public:
   // theFrame counts from 1. Throws IncompleteDataset or ExceptionBase when the file has no such frame that can be
   // read.
   FrameSource(const std::string& thePath, UINT32 theFrame);

   const DICOMDataObject& GetHeader() const { return itsData.GetHeader(); }
   const ImageDescription& GetImage() const { return itsImage; }

   // A sample as it is stored: with the bits from Bits Stored on cleared, or extended with its sign.
   INT32 At(std::size_t thePixel, unsigned int theSample) const;

private:
   void TakeCompressed(UINT32 theFrame);
   void TakeNative(UINT32 theFrame);

   PixelData itsData;
   ImageDescription itsImage;
   std::vector<unsigned char> itsBytes;
   bool itsIsPlanar = false;
   bool itsIsBigEndian = false;
   bool itsIsSubsampled = false; // two pixels share their colours: YBR_FULL_422 (PS3.3 C.7.6.3.1.2)
};

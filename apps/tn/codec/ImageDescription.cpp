#include "apps/tn/codec/ImageDescription.h"

#include <charconv>

#include "apps/tn/base/Tags.h"
#include "talvenor/foundation/StreamIOException.h"

namespace
{
constexpr UINT32 kNumberOfFrames = 0x00280008;
constexpr std::size_t kLargestFrame = std::size_t{512} << 20; // bytes; decoders need several times as much
constexpr UINT64 kLongestValue = 0xFFFFFFFE;                  // PS3.5 7.1.1

struct Row
{
   UINT32 itsTag;
   const char* itsName;
   UINT16 ImageDescription::*itsField;
};

constexpr Row kRows[] = {
    {0x00280002, "Samples per Pixel", &ImageDescription::itsSamples},
    {0x00280010, "Rows", &ImageDescription::itsRows},
    {0x00280011, "Columns", &ImageDescription::itsColumns},
    {0x00280100, "Bits Allocated", &ImageDescription::itsBitsAllocated},
    {0x00280101, "Bits Stored", &ImageDescription::itsBitsStored},
};

void Check(bool theCondition, const RWCString& theText)
{
   if (!theCondition)
   {
      FailDecompression(theText);
   }
}

UINT32 FramesOf(const DICOMObject& theHeader)
{
   const RWCString aText = TextOf(theHeader, kNumberOfFrames);
   const std::size_t aFirst = aText.find_first_not_of(" +");
   if (aFirst == RWCString::npos)
   {
      return 1;
   }
   UINT32 aNumber = 0;
   const char* const anEnd = aText.data() + aText.size();
   const auto [aStop, aFault] = std::from_chars(aText.data() + aFirst, anEnd, aNumber);
   constexpr UINT32 kMost = 0x7FFFFFFF; // IS
   Check(aFault == std::errc() && aNumber >= 1 && aNumber <= kMost, "Number of Frames is " + aText);
   return aNumber;
}

void CheckSame(const char* theName, UINT64 theOurs, UINT64 theTheirs)
{
   Check(theOurs == theTheirs, RWCString("the frame has ") + theName + " " + std::to_string(theTheirs) +
                                   ", the header says " + std::to_string(theOurs));
}
} // namespace

void FailDecompression(const RWCString& theText)
{
   throw StreamIOException(theText.c_str(), TN_DECOMPRESSION_FAILED, 0);
}

ImageDescription ImageDescription::Of(const DICOMObject& theHeader)
{
   ImageDescription anImage;
   for (const Row& aRow : kRows)
   {
      UINT16& aValue = anImage.*aRow.itsField;
      Check(theHeader.GetUINT16(GroupOf(aRow.itsTag), ElementOf(aRow.itsTag), aValue) && aValue != 0,
            std::string(aRow.itsName) + " " + TagText(aRow.itsTag) + " is missing or 0");
   }
   anImage.itsHighBit = static_cast<UINT16>(anImage.itsBitsStored - 1);
   theHeader.GetUINT16(0x0028, 0x0102, anImage.itsHighBit);
   UINT16 aRepresentation = 0;
   theHeader.GetUINT16(0x0028, 0x0103, aRepresentation);
   anImage.itsIsSigned = aRepresentation == 1;
   anImage.itsPhotometric = TextOf(theHeader, 0x00280004);
   anImage.itsFrames = FramesOf(theHeader);

   const UINT16 aBits = anImage.itsBitsAllocated;
   Check(anImage.itsSamples == 1 || anImage.itsSamples == 3,
         "Samples per Pixel is " + std::to_string(anImage.itsSamples));
   Check(aBits == 1 || aBits == 8 || aBits == 16 || aBits == 32, "Bits Allocated is " + std::to_string(aBits));
   Check(anImage.itsBitsStored <= aBits, "Bits Stored is more than Bits Allocated");
   Check(anImage.itsHighBit < aBits, "High Bit is not below Bits Allocated");
   Check(aBits != 1 || anImage.GetSampleCount() % 8 == 0 || anImage.itsFrames == 1,
         "its frames of single bits do not end at bytes");
   Check(anImage.GetFrameSize() <= kLargestFrame,
         "a frame has " + std::to_string(anImage.GetFrameSize()) + " bytes, which is more than tn decompresses");
   Check(UINT64{anImage.GetFrameSize()} * anImage.itsFrames <= kLongestValue,
         "all frames together are longer than native pixel data can be (4 GiB)");
   return anImage;
}

void ImageDescription::CheckAgainst(UINT64 theRows, UINT64 theColumns, UINT64 theSamples, UINT64 thePrecision) const
{
   CheckSame("Rows", itsRows, theRows);
   CheckSame("Columns", itsColumns, theColumns);
   CheckSame("Samples per Pixel", itsSamples, theSamples);
   Check(thePrecision <= itsBitsAllocated, "the frame has " + std::to_string(thePrecision) +
                                               " bits a sample, Bits Allocated is " + std::to_string(itsBitsAllocated));
}

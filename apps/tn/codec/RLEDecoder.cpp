#include <algorithm>

#include "apps/tn/codec/FrameDecoder.h"

namespace
{
constexpr std::size_t kHeaderSize = 64; // the number of segments and the offsets of 15
constexpr std::size_t kMostSegments = 15;

UINT32 NumberAt(std::span<const unsigned char> theBytes, std::size_t thePlace)
{
   return theBytes[thePlace] | theBytes[thePlace + 1] << 8 | theBytes[thePlace + 2] << 16 |
          UINT32{theBytes[thePlace + 3]} << 24;
}

// PS3.5 G.3.2. Bytes go to theTarget and every theStride bytes from there. A segment may have more than it needs, at
// least a pad byte.
void DecodeSegment(std::span<const unsigned char> theSegment, unsigned char* theTarget, std::size_t theStride,
                   std::size_t theCount)
{
   std::size_t aPlace = 0;
   for (std::size_t aDone = 0; aDone < theCount;)
   {
      if (aPlace >= theSegment.size())
      {
         FailDecompression("the RLE frame is cut: a segment ends after " + std::to_string(aDone) + " of " +
                           std::to_string(theCount) + " bytes");
      }
      const unsigned int aControl = theSegment[aPlace++];
      constexpr unsigned int kNothing = 128;
      if (aControl == kNothing)
      {
         continue;
      }
      const bool isRun = aControl > kNothing;
      const std::size_t aLength = isRun ? 257 - aControl : aControl + 1;
      if (theSegment.size() - aPlace < (isRun ? 1 : aLength))
      {
         FailDecompression("the RLE frame is cut: a run goes beyond its segment");
      }
      const std::size_t aUsed = std::min(aLength, theCount - aDone);
      for (std::size_t aByte = 0; aByte < aUsed; ++aByte)
      {
         theTarget[(aDone + aByte) * theStride] = theSegment[aPlace + (isRun ? 0 : aByte)];
      }
      aDone += aUsed;
      aPlace += isRun ? 1 : aLength;
   }
}
} // namespace

FrameDecoder::Colours RLEDecoder::Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels)
{
   if (theFrame.size() < kHeaderSize)
   {
      FailDecompression("the RLE frame is cut: it has no header");
   }
   const std::size_t aCellSize = std::max(1u, itsImage.GetCellSize());
   const std::size_t aStride = aCellSize * itsImage.itsSamples;
   const std::size_t anExpected = aStride;
   const std::size_t aSegments = NumberAt(theFrame, 0);
   if (aSegments != anExpected || aSegments > kMostSegments)
   {
      FailDecompression("the RLE frame has " + std::to_string(aSegments) + " segments, its samples and bits need " +
                        std::to_string(anExpected));
   }
   for (std::size_t aSegment = 0; aSegment < aSegments; ++aSegment)
   {
      const std::size_t aBegin = NumberAt(theFrame, 4 + 4 * aSegment);
      const std::size_t anEnd = aSegment + 1 < aSegments ? NumberAt(theFrame, 8 + 4 * aSegment) : theFrame.size();
      if (aBegin < kHeaderSize || aBegin > anEnd || anEnd > theFrame.size())
      {
         FailDecompression("the RLE frame is cut or damaged: segment " + std::to_string(aSegment + 1) +
                           " lies outside");
      }
      const std::size_t aByte = aCellSize - 1 - aSegment % aCellSize; // the most significant comes first
      DecodeSegment(theFrame.subspan(aBegin, anEnd - aBegin),
                    thePixels.data() + aSegment / aCellSize * aCellSize + aByte, aStride, thePixels.size() / aStride);
   }
   return Colours::AsDescribed;
}

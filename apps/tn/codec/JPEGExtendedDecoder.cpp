#include "apps/tn/codec/JPEGExtendedDecoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "apps/tn/codec/JPEGFrame.h"

namespace
{
constexpr unsigned int kSide = 8; // of a block, in samples
constexpr unsigned int kCoefficients = kSide * kSide;

using Block = std::array<float, kCoefficients>;

// Where the coefficients stand that come one after the other, T.81 figure A.6.
constexpr std::array<unsigned char, kCoefficients> kZigzag = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
    41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
    30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

// T.81 A.3.3: what coefficient u brings to sample x, at 8 x + u.
Block MakeCosines()
{
   Block aCosines;
   for (unsigned int x = 0; x < kSide; ++x)
   {
      for (unsigned int u = 0; u < kSide; ++u)
      {
         const double aScale = u == 0 ? std::numbers::sqrt2 / 4 : 0.5;
         aCosines[x * kSide + u] = static_cast<float>(aScale * std::cos((2 * x + 1) * u * std::numbers::pi / 16));
      }
   }
   return aCosines;
}

// Along the lines, with the result turned over: twice is the transform of both directions.
Block TransformLines(const Block& theBlock)
{
   static const Block kCosines = MakeCosines();
   Block aResult;
   for (unsigned int aLine = 0; aLine < kSide; ++aLine)
   {
      for (unsigned int x = 0; x < kSide; ++x)
      {
         float aSum = 0;
         for (unsigned int u = 0; u < kSide; ++u)
         {
            aSum += theBlock[aLine * kSide + u] * kCosines[x * kSide + u];
         }
         aResult[x * kSide + aLine] = aSum;
      }
   }
   return aResult;
}

class ExtendedFrame : public JPEGFrame
{
public:
   using JPEGFrame::JPEGFrame;

private:
   bool IsDecoded(unsigned int theProcess) const override { return theProcess == kExtended; }

   // One component: its blocks come line by line, T.81 A.2.2. Encoders write what they like for the first and the last
   // coefficient, which are 0 and 63 whatever they say.
   void DecodeScan(const Scan& theScan, EntropyBits& theBits) override
   {
      if (theScan.itsComponents.size() != 1 || itsImage.itsSamples != 1)
      {
         FailDecompression("JPEG with 12 bits is served for grey images only");
      }
      constexpr unsigned int kPrecision = 12;
      if (itsPrecision != kPrecision)
      {
         FailDecompression("the JPEG frame has " + std::to_string(itsPrecision) +
                           " bits a sample, its process 8 or 12");
      }
      const Scan::Component& aComponent = theScan.itsComponents.front();
      const unsigned int aWidth = (itsImage.itsColumns + kSide - 1) / kSide;
      const unsigned int aHeight = (itsImage.itsRows + kSide - 1) / kSide;
      unsigned int aRestarts = 0;
      int aDC = 0;
      for (unsigned int i = 0; i < aWidth * aHeight; ++i)
      {
         if (itsRestartInterval != 0 && i != 0 && i % itsRestartInterval == 0)
         {
            theBits.Restart(aRestarts++);
            aDC = 0;
         }
         PutBlock(TransformLines(TransformLines(TakeBlock(aComponent, theBits, aDC))), i / aWidth, i % aWidth);
      }
   }

   // T.81 F.2.2: theDC is that of the block before, and becomes that of this one.
   Block TakeBlock(const Scan::Component& theComponent, EntropyBits& theBits, int& theDC) const
   {
      constexpr unsigned int kMostBits = 15; // T.81 tables F.6 and F.7
      const Quantisation& aScale = GetQuantisation(theComponent.itsIndex);
      Block aBlock{};
      const unsigned int aCount = GetDCTable(theComponent.itsDCTable).Decode(theBits);
      if (aCount > kMostBits)
      {
         FailDamaged("a difference has more than 15 bits");
      }
      theDC = static_cast<INT16>(theDC + (aCount == 0 ? 0 : TakeSigned(theBits, aCount)));
      aBlock[0] = static_cast<float>(theDC) * aScale[0];
      const HuffmanTable& aTable = GetACTable(theComponent.itsACTable);
      for (unsigned int i = 1; i < kCoefficients; ++i)
      {
         const unsigned int aCode = aTable.Decode(theBits);
         const unsigned int aBits = aCode & 0x0F;
         constexpr unsigned int kSixteenZeros = 0xF0;
         if (aBits == 0 && aCode != kSixteenZeros)
         {
            break; // the rest is zero
         }
         i += aCode >> 4;
         if (i >= kCoefficients)
         {
            FailDamaged("a block has more than 64 coefficients");
         }
         if (aBits != 0)
         {
            aBlock[kZigzag[i]] = static_cast<float>(TakeSigned(theBits, aBits)) * aScale[i];
         }
      }
      return aBlock;
   }

   // What sticks out of the image at the right and below is dropped.
   void PutBlock(const Block& theBlock, unsigned int theRow, unsigned int theColumn)
   {
      SampleCells aCells(itsImage, itsPrecision, itsPixels.data());
      const float aMiddle = static_cast<float>(1u << (itsPrecision - 1));
      const float aMost = static_cast<float>((1u << itsPrecision) - 1);
      const unsigned int aRows = std::min(kSide, itsImage.itsRows - theRow * kSide);
      const unsigned int aColumns = std::min(kSide, itsImage.itsColumns - theColumn * kSide);
      for (unsigned int y = 0; y < aRows; ++y)
      {
         const std::size_t aLine =
             (std::size_t{theRow} * kSide + y) * itsImage.itsColumns + std::size_t{theColumn} * kSide;
         for (unsigned int x = 0; x < aColumns; ++x)
         {
            const float aSample = std::clamp(std::round(theBlock[y * kSide + x] + aMiddle), 0.0f, aMost);
            aCells.Put(aLine + x, static_cast<UINT32>(aSample));
         }
      }
   }
};
} // namespace

FrameDecoder::Colours JPEGExtendedDecoder::Decode(std::span<const unsigned char> theFrame,
                                                  std::span<unsigned char> thePixels)
{
   ExtendedFrame(itsImage, theFrame, thePixels).Decode();
   return Colours::AsDescribed;
}

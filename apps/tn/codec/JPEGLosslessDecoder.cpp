#include "apps/tn/codec/JPEGLosslessDecoder.h"

#include <vector>

#include "apps/tn/codec/JPEGFrame.h"

namespace
{
constexpr unsigned int kMostPredictors = 7;

// A component of a scan, and where its samples go.
struct Samples
{
   std::size_t itsIndex; // in the frame: the place among the samples of a pixel
   const HuffmanTable* itsTable;
   std::vector<UINT16> itsAbove; // the line above, then, as far as it is done, the present one
   UINT16 itsLeft = 0;
   UINT16 itsAboveLeft = 0;
};

// T.81 H.1.2.1, table H.1. Arithmetic is modulo 2^16 in the end.
inline int Predict(unsigned int thePredictor, int theLeft, int theAbove, int theAboveLeft)
{
   switch (thePredictor)
   {
   case 1: return theLeft;
   case 2: return theAbove;
   case 3: return theAboveLeft;
   case 4: return theLeft + theAbove - theAboveLeft;
   case 5: return theLeft + ((theAbove - theAboveLeft) >> 1);
   case 6: return theAbove + ((theLeft - theAboveLeft) >> 1);
   default: return (theLeft + theAbove) >> 1;
   }
}

class LosslessFrame : public JPEGFrame
{
public:
   using JPEGFrame::JPEGFrame;

private:
   bool IsDecoded(unsigned int theProcess) const override { return theProcess == kLossless; }

   void DecodeScan(const Scan& theScan, EntropyBits& theBits) override
   {
      if (theScan.itsStart < 1 || theScan.itsStart > kMostPredictors || theScan.itsPointTransform >= itsPrecision)
      {
         FailDamaged("its scan header makes no sense");
      }
      if (itsRestartInterval % itsImage.itsColumns != 0) // T.81 H.1.1
      {
         FailDamaged("its restart interval is not one of whole lines");
      }
      std::vector<Samples> aComponents;
      for (const Scan::Component& aComponent : theScan.itsComponents)
      {
         aComponents.push_back(
             {aComponent.itsIndex, &GetDCTable(aComponent.itsDCTable), std::vector<UINT16>(itsImage.itsColumns), 0, 0});
      }
      const unsigned int aLinesToRestart = itsRestartInterval / itsImage.itsColumns;
      unsigned int aRestarts = 0;
      for (unsigned int aRow = 0; aRow < itsImage.itsRows; ++aRow)
      {
         const bool isRestart = aLinesToRestart != 0 && aRow != 0 && aRow % aLinesToRestart == 0;
         if (isRestart)
         {
            theBits.Restart(aRestarts++);
         }
         DecodeLine(theScan, aComponents, theBits, aRow, isRestart || aRow == 0);
      }
   }

   // T.81 H.1.2.1: the first line is predicted from the left only, the first column from above only.
   void DecodeLine(const Scan& theScan, std::vector<Samples>& theComponents, EntropyBits& theBits, unsigned int theRow,
                   bool theIsFirst)
   {
      SampleCells aCells(itsImage, itsPrecision, itsPixels.data());
      const int aStart = 1 << (itsPrecision - theScan.itsPointTransform - 1);
      std::size_t aPixel = std::size_t{theRow} * itsImage.itsColumns * itsImage.itsSamples;
      for (unsigned int aColumn = 0; aColumn < itsImage.itsColumns; ++aColumn, aPixel += itsImage.itsSamples)
      {
         for (Samples& aComponent : theComponents)
         {
            const int anAbove = aComponent.itsAbove[aColumn];
            int aPrediction;
            if (aColumn == 0)
            {
               aPrediction = theIsFirst ? aStart : anAbove;
            }
            else if (theIsFirst)
            {
               aPrediction = aComponent.itsLeft;
            }
            else
            {
               aPrediction = Predict(theScan.itsStart, aComponent.itsLeft, anAbove, aComponent.itsAboveLeft);
            }
            const auto aSample = static_cast<UINT16>(aPrediction + Difference(*aComponent.itsTable, theBits));
            aComponent.itsAboveLeft = static_cast<UINT16>(anAbove);
            aComponent.itsLeft = aSample;
            aComponent.itsAbove[aColumn] = aSample;
            aCells.Put(aPixel + aComponent.itsIndex, UINT32{aSample} << theScan.itsPointTransform);
         }
      }
   }

   // T.81 H.1.2.2: the number of bits, then the bits; 16 stands for 32768 without any.
   static int Difference(const HuffmanTable& theTable, EntropyBits& theBits)
   {
      constexpr unsigned int kMost = 16;
      const unsigned int aCount = theTable.Decode(theBits);
      if (aCount >= kMost)
      {
         if (aCount > kMost)
         {
            FailDamaged("a difference has more than 16 bits");
         }
         return 32768;
      }
      return aCount == 0 ? 0 : TakeSigned(theBits, aCount);
   }
};
} // namespace

FrameDecoder::Colours JPEGLosslessDecoder::Decode(std::span<const unsigned char> theFrame,
                                                  std::span<unsigned char> thePixels)
{
   LosslessFrame(itsImage, theFrame, thePixels).Decode();
   return Colours::AsDescribed;
}

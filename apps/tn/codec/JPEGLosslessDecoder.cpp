#include "apps/tn/codec/JPEGLosslessDecoder.h"

#include <array>
#include <vector>

#include "apps/tn/codec/HuffmanTable.h"

namespace
{
// Markers, T.81 table B.1; all begin with FF.
enum Marker : unsigned char
{
   kTEM = 0x01,
   kSOF0 = 0xC0,
   kSOF3 = 0xC3, // lossless, Huffman
   kDHT = 0xC4,
   kJPG = 0xC8,
   kDAC = 0xCC,
   kSOF15 = 0xCF,
   kRST0 = 0xD0,
   kRST7 = 0xD7,
   kSOI = 0xD8,
   kEOI = 0xD9,
   kSOS = 0xDA,
   kDNL = 0xDC,
   kDRI = 0xDD
};

constexpr unsigned int kMostTables = 4;
constexpr unsigned int kMostPredictors = 7;

std::string Hex(unsigned int theByte)
{
   char aText[8];
   std::snprintf(aText, sizeof aText, "FF%02X", theByte);
   return aText;
}

[[noreturn]] void FailCut()
{
   FailDecompression("the JPEG frame is cut");
}

[[noreturn]] void FailDamaged(const std::string& theWhat)
{
   FailDecompression("the JPEG frame is damaged: " + theWhat);
}

// The parameters of a marker segment, taken one after the other.
class Parameters
{
public:
   explicit Parameters(std::span<const unsigned char> theBytes) : itsBytes(theBytes) {}

   bool IsEmpty() const { return itsBytes.empty(); }
   std::span<const unsigned char> Take(std::size_t theCount)
   {
      if (theCount > itsBytes.size())
      {
         FailDamaged("a marker segment is too short");
      }
      const auto aPart = itsBytes.first(theCount);
      itsBytes = itsBytes.subspan(theCount);
      return aPart;
   }
   unsigned int Byte() { return Take(1)[0]; }
   unsigned int Word()
   {
      const auto aPart = Take(2);
      return aPart[0] << 8u | aPart[1];
   }

private:
   std::span<const unsigned char> itsBytes;
};

struct Component
{
   unsigned int itsID = 0;
   bool itsIsDecoded = false;
};

// A component of a scan, and where its samples go.
struct ScanComponent
{
   std::size_t itsIndex; // in the frame: the place among the samples of a pixel
   const HuffmanTable* itsTable;
   std::vector<UINT16> itsAbove; // the line above, then, as far as it is done, the present one
   UINT16 itsLeft = 0;
   UINT16 itsAboveLeft = 0;
};

struct ScanHeader
{
   unsigned int itsPredictor;
   unsigned int itsPointTransform; // in bits
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

// T.81 H.1.2.2 and F.2.2.1: the number of bits, then the bits; 16 stands for 32768 without any.
inline int Difference(const HuffmanTable& theTable, EntropyBits& theBits)
{
   constexpr unsigned int kMost = 16;
   const unsigned int aCount = theTable.Decode(theBits);
   if (aCount == 0)
   {
      return 0;
   }
   if (aCount >= kMost)
   {
      if (aCount > kMost)
      {
         FailDamaged("a difference has more than 16 bits");
      }
      return 32768;
   }
   const int aValue = static_cast<int>(theBits.Take(aCount));
   return aValue < (1 << (aCount - 1)) ? aValue - (1 << aCount) + 1 : aValue;
}

// One frame, from its first marker to its last scan.
class Frame
{
public:
   Frame(const ImageDescription& theImage, std::span<const unsigned char> theBytes, std::span<unsigned char> thePixels)
       : itsImage(theImage), itsBytes(theBytes), itsPixels(thePixels)
   {}

   void Decode()
   {
      if (itsBytes.size() < 2 || itsBytes[0] != 0xFF || itsBytes[1] != kSOI)
      {
         FailDecompression("the frame is no JPEG: it does not begin with FFD8");
      }
      itsPlace = 2;
      while (!IsWhole())
      {
         TakeSegment();
      }
   }

private:
   bool IsWhole() const
   {
      std::size_t aCount = 0;
      for (const Component& aComponent : itsComponents)
      {
         aCount += aComponent.itsIsDecoded;
      }
      return !itsComponents.empty() && aCount == itsComponents.size();
   }

   unsigned char NextMarker()
   {
      while (itsPlace < itsBytes.size() && itsBytes[itsPlace] == 0xFF)
      {
         ++itsPlace;
         if (itsPlace < itsBytes.size() && itsBytes[itsPlace] != 0xFF)
         {
            return itsBytes[itsPlace++];
         }
      }
      if (itsPlace >= itsBytes.size())
      {
         FailCut();
      }
      FailDamaged("there is no marker where one has to be");
   }

   void TakeSegment()
   {
      const unsigned char aMarker = NextMarker();
      if (aMarker == kEOI)
      {
         FailCut();
      }
      if (aMarker == kTEM || (aMarker >= kRST0 && aMarker <= kRST7) || aMarker == kSOI || aMarker == 0)
      {
         FailDamaged("marker " + Hex(aMarker) + " stands outside a scan");
      }
      if (itsBytes.size() - itsPlace < 2)
      {
         FailCut();
      }
      const std::size_t aLength = itsBytes[itsPlace] << 8u | itsBytes[itsPlace + 1]; // its own bytes too
      if (aLength < 2 || itsBytes.size() - itsPlace < aLength)
      {
         FailCut();
      }
      Parameters aSegment(itsBytes.subspan(itsPlace + 2, aLength - 2));
      itsPlace += aLength;
      TakeParameters(aMarker, aSegment);
   }

   void TakeParameters(unsigned char theMarker, Parameters& theSegment)
   {
      switch (theMarker)
      {
      case kSOF3: TakeFrameHeader(theSegment); break;
      case kDHT: TakeTables(theSegment); break;
      case kDRI: itsRestartInterval = theSegment.Word(); break;
      case kSOS: TakeScan(theSegment); break;
      case kDNL: FailDecompression("the JPEG frame tells its lines behind the scan, which is not served");
      case kDAC: FailDecompression("the JPEG frame is coded arithmetically, which is not served");
      default:
         if (theMarker >= kSOF0 && theMarker <= kSOF15 && theMarker != kJPG)
         {
            FailDecompression("the JPEG frame is of another process (" + Hex(theMarker) + ") than its transfer syntax");
         }
      }
   }

   // T.81 B.2.2
   void TakeFrameHeader(Parameters& theSegment)
   {
      if (!itsComponents.empty())
      {
         FailDamaged("it has two frame headers");
      }
      itsPrecision = theSegment.Byte();
      const unsigned int aRows = theSegment.Word();
      const unsigned int aColumns = theSegment.Word();
      const unsigned int aCount = theSegment.Byte();
      itsImage.CheckAgainst(aRows, aColumns, aCount, itsPrecision);
      if (itsPrecision < 2)
      {
         FailDamaged("its samples have no bits");
      }
      for (unsigned int i = 0; i < aCount; ++i)
      {
         const unsigned int anID = theSegment.Byte();
         const unsigned int aSampling = theSegment.Byte();
         theSegment.Byte(); // no quantisation
         if (aSampling != 0x11 && aCount > 1)
         {
            FailDecompression("the components of the JPEG frame have different sizes, which is not served");
         }
         itsComponents.push_back({anID, false});
      }
   }

   // T.81 B.2.4.2
   void TakeTables(Parameters& theSegment)
   {
      while (!theSegment.IsEmpty())
      {
         const unsigned int aPlace = theSegment.Byte();
         const auto aCounts = theSegment.Take(16).first<16>();
         std::size_t aTotal = 0;
         for (const unsigned char aCount : aCounts)
         {
            aTotal += aCount;
         }
         const HuffmanTable aTable(aCounts, theSegment.Take(aTotal));
         if ((aPlace & 0x0F) >= kMostTables)
         {
            FailDamaged("it has a Huffman table of number " + std::to_string(aPlace & 0x0F));
         }
         if (aPlace >> 4 == 0) // others are for AC coefficients
         {
            itsTables[aPlace] = aTable;
         }
      }
   }

   // T.81 B.2.3
   void TakeScan(Parameters& theSegment)
   {
      if (itsComponents.empty())
      {
         FailDamaged("a scan comes before the frame header");
      }
      std::vector<ScanComponent> aComponents;
      for (unsigned int aLeft = theSegment.Byte(); aLeft > 0; --aLeft)
      {
         const unsigned int anID = theSegment.Byte();
         const unsigned int aTable = theSegment.Byte() >> 4;
         aComponents.push_back(MakeScanComponent(anID, aTable));
      }
      ScanHeader aHeader{};
      aHeader.itsPredictor = theSegment.Byte();
      theSegment.Byte(); // Se
      aHeader.itsPointTransform = theSegment.Byte() & 0x0F;
      if (aComponents.empty() || aHeader.itsPredictor < 1 || aHeader.itsPredictor > kMostPredictors ||
          aHeader.itsPointTransform >= itsPrecision)
      {
         FailDamaged("its scan header makes no sense");
      }
      if (itsRestartInterval % itsImage.itsColumns != 0) // T.81 H.1.1
      {
         FailDamaged("its restart interval is not one of whole lines");
      }
      DecodeScan(aHeader, aComponents);
   }

   ScanComponent MakeScanComponent(unsigned int theID, unsigned int theTable)
   {
      if (theTable >= kMostTables || itsTables[theTable].IsEmpty())
      {
         FailDamaged("a scan has no Huffman table");
      }
      for (std::size_t anIndex = 0; anIndex < itsComponents.size(); ++anIndex)
      {
         Component& aComponent = itsComponents[anIndex];
         if (aComponent.itsID == theID && !aComponent.itsIsDecoded)
         {
            aComponent.itsIsDecoded = true;
            return {anIndex, &itsTables[theTable], std::vector<UINT16>(itsImage.itsColumns), 0, 0};
         }
      }
      FailDamaged("a scan has component " + std::to_string(theID) + ", which there is not, or not again");
   }

   void DecodeScan(const ScanHeader& theHeader, std::vector<ScanComponent>& theComponents)
   {
      EntropyBits aBits(itsBytes.subspan(itsPlace));
      const unsigned int aLinesToRestart = itsRestartInterval / itsImage.itsColumns;
      unsigned int aRestarts = 0;
      for (unsigned int aRow = 0; aRow < itsImage.itsRows; ++aRow)
      {
         const bool isRestart = aLinesToRestart != 0 && aRow != 0 && aRow % aLinesToRestart == 0;
         if (isRestart)
         {
            aBits.Restart(aRestarts++);
         }
         DecodeLine(theHeader, theComponents, aBits, aRow, isRestart || aRow == 0);
      }
      itsPlace += aBits.FindMarker();
   }

   // T.81 H.1.2.1: the first line is predicted from the left only, the first column from above only.
   void DecodeLine(const ScanHeader& theHeader, std::vector<ScanComponent>& theComponents, EntropyBits& theBits,
                   unsigned int theRow, bool theIsFirst)
   {
      SampleCells aCells(itsImage, itsPrecision, itsPixels.data());
      const int aStart = 1 << (itsPrecision - theHeader.itsPointTransform - 1);
      std::size_t aPixel = std::size_t{theRow} * itsImage.itsColumns * itsImage.itsSamples;
      for (unsigned int aColumn = 0; aColumn < itsImage.itsColumns; ++aColumn, aPixel += itsImage.itsSamples)
      {
         for (ScanComponent& aComponent : theComponents)
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
               aPrediction = Predict(theHeader.itsPredictor, aComponent.itsLeft, anAbove, aComponent.itsAboveLeft);
            }
            const auto aSample = static_cast<UINT16>(aPrediction + Difference(*aComponent.itsTable, theBits));
            aComponent.itsAboveLeft = static_cast<UINT16>(anAbove);
            aComponent.itsLeft = aSample;
            aComponent.itsAbove[aColumn] = aSample;
            aCells.Put(aPixel + aComponent.itsIndex, UINT32{aSample} << theHeader.itsPointTransform);
         }
      }
   }

   const ImageDescription& itsImage;
   std::span<const unsigned char> itsBytes;
   std::span<unsigned char> itsPixels;
   std::size_t itsPlace = 0;
   unsigned int itsPrecision = 0; // in bits
   std::vector<Component> itsComponents;
   std::array<HuffmanTable, kMostTables> itsTables;
   unsigned int itsRestartInterval = 0; // in pixels; 0 for none
};
} // namespace

FrameDecoder::Colours JPEGLosslessDecoder::Decode(std::span<const unsigned char> theFrame,
                                                  std::span<unsigned char> thePixels)
{
   Frame(itsImage, theFrame, thePixels).Decode();
   return Colours::AsDescribed;
}

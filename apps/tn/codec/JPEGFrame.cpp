#include "apps/tn/codec/JPEGFrame.h"

#include <algorithm>
#include <cstdio>

namespace
{
enum Marker : unsigned char
{
   kTEM = 0x01,
   kSOF0 = 0xC0,
   kDHT = 0xC4,
   kJPG = 0xC8,
   kDAC = 0xCC,
   kSOF15 = 0xCF,
   kRST0 = 0xD0,
   kRST7 = 0xD7,
   kSOI = 0xD8,
   kEOI = 0xD9,
   kSOS = 0xDA,
   kDQT = 0xDB,
   kDNL = 0xDC,
   kDRI = 0xDD
};

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

bool IsFrameHeader(unsigned char theMarker)
{
   return theMarker >= kSOF0 && theMarker <= kSOF15 && theMarker != kDHT && theMarker != kJPG && theMarker != kDAC;
}
} // namespace

// The parameters of a marker segment, taken one after the other.
class JPEGFrame::Parameters
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

JPEGFrame::Kind JPEGFrame::KindOf(std::span<const unsigned char> theBytes)
{
   std::size_t aPlace = 2; // behind SOI
   while (aPlace + 4 < theBytes.size() && theBytes[aPlace] == 0xFF)
   {
      const unsigned char aMarker = theBytes[aPlace + 1];
      if (IsFrameHeader(aMarker))
      {
         return {aMarker, theBytes[aPlace + 4]};
      }
      aPlace += aMarker == 0xFF ? 1 : std::size_t{2} + (theBytes[aPlace + 2] << 8u | theBytes[aPlace + 3]);
   }
   return {};
}

JPEGFrame::~JPEGFrame() = default;

void JPEGFrame::FailDamaged(const std::string& theWhat)
{
   FailDecompression("the JPEG frame is damaged: " + theWhat);
}

void JPEGFrame::Decode()
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

bool JPEGFrame::IsWhole() const
{
   return !itsComponents.empty() &&
          std::all_of(itsComponents.begin(), itsComponents.end(),
                      [](const Component& theComponent) { return theComponent.itsIsDecoded; });
}

unsigned char JPEGFrame::NextMarker()
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

void JPEGFrame::TakeSegment()
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

void JPEGFrame::TakeParameters(unsigned char theMarker, Parameters& theSegment)
{
   switch (theMarker)
   {
   case kDHT: TakeHuffmanTables(theSegment); break;
   case kDQT: TakeQuantisation(theSegment); break;
   case kDRI: itsRestartInterval = theSegment.Word(); break;
   case kSOS: TakeScan(theSegment); break;
   case kDNL: FailDecompression("the JPEG frame tells its lines behind the scan, which is not served");
   case kDAC: FailDecompression("the JPEG frame is coded arithmetically, which is not served");
   default:
      if (IsDecoded(theMarker))
      {
         TakeFrameHeader(theSegment);
      }
      else if (IsFrameHeader(theMarker))
      {
         FailDecompression("the JPEG frame is of another process (" + Hex(theMarker) + ") than its transfer syntax");
      }
   }
}

// T.81 B.2.2
void JPEGFrame::TakeFrameHeader(Parameters& theSegment)
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
   if (itsPrecision < 2 || itsPrecision > 16)
   {
      FailDamaged("its samples have " + std::to_string(itsPrecision) + " bits");
   }
   for (unsigned int i = 0; i < aCount; ++i)
   {
      const unsigned int anID = theSegment.Byte();
      const unsigned int aSampling = theSegment.Byte();
      const unsigned int aQuantisation = theSegment.Byte();
      if (aSampling != 0x11 && aCount > 1)
      {
         FailDecompression("the components of the JPEG frame have different sizes, which is not served");
      }
      itsComponents.push_back({anID, aQuantisation, false});
   }
}

// T.81 B.2.4.2
void JPEGFrame::TakeHuffmanTables(Parameters& theSegment)
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
      const unsigned int aNumber = aPlace & 0x0F;
      if (aNumber >= kMostTables || aPlace >> 4 > 1)
      {
         FailDamaged("it has a Huffman table of number " + std::to_string(aPlace));
      }
      (aPlace >> 4 == 0 ? itsDCTables : itsACTables)[aNumber] = aTable;
   }
}

// T.81 B.2.4.1
void JPEGFrame::TakeQuantisation(Parameters& theSegment)
{
   while (!theSegment.IsEmpty())
   {
      const unsigned int aPlace = theSegment.Byte();
      if ((aPlace & 0x0F) >= kMostTables || aPlace >> 4 > 1)
      {
         FailDamaged("it has a quantization table of number " + std::to_string(aPlace));
      }
      for (UINT16& aValue : itsQuantisations[aPlace & 0x0F])
      {
         aValue = static_cast<UINT16>(aPlace >> 4 == 0 ? theSegment.Byte() : theSegment.Word());
      }
   }
}

// T.81 B.2.3
void JPEGFrame::TakeScan(Parameters& theSegment)
{
   if (itsComponents.empty())
   {
      FailDamaged("a scan comes before the frame header");
   }
   Scan aScan;
   for (unsigned int aLeft = theSegment.Byte(); aLeft > 0; --aLeft)
   {
      const unsigned int anID = theSegment.Byte();
      const unsigned int aTables = theSegment.Byte();
      aScan.itsComponents.push_back({FindComponent(anID), aTables >> 4, aTables & 0x0F});
   }
   aScan.itsStart = theSegment.Byte();
   theSegment.Byte(); // Se
   aScan.itsPointTransform = theSegment.Byte() & 0x0F;
   if (aScan.itsComponents.empty())
   {
      FailDamaged("a scan has no components");
   }
   EntropyBits aBits(itsBytes.subspan(itsPlace));
   DecodeScan(aScan, aBits);
   itsPlace += aBits.FindMarker();
}

// Each component is decoded once.
std::size_t JPEGFrame::FindComponent(unsigned int theID)
{
   for (std::size_t anIndex = 0; anIndex < itsComponents.size(); ++anIndex)
   {
      Component& aComponent = itsComponents[anIndex];
      if (aComponent.itsID == theID && !aComponent.itsIsDecoded)
      {
         aComponent.itsIsDecoded = true;
         return anIndex;
      }
   }
   FailDamaged("a scan has component " + std::to_string(theID) + ", which there is not, or not again");
}

const HuffmanTable& JPEGFrame::GetTable(const Tables& theTables, unsigned int theNumber)
{
   if (theNumber >= kMostTables || theTables[theNumber].IsEmpty())
   {
      FailDamaged("a scan has no Huffman table");
   }
   return theTables[theNumber];
}

const JPEGFrame::Quantisation& JPEGFrame::GetQuantisation(std::size_t theComponent) const
{
   const unsigned int aNumber = itsComponents[theComponent].itsQuantisation;
   if (aNumber >= kMostTables || itsQuantisations[aNumber][0] == 0) // no value is 0
   {
      FailDamaged("a component has no quantization table");
   }
   return itsQuantisations[aNumber];
}

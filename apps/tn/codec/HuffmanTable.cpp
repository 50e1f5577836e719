#include "apps/tn/codec/HuffmanTable.h"

#include <algorithm>

#include "apps/tn/codec/ImageDescription.h"

namespace
{
constexpr unsigned char kMarker = 0xFF;
constexpr unsigned char kRST0 = 0xD0;
} // namespace

void EntropyBits::FailCut()
{
   FailDecompression("the JPEG frame is cut: its scan ends before the last sample");
}

void EntropyBits::Fill()
{
   while (itsCount <= 56 && itsPlace < itsBytes.size())
   {
      const unsigned char aByte = itsBytes[itsPlace];
      if (aByte == kMarker)
      {
         if (itsPlace + 1 >= itsBytes.size() || itsBytes[itsPlace + 1] != 0)
         {
            return;
         }
         ++itsPlace;
      }
      ++itsPlace;
      itsBits |= UINT64{aByte} << (56 - itsCount);
      itsCount += 8;
   }
}

std::size_t EntropyBits::FindMarker()
{
   while (itsPlace + 1 < itsBytes.size() &&
          (itsBytes[itsPlace] != kMarker || itsBytes[itsPlace + 1] == 0 || itsBytes[itsPlace + 1] == kMarker))
   {
      ++itsPlace;
   }
   return std::min(itsPlace, itsBytes.size());
}

void EntropyBits::Restart(unsigned int theNumber)
{
   itsBits = 0;
   itsCount = 0;
   const std::size_t aPlace = FindMarker();
   if (aPlace + 1 >= itsBytes.size())
   {
      FailCut();
   }
   if (itsBytes[aPlace + 1] != kRST0 + theNumber % 8)
   {
      FailDecompression("the JPEG frame is damaged: a restart marker is missing");
   }
   itsPlace = aPlace + 2;
}

HuffmanTable::HuffmanTable(std::span<const unsigned char, 16> theCounts, std::span<const unsigned char> theValues)
{
   UINT32 aCode = 0;
   for (unsigned int aLength = 1; aLength <= kLongest; ++aLength, aCode <<= 1)
   {
      const unsigned int aCount = theCounts[aLength - 1];
      if (aCode + aCount > UINT32{1} << aLength || itsValueCount + aCount > theValues.size() ||
          itsValueCount + aCount > itsValues.size())
      {
         FailDecompression("the JPEG frame is damaged: a Huffman table has too many codes");
      }
      itsOffsets[aLength] = static_cast<INT32>(itsValueCount) - static_cast<INT32>(aCode);
      for (unsigned int i = 0; i < aCount; ++i, ++aCode, ++itsValueCount)
      {
         itsValues[itsValueCount] = theValues[itsValueCount];
         if (aLength <= kShortBits)
         {
            const UINT32 aFirst = aCode << (kShortBits - aLength);
            std::fill_n(itsShort.begin() + aFirst, std::size_t{1} << (kShortBits - aLength),
                        Short{static_cast<unsigned char>(aLength), itsValues[itsValueCount]});
         }
      }
      itsEnds[aLength] = aCode;
   }
}

unsigned char HuffmanTable::DecodeLong(EntropyBits& theBits) const
{
   const UINT32 aBits = theBits.Peek(kLongest);
   for (unsigned int aLength = kShortBits + 1; aLength <= kLongest; ++aLength)
   {
      const UINT32 aCode = aBits >> (kLongest - aLength);
      if (aCode < itsEnds[aLength])
      {
         theBits.Drop(aLength);
         const INT32 aPlace = itsOffsets[aLength] + static_cast<INT32>(aCode);
         return itsValues[static_cast<std::size_t>(aPlace)];
      }
   }
   theBits.Drop(kLongest); // nothing was left, if it can be that
   FailDecompression("the JPEG frame is damaged: it has a code that its Huffman table has not");
}

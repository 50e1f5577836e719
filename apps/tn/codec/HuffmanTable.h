// A Huffman table of JPEG (ITU-T T.81 annexes C and F), and the bits of a scan that are decoded with it.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "talvenor/foundation/BasicTypes.h"

// The entropy-coded bytes between two markers, without the zero bytes that are stuffed behind FF (T.81 F.1.2.3). Throws
// StreamIOException (TN_DECOMPRESSION_FAILED) when a marker or the end comes before the bits that are asked for.
class EntropyBits
{
public:
   explicit EntropyBits(std::span<const unsigned char> theBytes) : itsBytes(theBytes) {}

   // At most 16 bits each. What Peek shows behind the last bit is 0.
   UINT32 Peek(unsigned int theCount)
   {
      if (itsCount < theCount)
      {
         Fill();
      }
      return static_cast<UINT32>(itsBits >> (64 - theCount));
   }
   void Drop(unsigned int theCount)
   {
      if (itsCount < theCount)
      {
         FailCut();
      }
      itsBits <<= theCount;
      itsCount -= theCount;
   }
   UINT32 Take(unsigned int theCount)
   {
      const UINT32 aValue = Peek(theCount);
      Drop(theCount);
      return aValue;
   }

   // Passes what is left of the bits and the restart marker (RST0 to RST7) that has to follow.
   void Restart(unsigned int theNumber);

   // Where the marker behind the bits stands.
   std::size_t FindMarker();

private:
   [[noreturn]] static void FailCut();
   void Fill();

   std::span<const unsigned char> itsBytes;
   std::size_t itsPlace = 0;
   UINT64 itsBits = 0; // from the highest bit on
   unsigned int itsCount = 0;
};

class HuffmanTable
{
public:
   // theCounts tells how many codes of 1 to 16 bits there are, theValues their values in order. Throws when these are
   // not the counts of a prefix code.
   HuffmanTable(std::span<const unsigned char, 16> theCounts, std::span<const unsigned char> theValues);
   HuffmanTable() = default;

   bool IsEmpty() const { return itsValueCount == 0; }

   unsigned char Decode(EntropyBits& theBits) const
   {
      const Short aShort = itsShort[theBits.Peek(kShortBits)];
      if (aShort.itsLength != 0)
      {
         theBits.Drop(aShort.itsLength);
         return aShort.itsValue;
      }
      return DecodeLong(theBits);
   }

private:
   static constexpr unsigned int kShortBits = 9;
   static constexpr unsigned int kLongest = 16;

   struct Short
   {
      unsigned char itsLength = 0; // in bits; 0 for the beginning of a longer code
      unsigned char itsValue = 0;
   };

   unsigned char DecodeLong(EntropyBits& theBits) const;

   std::array<Short, 1u << kShortBits> itsShort{};
   std::array<UINT32, kLongest + 1> itsEnds{};   // behind the last code of each length, and its shorter beginnings
   std::array<INT32, kLongest + 1> itsOffsets{}; // from a code of the length to the index of its value
   std::array<unsigned char, 256> itsValues{};
   std::size_t itsValueCount = 0;
};

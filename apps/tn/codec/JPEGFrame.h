// A frame of JPEG with Huffman coding as its marker segments make it up (ITU-T T.81 annex B): headers, tables, restart
// intervals, and scans, which the processes decode each in its own way.
//
// Nothing in a frame is trusted. Failures throw StreamIOException (TN_DECOMPRESSION_FAILED).
#pragma once

#include <array>
#include <span>
#include <string>
#include <vector>

#include "apps/tn/codec/HuffmanTable.h"
#include "apps/tn/codec/ImageDescription.h"

class JPEGFrame
{
public:
   // The markers that begin a frame header, T.81 table B.1; all begin with FF.
   enum Process : unsigned char
   {
      kNone = 0,
      kBaseline = 0xC0,
      kExtended = 0xC1,
      kLossless = 0xC3
   };
   struct Kind
   {
      unsigned int itsProcess = kNone; // the marker, also of a process that is not named here
      unsigned int itsPrecision = 0;   // in bits
   };

   // What the first frame header of a codestream says; kNone where there is none.
   static Kind KindOf(std::span<const unsigned char> theBytes);

   // All are borrowed. thePixels has the size of a frame.
   JPEGFrame(const ImageDescription& theImage, std::span<const unsigned char> theBytes,
             std::span<unsigned char> thePixels)
       : itsImage(theImage), itsBytes(theBytes), itsPixels(thePixels)
   {}
   JPEGFrame(const JPEGFrame&) = delete;
   JPEGFrame& operator=(const JPEGFrame&) = delete;
   virtual ~JPEGFrame();

   // Takes everything from the first marker to the last scan.
   void Decode();

protected:
   static constexpr unsigned int kMostTables = 4;
   using Quantisation = std::array<UINT16, 64>; // in the order of the codestream

   struct Scan // T.81 B.2.3; names of the parameters in the standard
   {
      struct Component
      {
         std::size_t itsIndex; // in the frame: the place among the samples of a pixel
         unsigned int itsDCTable;
         unsigned int itsACTable;
      };

      std::vector<Component> itsComponents;
      unsigned int itsStart;          // Ss: the first coefficient, or the predictor
      unsigned int itsPointTransform; // Al, in bits
   };

   virtual bool IsDecoded(unsigned int theProcess) const = 0;
   virtual void DecodeScan(const Scan& theScan, EntropyBits& theBits) = 0;

   [[noreturn]] static void FailDamaged(const std::string& theWhat);

   // The tables that a scan names; throw when there is none.
   const HuffmanTable& GetDCTable(unsigned int theNumber) const { return GetTable(itsDCTables, theNumber); }
   const HuffmanTable& GetACTable(unsigned int theNumber) const { return GetTable(itsACTables, theNumber); }
   const Quantisation& GetQuantisation(std::size_t theComponent) const;

   const ImageDescription& itsImage;
   std::span<const unsigned char> itsBytes;
   std::span<unsigned char> itsPixels;
   unsigned int itsPrecision = 0;       // in bits
   unsigned int itsRestartInterval = 0; // in pixels or blocks; 0 for none

private:
   class Parameters;
   using Tables = std::array<HuffmanTable, kMostTables>;

   struct Component
   {
      unsigned int itsID = 0;
      unsigned int itsQuantisation = 0;
      bool itsIsDecoded = false;
   };

   static const HuffmanTable& GetTable(const Tables& theTables, unsigned int theNumber);

   bool IsWhole() const;
   unsigned char NextMarker();
   void TakeSegment();
   void TakeParameters(unsigned char theMarker, Parameters& theSegment);
   void TakeFrameHeader(Parameters& theSegment);
   void TakeHuffmanTables(Parameters& theSegment);
   void TakeQuantisation(Parameters& theSegment);
   void TakeScan(Parameters& theSegment);
   std::size_t FindComponent(unsigned int theID);

   std::size_t itsPlace = 0;
   std::vector<Component> itsComponents;
   Tables itsDCTables;
   Tables itsACTables;
   std::array<Quantisation, kMostTables> itsQuantisations = {};
};

// T.81 F.2.2.1: theCount bits, of which the lower half stands for the negative numbers.
inline int TakeSigned(EntropyBits& theBits, unsigned int theCount)
{
   const int aValue = static_cast<int>(theBits.Take(theCount));
   return aValue < (1 << (theCount - 1)) ? aValue - (1 << theCount) + 1 : aValue;
}

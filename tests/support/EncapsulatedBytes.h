// Composes encapsulated pixel data (PS3.5 A.4) and the compressed frames in it, and gives them to a reader.
#pragma once

#include <initializer_list>
#include <memory>

#include "support/Decoding.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/MemoryStreams.h"

inline Bytes LittleEndian(std::size_t theNumber)
{
   return {static_cast<unsigned char>(theNumber), static_cast<unsigned char>(theNumber >> 8),
           static_cast<unsigned char>(theNumber >> 16), static_cast<unsigned char>(theNumber >> 24)};
}

inline Bytes Item(const Bytes& theValue)
{
   return Bytes{0xFE, 0xFF, 0x00, 0xE0} + LittleEndian(theValue.size()) + theValue;
}

// The item of a basic offset table.
inline Bytes Table(const std::vector<unsigned int>& theOffsets)
{
   Bytes aValue;
   for (const unsigned int anOffset : theOffsets)
   {
      aValue = aValue + LittleEndian(anOffset);
   }
   return Item(aValue);
}

inline const Bytes kEndOfItems = kSequenceDelimiter;

// theData in fragments of theSize bytes, the last one shorter.
inline Bytes Fragments(const Bytes& theData, std::size_t theSize)
{
   Bytes anItems;
   for (auto aPlace = theData.begin(); aPlace != theData.end();)
   {
      const auto aCount = std::min(static_cast<std::ptrdiff_t>(theSize), theData.end() - aPlace);
      anItems = anItems + Item({aPlace, aPlace + aCount});
      aPlace += aCount;
   }
   return anItems;
}

// A JPEG image (ISO 10918-1 Annex B) of 42 bytes and those of theData, in which no marker may stand. It contains what
// must not be taken for its end: a thumbnail, stuffed and fill bytes, a restart marker.
inline Bytes JPEGFrame(const Bytes& theData)
{
   return Bytes{0xFF, 0xD8,                                                 // SOI
                0xFF, 0xE1, 0x00, 0x08, 0xFF, 0xD8, 0x01, 0x02, 0xFF, 0xD9, // APP1 with a thumbnail
                0xFF, 0xFE, 0x00, 0x04, 0xFF, 0xD9,                         // COM
                0xFF, 0xFF, 0xDA, 0x00, 0x08, 1,    1,    0,    0,    63,   // SOS behind a fill byte
                0,    0x12, 0xFF, 0x00, 0x34} +
          theData + Bytes{0xFF, 0xD0, 0x56,                    // RST0
                          0x78, 0x9A, 0xBC, 0x00, 0xFF, 0xD9}; // EOI
}

// A JPEG 2000 codestream (ISO 15444-1 Annex A) of 39 bytes and twice those of theData, in two tile-parts, the second of
// which reaches to EOC; the first one contains what looks like EOC.
inline Bytes JPEG2000Frame(const Bytes& theData)
{
   const Bytes aPacket = theData + Bytes{0xFF, 0xD9};
   const auto aLength = static_cast<unsigned char>(14 + aPacket.size());
   return Bytes{0xFF, 0x4F,                                                         // SOC
                0xFF, 0x52, 0x00, 0x05, 1, 2, 3} +                                  // COD
          Bytes{0xFF, 0x90, 0x00, 0x0A, 0, 0, 0, 0, 0, aLength, 0, 2, 0xFF, 0x93} + // SOT, SOD
          aPacket +
          Bytes{0xFF, 0x90, 0x00, 0x0A, 0, 0, 0, 0, 0, 0, 1, 2, 0xFF, 0x93} + theData + Bytes{0xFF, 0xD9}; // EOC
}

// Pixel data over items: in memory, where it can seek, or in pieces of a given size, where it cannot.
class EncapsulatedBytes
{
public:
   static constexpr unsigned int kInMemory = 0;

   explicit EncapsulatedBytes(Bytes theItems, unsigned int thePiece = kInMemory,
                              UINT32 theLength = VR::kUndefinedLength)
       : itsItems(std::move(theItems)), itsMemory(itsItems.data(), static_cast<unsigned int>(itsItems.size())),
         itsPieces(itsItems, thePiece),
         itsReader(thePiece == kInMemory ? static_cast<InputStream&>(itsMemory) : itsPieces, TNEndian::LittleEndian),
         itsPixels(itsReader, theLength)
   {}

   PixelDataFragmentInputStreamVR& Pixels() { return itsPixels; }
   unsigned int Position() const { return itsMemory.GetStreamPosition(); }

private:
   Bytes itsItems;
   MemoryInputStream itsMemory;
   PiecewiseInputStream itsPieces;
   EndianHandlingReader itsReader;
   PixelDataFragmentInputStreamVR itsPixels;
};

inline Bytes ReadToEnd(InputStream& theStream, unsigned int theBlock = 1000)
{
   Bytes aBytes;
   Bytes aBlock(theBlock);
   while (const unsigned int aCount = theStream.Read(aBlock.data(), theBlock))
   {
      aBytes = aBytes + First(aBlock, aCount);
   }
   return aBytes;
}

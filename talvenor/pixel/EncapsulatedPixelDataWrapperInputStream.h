// One compressed frame as a complete element of encapsulated pixel data (PS3.5 A.4), for what reads such elements from
// a stream. Of a source that holds nothing but the frame it delivers
//
//    E0 7F 10 00  'O' 'B'  00 00  FF FF FF FF    (7FE0,0010)
//    FE FF 00 E0  04 00 00 00  00 00 00 00       the basic offset table of one frame
//    FE FF 00 E0  ll ll ll ll                    the only fragment; its length is even
//    ... the frame, and a pad byte when its length is odd
//    FE FF DD E0  00 00 00 00                    end
//
// Not locked: one thread at a time.
#pragma once

#include <memory>

#include "talvenor/io/InputStream.h"

class TALVENOR_API EncapsulatedPixelDataWrapperInputStream : public InputStream
{
public:
   // theSource stands at the first byte of the frame, theLength bytes of which are read. It is owned in the pointer
   // form; in the reference form it is borrowed and must outlive this stream. Throws StreamIOException
   // (TN_INTERNAL_ERROR) for a length of 0xFFFFFFFF, which no fragment can have.
   EncapsulatedPixelDataWrapperInputStream(InputStream& theSource, UINT32 theLength, unsigned char thePadByte);
   EncapsulatedPixelDataWrapperInputStream(InputStream* theSource, UINT32 theLength, unsigned char thePadByte);

   // Throws StreamIOException (TN_INTERNAL_ERROR) when the source ends inside the frame.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // Positions are those of the element delivered; one beyond its end is its end. Throws (TN_UNSUPPORTED) when the
   // source cannot seek.
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override { return itsSource.CanSeek(); }
   INT64 Length() const override { return static_cast<INT64>(GetTotalLength()); }
   unsigned int GetStreamPosition() const override { return static_cast<unsigned int>(itsPosition); }

   // Closes the source.
   void Close() override { itsSource.Close(); }

private:
   EncapsulatedPixelDataWrapperInputStream(std::unique_ptr<InputStream> theOwnedSource, InputStream& theSource,
                                           UINT32 theLength, unsigned char thePadByte);

   static constexpr UINT32 kPrefixLength = 32;
   static constexpr UINT32 kMaximumTrailerLength = 9; // pad byte and delimiter

   UINT64 GetFrameEnd() const { return UINT64{kPrefixLength} + itsLength; }
   UINT64 GetTotalLength() const { return GetFrameEnd() + itsTrailerLength; }
   unsigned int ReadFrame(unsigned char* theBuffer, unsigned int theCount);

   std::unique_ptr<InputStream> itsOwnedSource;
   InputStream& itsSource;
   unsigned int itsOrigin; // position of the frame in the source, when that can seek
   UINT32 itsLength;       // of the frame
   UINT64 itsPosition = 0; // in the element delivered
   unsigned char itsPrefix[kPrefixLength];
   unsigned char itsTrailer[kMaximumTrailerLength];
   UINT32 itsTrailerLength;
};

// Decoders of compressed frames (PS3.5 A.4), one class for each kind of compression. Frames come from anywhere: nothing
// in them is trusted, and what they make a decoder hold is bounded by the description of the image.
#pragma once

#include <memory>
#include <span>

#include "apps/tn/codec/ImageDescription.h"

class FrameDecoder
{
public:
   // What three samples of a decoded frame are.
   enum class Colours
   {
      AsDescribed,
      RGB
   };

   // Whether there is a decoder for the transfer syntax.
   static bool IsServed(const RWCString& theSyntaxUID);

   // Throws StreamIOException when there is none.
   static std::unique_ptr<FrameDecoder> New(const RWCString& theSyntaxUID, const ImageDescription& theImage);

   virtual ~FrameDecoder();

   // Fills thePixels, which has the size of a frame: see SampleCells. Throws StreamIOException
   // (TN_DECOMPRESSION_FAILED) with what is wrong with the frame: it is cut, contradicts the description, or is not of
   // this compression.
   virtual Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) = 0;

protected:
   explicit FrameDecoder(const ImageDescription& theImage) : itsImage(theImage) {}

   const ImageDescription itsImage;
};

// RLE (PS3.5 annex G): a segment for each byte of a sample, the most significant first.
class RLEDecoder : public FrameDecoder
{
public:
   explicit RLEDecoder(const ImageDescription& theImage) : FrameDecoder(theImage) {}

   Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) override;
};

// JPEG baseline and extended, 8 bits (ITU-T T.81); those with 12 have JPEGExtendedDecoder. YCbCr becomes RGB.
class JPEGDecoder : public FrameDecoder
{
public:
   explicit JPEGDecoder(const ImageDescription& theImage) : FrameDecoder(theImage) {}

   Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) override;
};

// JPEG-LS, lossless and near-lossless (ITU-T T.87).
class JPEGLSDecoder : public FrameDecoder
{
public:
   explicit JPEGLSDecoder(const ImageDescription& theImage) : FrameDecoder(theImage) {}

   Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) override;
};

// JPEG 2000 part 1 (ITU-T T.800), as a codestream or, against the standard but met with, in a JP2 file. Its colour
// transforms are undone.
class JPEG2000Decoder : public FrameDecoder
{
public:
   explicit JPEG2000Decoder(const ImageDescription& theImage) : FrameDecoder(theImage) {}

   Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) override;
};

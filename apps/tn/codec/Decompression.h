// Native pixel data of compressed pixel data, frame by frame: one compressed and one native frame are in memory at a
// time, whatever their number.
//
//    auto aDecompression = std::make_unique<Decompression>(aHeader, aSyntax, *aFragments); // decodes the first frame
//    anEncoder.SaveDICOMObject(aHeader); // tells now what the pixels are
//    anEncoder.SaveVR(Decompression::MakePixels(std::move(aDecompression)).release()); // decodes the others
//
// Samples are little endian in cells of Bits Allocated, those of a pixel side by side. Failures throw StreamIOException
// (TN_DECOMPRESSION_FAILED), which names the frame; what has been written by then is half a dataset.
// Not locked: one thread at a time.
#pragma once

#include <functional>
#include <memory>
#include <span>

#include "apps/tn/codec/ImageDescription.h"

class CompressedFrames;
class DICOMDataObject;
class FrameDecoder;
class PixelDataFragmentInputStreamVR;
class TransferSyntaxType;
class VR;

class Decompression
{
public:
   // Whether there is a decoder for the transfer syntax.
   static bool IsServed(const RWCString& theSyntaxUID);

   // Decodes the first frame, and makes theHeader, which holds what stands in front of the pixel data, true:
   // Photometric Interpretation, Planar Configuration, and Lossy Image Compression where the syntax is a lossy one.
   // Tables of offsets into the compressed frames go, and pixels in sequence items become native: see DecompressNested.
   // thePixels is borrowed, as long as there are frames to come.
   Decompression(DICOMDataObject& theHeader, const TransferSyntaxType& theSyntax,
                 PixelDataFragmentInputStreamVR& thePixels);
   ~Decompression();
   Decompression(const Decompression&) = delete;
   Decompression& operator=(const Decompression&) = delete;

   // As the header says it now.
   const ImageDescription& GetImage() const { return itsImage; }

   // The current frame, the first one to begin with; valid until the next one.
   std::span<const unsigned char> GetFrame() const { return {itsFrame.get(), itsImage.GetFrameSize()}; }

   // False behind the last one.
   bool NextFrame();

   // The element of all frames, read while it is written. theDecompression is its own from then on; theTell is told
   // what went wrong before it throws.
   static std::unique_ptr<VR> MakePixels(std::unique_ptr<Decompression> theDecompression,
                                         std::function<void(const RWCString&)> theTell = nullptr);

private:
   void Decode();
   void DescribeNative(DICOMDataObject& theHeader, const TransferSyntaxType& theSyntax);

   ImageDescription itsImage;
   std::unique_ptr<FrameDecoder> itsDecoder;
   std::unique_ptr<CompressedFrames> itsFrames;
   std::unique_ptr<unsigned char[]> itsFrame;
   UINT32 itsIndex = 0; // of the current frame
   bool itsIsRGB = false;
};

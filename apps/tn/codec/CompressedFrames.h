// The frames of encapsulated pixel data (PS3.5 A.4), each whole in memory while it is the current one, whatever
// fragments it is in: also frames of JPEG-LS, and a single frame in several fragments where the standard allows but
// one.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class ImageFrameInputStream;
class InputStream;
class PixelDataFragmentInputStreamVR;

class CompressedFrames
{
public:
   // thePixels is borrowed, and no item of it has been read. theLongestFrame is in bytes.
   CompressedFrames(PixelDataFragmentInputStreamVR& thePixels, const RWCString& theSyntaxUID, UINT32 theFrames,
                    std::size_t theLongestFrame);
   ~CompressedFrames();

   // Valid until the next call; empty behind the last one. Throws StreamIOException.
   std::span<const unsigned char> Next();

private:
   void TakeFragments(bool theIsAll);
   void Append(InputStream& theStream, UINT64 theLength);

   PixelDataFragmentInputStreamVR& itsPixels;
   std::size_t itsLongestFrame;
   bool itsIsSingle;
   bool itsHasBegun = false;
   std::unique_ptr<ImageFrameInputStream> itsFrames; // null where frames are found by their fragments
   std::vector<unsigned char> itsBytes;
};

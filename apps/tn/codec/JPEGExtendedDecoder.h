// JPEG extended sequential with 12 bits (ITU-T T.81 process 4, Huffman coding), which libjpeg does not have: grey
// images, with restart intervals.
#pragma once

#include "apps/tn/codec/FrameDecoder.h"

class JPEGExtendedDecoder : public FrameDecoder
{
public:
   explicit JPEGExtendedDecoder(const ImageDescription& theImage) : FrameDecoder(theImage) {}

   Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) override;
};

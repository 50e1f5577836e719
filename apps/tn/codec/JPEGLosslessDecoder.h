// JPEG lossless with Huffman coding (ITU-T T.81 annex H, process 14): 2 to 16 bits, all seven predictors, point
// transform, restart intervals, components interleaved or in scans of their own. Samples are not transformed: what the
// dataset says of their colours stays true.
#pragma once

#include "apps/tn/codec/FrameDecoder.h"

class JPEGLosslessDecoder : public FrameDecoder
{
public:
   explicit JPEGLosslessDecoder(const ImageDescription& theImage) : FrameDecoder(theImage) {}

   Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) override;
};

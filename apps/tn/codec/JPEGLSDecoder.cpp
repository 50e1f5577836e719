#include <cstring>
#include <vector>

#include <charls/charls.h>

#include "apps/tn/codec/FrameDecoder.h"

FrameDecoder::Colours JPEGLSDecoder::Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels)
try
{
   if (theFrame.empty()) // whose null the library would not bear
   {
      FailDecompression("the JPEG-LS frame is empty");
   }
   // The library stops at a marker; where a frame ends without one it takes 2^31 zeros for its continuation.
   std::vector<unsigned char> aFrame(theFrame.begin(), theFrame.end());
   aFrame.insert(aFrame.end(), {0xFF, 0xD9}); // EOI
   charls::jpegls_decoder aDecoder;
   aDecoder.source(aFrame.data(), aFrame.size());
   aDecoder.read_header();
   const charls::frame_info& anInfo = aDecoder.frame_info();
   itsImage.CheckAgainst(anInfo.height, anInfo.width, static_cast<UINT64>(anInfo.component_count),
                         static_cast<UINT64>(anInfo.bits_per_sample));

   const std::size_t aCount = itsImage.GetSampleCount();
   const unsigned int aSize = anInfo.bits_per_sample > 8 ? 2 : 1; // of a sample, in this machine's byte order
   std::vector<unsigned char> aSamples(aDecoder.destination_size());
   if (aSamples.size() != aCount * aSize)
   {
      FailDecompression("the JPEG-LS frame has " + std::to_string(aSamples.size()) + " bytes instead of " +
                        std::to_string(aCount * aSize));
   }
   aDecoder.decode(aSamples.data(), aSamples.size());

   const bool isByPlane = aDecoder.interleave_mode() == charls::interleave_mode::none;
   const std::size_t aPlane = isByPlane ? aCount / itsImage.itsSamples : 1;
   const std::size_t aPixel = isByPlane ? 1 : itsImage.itsSamples;
   SampleCells aCells(itsImage, static_cast<unsigned int>(anInfo.bits_per_sample), thePixels.data());
   for (std::size_t anIndex = 0; anIndex < aCount; ++anIndex)
   {
      const std::size_t aFrom = anIndex / itsImage.itsSamples * aPixel + anIndex % itsImage.itsSamples * aPlane;
      UINT16 aWide = 0;
      if (aSize == 2)
      {
         std::memcpy(&aWide, aSamples.data() + 2 * aFrom, sizeof aWide);
      }
      aCells.Put(anIndex, aSize == 2 ? aWide : aSamples[aFrom]);
   }
   return Colours::AsDescribed;
}
catch (const charls::jpegls_error& anError)
{
   FailDecompression(std::string("JPEG-LS: ") + anError.what());
}

// A compressed frame. Its first bytes say which syntax it has and what the dataset says of it: a picture of at most 64
// by 64 pixels. It is decoded, or refused with a text, and decoded once more to the same pixels.
#include <memory>

#include <fuzzer/FuzzedDataProvider.h>

#include "apps/tn/codec/FrameDecoder.h"
#include "fuzz/Fuzzing.h"
#include "talvenor/foundation/StreamIOException.h"

namespace
{
constexpr const char* kSyntaxes[] = {"1.2.840.10008.1.2.4.50", "1.2.840.10008.1.2.4.51", "1.2.840.10008.1.2.4.70",
                                     "1.2.840.10008.1.2.4.80", "1.2.840.10008.1.2.4.90", "1.2.840.10008.1.2.5"};
constexpr const char* kPhotometrics[] = {"MONOCHROME2", "RGB", "YBR_FULL_422", "PALETTE COLOR"};

// Eight bytes.
ImageDescription TakeDescription(FuzzedDataProvider& theInput)
{
   ImageDescription anImage;
   anImage.itsRows = static_cast<UINT16>(theInput.ConsumeIntegral<UINT8>() % 64 + 1);
   anImage.itsColumns = static_cast<UINT16>(theInput.ConsumeIntegral<UINT8>() % 64 + 1);
   anImage.itsSamples = theInput.ConsumeIntegral<UINT8>() % 2 == 0 ? 1 : 3;
   anImage.itsBitsAllocated = theInput.ConsumeIntegral<UINT8>() % 2 == 0 ? 16 : 8;
   anImage.itsBitsStored = static_cast<UINT16>(theInput.ConsumeIntegral<UINT8>() % anImage.itsBitsAllocated + 1);
   anImage.itsHighBit = static_cast<UINT16>(anImage.itsBitsStored - 1);
   anImage.itsIsSigned = theInput.ConsumeIntegral<UINT8>() % 2 != 0;
   anImage.itsPhotometric = kPhotometrics[theInput.ConsumeIntegral<UINT8>() % 4];
   return anImage;
}

FuzzBytes Decode(const char* theSyntax, const ImageDescription& theImage, const FuzzBytes& theFrame)
{
   FuzzBytes aPixels(theImage.GetFrameSize());
   try
   {
      FrameDecoder::New(theSyntax, theImage)->Decode(theFrame, aPixels);
      return aPixels;
   }
   catch (const StreamIOException& anException)
   {
      Require(anException.GetResultCode() == TN_DECOMPRESSION_FAILED, "another result than that of a decoder");
      Require(anException.why()[0] != '\0', "a failure without a text");
      return {};
   }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theBytes, std::size_t theCount)
{
   constexpr std::size_t kHead = 8;
   if (theCount < kHead)
   {
      return -1;
   }
   FuzzedDataProvider aHead(theBytes, kHead);
   const ImageDescription anImage = TakeDescription(aHead);
   const char* const aSyntax = kSyntaxes[aHead.ConsumeIntegral<UINT8>() % std::size(kSyntaxes)];
   const FuzzBytes aFrame(theBytes + kHead, theBytes + theCount);
   const FuzzBytes aFirst = Decode(aSyntax, anImage, aFrame);
   Require(aFirst == Decode(aSyntax, anImage, aFrame), "other pixels the second time");
   return 0;
}

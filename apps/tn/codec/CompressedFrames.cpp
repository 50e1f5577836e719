#include "apps/tn/codec/CompressedFrames.h"

#include "apps/tn/codec/ImageDescription.h"
#include "talvenor/pixel/ImageFrameInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
bool IsJPEGLS(const RWCString& theUID)
{
   return theUID == TransferSyntaxType::TSJPEGLSUID || theUID == TransferSyntaxType::TSJPEGNLSUID;
}

// No coded sample of JPEG-LS looks like a marker (T.87 A.1), so that a fragment that ends with one ends a frame.
bool EndsWithEOI(const std::vector<unsigned char>& theBytes)
{
   std::size_t aCount = theBytes.size();
   if (aCount > 2 && theBytes[aCount - 1] == 0) // the pad byte of the fragment
   {
      --aCount;
   }
   return aCount >= 2 && theBytes[aCount - 2] == 0xFF && theBytes[aCount - 1] == 0xD9;
}
} // namespace

CompressedFrames::CompressedFrames(PixelDataFragmentInputStreamVR& thePixels, const RWCString& theSyntaxUID,
                                   UINT32 theFrames, std::size_t theLongestFrame)
    : itsPixels(thePixels), itsLongestFrame(theLongestFrame), itsIsSingle(theFrames == 1)
{
   if (!itsIsSingle && !IsJPEGLS(theSyntaxUID))
   {
      itsFrames = std::make_unique<ImageFrameInputStream>(thePixels, theSyntaxUID, static_cast<INT32>(theFrames), 0);
   }
}

CompressedFrames::~CompressedFrames() = default;

std::span<const unsigned char> CompressedFrames::Next()
{
   itsBytes.clear();
   if (!itsFrames)
   {
      TakeFragments(itsIsSingle);
   }
   else if (const std::unique_ptr<InputStream> aFrame{itsFrames->NextFrame()})
   {
      Append(*aFrame, static_cast<UINT64>(aFrame->Length()));
   }
   return itsBytes;
}

void CompressedFrames::TakeFragments(bool theIsAll)
{
   if (!itsHasBegun)
   {
      itsHasBegun = true;
      if (const std::unique_ptr<PixelDataFragmentInputStream> aTable{itsPixels.NextFragment()})
      {
         aTable->Skip(aTable->GetLength());
      }
   }
   while (theIsAll || !EndsWithEOI(itsBytes))
   {
      const std::unique_ptr<PixelDataFragmentInputStream> aFragment(itsPixels.NextFragment());
      if (!aFragment)
      {
         return;
      }
      Append(*aFragment, aFragment->GetLength());
   }
}

void CompressedFrames::Append(InputStream& theStream, UINT64 theLength)
{
   if (theLength > itsLongestFrame || itsBytes.size() > itsLongestFrame - theLength)
   {
      FailDecompression("a compressed frame is longer than its image can need");
   }
   constexpr std::size_t kStep = 1 << 20; // the length may be a lie: room is made for what comes
   for (std::size_t aLeft = theLength; aLeft > 0;)
   {
      const std::size_t anOld = itsBytes.size();
      const auto aStep = static_cast<unsigned int>(std::min(aLeft, kStep));
      itsBytes.resize(anOld + aStep);
      if (theStream.ReadFully(itsBytes.data() + anOld, aStep) != aStep)
      {
         FailDecompression("the pixel data is cut");
      }
      aLeft -= aStep;
   }
}

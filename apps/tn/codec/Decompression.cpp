#include "apps/tn/codec/Decompression.h"

#include <algorithm>
#include <cstring>

#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/codec/CompressedFrames.h"
#include "apps/tn/codec/FrameDecoder.h"
#include "apps/tn/codec/NestedPixels.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
constexpr UINT32 kPhotometricInterpretation = 0x00280004;
constexpr UINT32 kPlanarConfiguration = 0x00280006;
constexpr UINT32 kLossyImageCompression = 0x00282110;
constexpr UINT32 kOffsetTables[] = {0x7FE00001, 0x7FE00002, 0x7FE00003}; // PS3.3 C.7.6.3.1.8

// Compressed frames are smaller than native ones, but noise and small images need not be.
std::size_t LongestFrame(const ImageDescription& theImage)
{
   constexpr std::size_t kFactor = 4;
   constexpr std::size_t kExtra = 1 << 20; // tables, profiles and comments
   return kFactor * theImage.GetFrameSize() + kExtra;
}

void Remove(DICOMDataObject& theHeader, UINT32 theTag)
{
   const std::unique_ptr<VR> aVR(theHeader.RemoveVR(GroupOf(theTag), ElementOf(theTag)));
}

void Put(DICOMDataObject& theHeader, UINT32 theTag, UINT16 theType, const std::string& theText)
{
   theHeader.Push(MakeElement(theTag, theType, theText).release());
}

class DecompressedPixels : public PixelInputStreamVR
{
public:
   DecompressedPixels(std::unique_ptr<Decompression> theDecompression, std::function<void(const RWCString&)> theTell)
       : PixelInputStreamVR(TNEndian::LittleEndian), itsDecompression(std::move(theDecompression)),
         itsTell(std::move(theTell))
   {
      SetTypeCode(itsDecompression->GetImage().itsBitsAllocated > 8 ? VRCode::OW : VRCode::OB);
      SetLength(EvenLength(itsDecompression->GetImage()));
   }

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      const UINT32 aWanted = std::min(theCount, VR::GetLength() - itsPosition);
      if (aWanted == 0)
      {
         return 0;
      }
      if (itsPlace == itsDecompression->GetFrame().size() && !Advance())
      {
         *theBuffer = 0; // the pad byte
         ++itsPosition;
         return 1;
      }
      const auto aRest = itsDecompression->GetFrame().subspan(itsPlace);
      const std::size_t aCount = std::min<std::size_t>(aWanted, aRest.size());
      std::memcpy(theBuffer, aRest.data(), aCount);
      itsPlace += aCount;
      itsPosition += static_cast<UINT32>(aCount);
      return static_cast<unsigned int>(aCount);
   }

   INT64 Length() const override { return VR::GetLength(); }
   unsigned int GetStreamPosition() const override { return itsPosition; }
   void Close() override {}

   VR* GetVR() override
   {
      const UINT32 aLength = VR::GetLength();
      auto aVR = std::make_unique<VR>(GetGroup(), GetElement(), aLength, 1, GetDataEndian(), GetMemoryAllocater());
      aVR->SetTypeCode(GetTypeCode());
      if (itsPosition != 0 || ReadFully(aVR->GetData(), aLength) != aLength)
      {
         FailDecompression("the pixels have been read in part already");
      }
      return aVR.release();
   }
   std::unique_ptr<VR> Materialise(std::exception_ptr&) override { return std::unique_ptr<VR>(GetVR()); }

private:
   static UINT32 EvenLength(const ImageDescription& theImage)
   {
      const UINT64 aLength = UINT64{theImage.GetFrameSize()} * theImage.itsFrames;
      return static_cast<UINT32>(aLength + aLength % 2);
   }

   bool Advance()
   {
      itsPlace = 0;
      try
      {
         if (itsDecompression->NextFrame())
         {
            return true;
         }
         itsPlace = itsDecompression->GetFrame().size();
         return false;
      }
      catch (const ExceptionBase& anException)
      {
         if (itsTell)
         {
            itsTell(ErrorText(anException));
         }
         throw;
      }
   }

   std::unique_ptr<Decompression> itsDecompression;
   std::function<void(const RWCString&)> itsTell;
   UINT32 itsPosition = 0;   // in the value
   std::size_t itsPlace = 0; // in the current frame
};
} // namespace

bool Decompression::IsServed(const RWCString& theSyntaxUID)
{
   return FrameDecoder::IsServed(theSyntaxUID);
}

Decompression::Decompression(DICOMDataObject& theHeader, const TransferSyntaxType& theSyntax,
                             PixelDataFragmentInputStreamVR& thePixels)
    : itsImage(ImageDescription::Of(theHeader)), itsDecoder(FrameDecoder::New(theSyntax.GetUID(), itsImage)),
      itsFrames(std::make_unique<CompressedFrames>(thePixels, theSyntax.GetUID(), itsImage.itsFrames,
                                                   LongestFrame(itsImage))),
      itsFrame(std::make_unique_for_overwrite<unsigned char[]>(itsImage.GetFrameSize()))
{
   Decode();
   DescribeNative(theHeader, theSyntax);
}

Decompression::~Decompression() = default;

bool Decompression::NextFrame()
{
   if (itsIndex + 1 >= itsImage.itsFrames)
   {
      return false;
   }
   ++itsIndex;
   const bool wasRGB = itsIsRGB;
   Decode();
   if (itsIsRGB != wasRGB)
   {
      FailDecompression("frame " + std::to_string(itsIndex + 1) + " has other colours than the frames before it");
   }
   return true;
}

void Decompression::Decode()
{
   const RWCString aNumber =
       "frame " + std::to_string(itsIndex + 1) + " of " + std::to_string(itsImage.itsFrames) + ": ";
   try
   {
      const std::span<const unsigned char> aFrame = itsFrames->Next();
      if (aFrame.empty())
      {
         FailDecompression("it is missing");
      }
      itsIsRGB = itsDecoder->Decode(aFrame, {itsFrame.get(), itsImage.GetFrameSize()}) == FrameDecoder::Colours::RGB;
   }
   catch (const ExceptionBase& anException)
   {
      FailDecompression(aNumber + ErrorText(anException));
   }
}

void Decompression::DescribeNative(DICOMDataObject& theHeader, const TransferSyntaxType& theSyntax)
{
   if (itsIsRGB)
   {
      itsImage.itsPhotometric = "RGB";
   }
   else if (itsImage.itsPhotometric == "YBR_FULL_422") // every pixel has colours of its own now
   {
      itsImage.itsPhotometric = "YBR_FULL";
   }
   Put(theHeader, kPhotometricInterpretation, VRCode::CS, itsImage.itsPhotometric);
   if (itsImage.itsSamples > 1)
   {
      Put(theHeader, kPlanarConfiguration, VRCode::US, "0");
   }
   if (!theSyntax.IsLosslessCompressed() && TextOf(theHeader, kLossyImageCompression) != "01")
   {
      Put(theHeader, kLossyImageCompression, VRCode::CS, "01");
   }
   for (const UINT32 aTable : kOffsetTables)
   {
      Remove(theHeader, aTable);
   }
   DecompressNested(theHeader, theSyntax.GetUID());
}

std::unique_ptr<VR> Decompression::MakePixels(std::unique_ptr<Decompression> theDecompression,
                                              std::function<void(const RWCString&)> theTell)
{
   return std::make_unique<DecompressedPixels>(std::move(theDecompression), std::move(theTell));
}

#include "apps/tn/codec/NestedPixels.h"

#include <memory>
#include <vector>

#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/codec/FrameDecoder.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/pixel/PixelDataFragment.h"

namespace
{
constexpr UINT32 kPhotometricInterpretation = 0x00280004;
constexpr UINT32 kPlanarConfiguration = 0x00280006;
constexpr UINT32 kIconImageSequence = 0x00880200;
constexpr UINT32 kPixelData = 0x7FE00010;

std::vector<unsigned char> JoinFragments(const EncapsulatedPixelVR& thePixels)
{
   std::vector<unsigned char> aFrame;
   for (int aFragment = 1; aFragment <= thePixels.GetFragmentCount(); ++aFragment)
   {
      const PixelDataFragment& aPart = thePixels.GetFragment(aFragment);
      const unsigned char* const aData = aPart.CanGetData() ? aPart.GetData() : nullptr;
      if (aData == nullptr)
      {
         FailDecompression("the pixels of an item are not in memory");
      }
      aFrame.insert(aFrame.end(), aData, aData + aPart.GetLength());
   }
   return aFrame;
}

void DecompressItem(DICOMDataObject& theItem, const EncapsulatedPixelVR& thePixels, const RWCString& theSyntaxUID)
{
   const ImageDescription anImage = ImageDescription::Of(theItem);
   if (anImage.itsFrames != 1)
   {
      FailDecompression("the pixels of an item have several frames");
   }
   const std::vector<unsigned char> aFrame = JoinFragments(thePixels);
   const auto aSize = static_cast<UINT32>(anImage.GetFrameSize());
   auto aNative = std::make_unique<VR>(GroupOf(kPixelData), ElementOf(kPixelData), aSize, 1);
   aNative->SetTypeCode(anImage.itsBitsAllocated > 8 ? VRCode::OW : VRCode::OB);
   const FrameDecoder::Colours aColours =
       FrameDecoder::New(theSyntaxUID, anImage)->Decode(aFrame, {aNative->GetData(), aSize});
   const char* const aName = aColours == FrameDecoder::Colours::RGB     ? "RGB"
                             : anImage.itsPhotometric == "YBR_FULL_422" ? "YBR_FULL"
                                                                        : nullptr;
   if (aName != nullptr)
   {
      theItem.DICOMObject::Push(MakeElement(kPhotometricInterpretation, VRCode::CS, aName).release());
   }
   if (anImage.itsSamples > 1)
   {
      theItem.DICOMObject::Push(MakeElement(kPlanarConfiguration, VRCode::US, "0").release());
   }
   theItem.DICOMObject::Push(aNative.release());
}

void DecompressItems(const VR& theSequence, const RWCString& theSyntaxUID)
{
   for (DICOMDataObject* const anItem : ItemsOf(&theSequence))
   {
      VR* const aPixels = anItem->GetVR(GroupOf(kPixelData), ElementOf(kPixelData));
      if (aPixels != nullptr && aPixels->GetAsEncapsulatedPixelVR() != nullptr)
      {
         DecompressItem(*anItem, *aPixels->GetAsEncapsulatedPixelVR(), theSyntaxUID);
      }
      DecompressNested(*anItem, theSyntaxUID);
   }
}
} // namespace

void DecompressNested(DICOMDataObject& theObject, const RWCString& theSyntaxUID)
{
   bool isIconLost = false;
   DICOMObjectIterator aWalk(theObject, ExplicitNoGroupLength);
   for (const VR* aVR = aWalk.First(); aVR != nullptr; aVR = aWalk.Next())
   {
      try
      {
         DecompressItems(*aVR, theSyntaxUID);
      }
      catch (const StreamIOException&)
      {
         if (aVR->GetTag() != kIconImageSequence)
         {
            throw;
         }
         isIconLost = true;
      }
   }
   if (isIconLost)
   {
      const std::unique_ptr<VR> anIcon(theObject.RemoveVR(GroupOf(kIconImageSequence), ElementOf(kIconImageSequence)));
   }
}

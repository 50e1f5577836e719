#include "apps/tn/print/PrintImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/print/FrameSource.h"
#include "apps/tn/print/GreyPipeline.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"

namespace
{
constexpr UINT32 kSamplesPerPixel = 0x00280002;
constexpr UINT32 kPhotometricInterpretation = 0x00280004;
constexpr UINT32 kPlanarConfiguration = 0x00280006;
constexpr UINT32 kRows = 0x00280010;
constexpr UINT32 kColumns = 0x00280011;
constexpr UINT32 kPixelAspectRatio = 0x00280034;
constexpr UINT32 kBitsAllocated = 0x00280100;
constexpr UINT32 kBitsStored = 0x00280101;
constexpr UINT32 kHighBit = 0x00280102;
constexpr UINT32 kPixelRepresentation = 0x00280103;
constexpr UINT32 kPaletteDescriptors[] = {0x00281101, 0x00281102, 0x00281103};
constexpr UINT32 kPaletteData[] = {0x00281201, 0x00281202, 0x00281203};

using Colour = std::array<double, 3>; // red, green, blue, from 0 to 1
using Colours = std::function<Colour(std::size_t thePixel)>;

// PS3.3 C.7.6.3.1.5 and C.7.6.3.1.6
class Palette
{
public:
   explicit Palette(const FrameSource& theFrame)
   {
      for (unsigned int i = 0; i < 3; ++i)
      {
         TakeTable(theFrame, i);
      }
   }

   double At(INT32 theValue, unsigned int theColour) const
   {
      const std::vector<double>& aTable = itsTables[theColour];
      const INT64 aPlace = INT64{theValue} - itsFirst[theColour];
      return aTable[static_cast<std::size_t>(std::clamp<INT64>(aPlace, 0, static_cast<INT64>(aTable.size()) - 1))];
   }

private:
   void TakeTable(const FrameSource& theFrame, unsigned int theColour)
   {
      const VR* const aDescriptor = FindVR(theFrame.GetHeader(), kPaletteDescriptors[theColour]);
      const VR* const aData = FindVR(theFrame.GetHeader(), kPaletteData[theColour]);
      if (aDescriptor == nullptr || aData == nullptr || aDescriptor->GetLength() < 6 || aData->GetLength() < 2)
      {
         throw IncompleteDataset("its palette is missing");
      }
      const auto aWord = [](const VR& theVR, std::size_t theIndex) {
         return TNEndian::Load<UINT16>(theVR.GetData() + 2 * theIndex, theVR.GetDataEndian());
      };
      const std::size_t aCount = aWord(*aDescriptor, 0) == 0 ? 65536 : aWord(*aDescriptor, 0);
      const UINT16 aFirst = aWord(*aDescriptor, 1);
      itsFirst[theColour] = theFrame.GetImage().itsIsSigned ? static_cast<INT16>(aFirst) : aFirst;
      const bool isInBytes = aData->GetLength() < 2 * aCount; // two entries a word
      for (std::size_t i = 0; i < aCount && (isInBytes ? i : 2 * i + 1) < aData->GetLength(); ++i)
      {
         const unsigned int anEntry = isInBytes ? (aWord(*aData, i / 2) >> (8 * (i % 2))) & 0xFF : aWord(*aData, i);
         itsTables[theColour].push_back(anEntry);
      }
      const bool isWide = aWord(*aDescriptor, 2) == 16 && !isInBytes;
      for (double& anEntry : itsTables[theColour])
      {
         anEntry = std::min(anEntry / (isWide ? 65535.0 : 255.0), 1.0);
      }
   }

   std::array<std::vector<double>, 3> itsTables;
   std::array<INT32, 3> itsFirst{};
};

Colours ColoursOf(const FrameSource& theFrame)
{
   const ImageDescription& anImage = theFrame.GetImage();
   const double aMost = static_cast<double>((UINT64{1} << anImage.itsBitsStored) - 1);
   if (anImage.itsPhotometric == "PALETTE COLOR")
   {
      return [&theFrame, aPalette = Palette(theFrame)](std::size_t thePixel) {
         const INT32 aValue = theFrame.At(thePixel, 0);
         return Colour{aPalette.At(aValue, 0), aPalette.At(aValue, 1), aPalette.At(aValue, 2)};
      };
   }
   if (anImage.itsSamples == 3 && anImage.IsYBR()) // PS3.3 C.7.6.3.1.2
   {
      return [&theFrame, aMost](std::size_t thePixel) {
         const double aY = theFrame.At(thePixel, 0) / aMost;
         const double aBlue = theFrame.At(thePixel, 1) / aMost - 128.0 / 255;
         const double aRed = theFrame.At(thePixel, 2) / aMost - 128.0 / 255;
         return Colour{std::clamp(aY + 1.402 * aRed, 0.0, 1.0),
                       std::clamp(aY - 0.344136 * aBlue - 0.714136 * aRed, 0.0, 1.0),
                       std::clamp(aY + 1.772 * aBlue, 0.0, 1.0)};
      };
   }
   if (anImage.itsSamples == 3)
   {
      return [&theFrame, aMost](std::size_t thePixel) {
         return Colour{theFrame.At(thePixel, 0) / aMost, theFrame.At(thePixel, 1) / aMost,
                       theFrame.At(thePixel, 2) / aMost};
      };
   }
   return [&theFrame, aPipeline = GreyPipeline(theFrame)](std::size_t thePixel) {
      const double aLevel = aPipeline.LevelOf(theFrame.At(thePixel, 0));
      return Colour{aLevel, aLevel, aLevel};
   };
}

double LuminanceOf(const Colour& theColour)
{
   return 0.299 * theColour[0] + 0.587 * theColour[1] + 0.114 * theColour[2];
}

std::vector<unsigned char> MakePixels(const FrameSource& theFrame, const PrintImageForm& theForm)
{
   const Colours aColours = ColoursOf(theFrame);
   const ImageDescription& anImage = theFrame.GetImage();
   const unsigned int aBits = theForm.itsIsColour ? 8 : theForm.itsBits;
   const auto aLevel = [aMost = (1 << aBits) - 1](double theLevel) { return std::lround(theLevel * aMost); };
   std::vector<unsigned char> aPixels;
   const std::size_t aCount = std::size_t{anImage.itsRows} * anImage.itsColumns;
   aPixels.reserve(aCount * (theForm.itsIsColour ? 3 : aBits > 8 ? 2 : 1) + 1);
   for (std::size_t aPixel = 0; aPixel < aCount; ++aPixel)
   {
      const Colour aColour = aColours(aPixel);
      if (theForm.itsIsColour)
      {
         for (const double aPart : aColour)
         {
            aPixels.push_back(static_cast<unsigned char>(aLevel(aPart)));
         }
         continue;
      }
      const long aGrey = aLevel(LuminanceOf(aColour));
      aPixels.push_back(static_cast<unsigned char>(aGrey));
      if (aBits > 8)
      {
         aPixels.push_back(static_cast<unsigned char>(aGrey >> 8));
      }
   }
   if (aPixels.size() % 2 != 0)
   {
      aPixels.push_back(0);
   }
   return aPixels;
}
} // namespace

std::unique_ptr<DICOMDataObject> PreparePrintImage(const std::string& thePath, UINT32 theFrame,
                                                   const PrintImageForm& theForm)
{
   const FrameSource aFrame(thePath, theFrame);
   const unsigned int aBits = theForm.itsIsColour ? 8 : theForm.itsBits;
   auto anItem = std::make_unique<DICOMDataObject>();
   const auto aPut = [&](UINT32 theTag, UINT16 theType, const std::string& theText) {
      anItem->DICOMObject::Push(MakeElement(theTag, theType, theText).release());
   };
   aPut(kSamplesPerPixel, VRCode::US, theForm.itsIsColour ? "3" : "1");
   aPut(kPhotometricInterpretation, VRCode::CS, theForm.itsIsColour ? "RGB" : "MONOCHROME2");
   aPut(kRows, VRCode::US, std::to_string(aFrame.GetImage().itsRows));
   aPut(kColumns, VRCode::US, std::to_string(aFrame.GetImage().itsColumns));
   aPut(kBitsAllocated, VRCode::US, aBits > 8 ? "16" : "8");
   aPut(kBitsStored, VRCode::US, std::to_string(aBits));
   aPut(kHighBit, VRCode::US, std::to_string(aBits - 1));
   aPut(kPixelRepresentation, VRCode::US, "0");
   if (const std::string aRatio = TextOf(aFrame.GetHeader(), kPixelAspectRatio); !aRatio.empty())
   {
      aPut(kPixelAspectRatio, VRCode::IS, aRatio);
   }

   const std::vector<unsigned char> aPixels = MakePixels(aFrame, theForm);
   auto aVR = std::make_unique<VR>(UINT16{0x7FE0}, UINT16{0x0010});
   aVR->SetTypeCode(aBits > 8 ? VRCode::OW : VRCode::OB);
   if (theForm.itsIsColour)
   {
      aPut(kPlanarConfiguration, VRCode::US, "0");
   }
   aVR->SetData(aPixels.data(), static_cast<UINT32>(aPixels.size()), '\0');
   anItem->DICOMObject::Push(aVR.release());
   return anItem;
}

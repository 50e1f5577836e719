#include "apps/tn/print/FilmSheet.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string_view>

#include <png.h>

#include "apps/tn/base/Tags.h"
#include "apps/tn/print/PresentationLUT.h"
#include "apps/tn/print/PrintTags.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/print/AbstractFilmBox.h"

namespace
{
constexpr UINT32 kImages[] = {PrintTags::kGrayscaleImageSequence, PrintTags::kColorImageSequence};
constexpr UINT32 kPixelData = 0x7FE00010;

constexpr double kPixelsPerInch = 100;
constexpr double kGap = 6; // pixels round each image
constexpr double kCentimetresPerInch = 2.54;
constexpr double kLongest = 40; // inches; no film is longer

// Numbers in a text, whatever stands between them.
std::vector<double> NumbersIn(std::string_view theText)
{
   std::vector<double> aNumbers;
   while (!theText.empty())
   {
      double aNumber = 0;
      const auto [anEnd, anError] = std::from_chars(theText.data(), theText.data() + theText.size(), aNumber);
      const bool isNumber = anError == std::errc() && std::isfinite(aNumber) && aNumber > 0;
      if (isNumber)
      {
         aNumbers.push_back(aNumber);
      }
      theText.remove_prefix(std::max<std::size_t>(1, static_cast<std::size_t>(anEnd - theText.data())));
   }
   return aNumbers;
}

// The image of an image box, which the printer has checked: pixels are there, 8 or 16 bits each.
class Source
{
public:
   // theLUT is for gray images.
   Source(const DICOMDataObject& theImage, bool theIsReversed, const PresentationLUT& theLUT)
       : itsRows(theImage.GetUINT16(0x0028, 0x0010)), itsColumns(theImage.GetUINT16(0x0028, 0x0011)),
         itsSamples(theImage.GetUINT16(0x0028, 0x0002)), itsBytes(theImage.GetUINT16(0x0028, 0x0100) / 8u),
         itsMost((1u << theImage.GetUINT16(0x0028, 0x0101)) - 1), itsIsPlanar(theImage.GetUINT16(0x0028, 0x0006) == 1)
   {
      const VR* const aPixels = FindVR(theImage, kPixelData);
      itsPixels = aPixels->GetData();
      itsIsBigEndian = aPixels->GetDataEndian() == TNEndian::BigEndian && aPixels->GetTypeCode() == VRCode::OW;
      const bool isInverted = theIsReversed != (TextOf(theImage, 0x00280004) == "MONOCHROME1");
      for (unsigned int i = 0; i <= itsMost; ++i)
      {
         const double aLevel = (isInverted ? itsMost - i : i) / static_cast<double>(itsMost);
         const double aShown = itsSamples == 1 ? theLUT.At(aLevel) : aLevel;
         itsLevels.push_back(static_cast<unsigned char>(std::lround(255 * aShown)));
      }
   }

   UINT32 GetRows() const { return itsRows; }
   UINT32 GetColumns() const { return itsColumns; }

   using Color = std::array<unsigned char, 3>;
   Color At(UINT32 theRow, UINT32 theColumn) const
   {
      Color aColor{};
      for (unsigned int i = 0; i < 3; ++i)
      {
         aColor[i] = Sample(theRow, theColumn, itsSamples == 3 ? i : 0);
      }
      return aColor;
   }

private:
   unsigned char Sample(UINT32 theRow, UINT32 theColumn, unsigned int theSample) const
   {
      const std::size_t aPixel = std::size_t{theRow} * itsColumns + theColumn;
      const std::size_t aPlane = std::size_t{itsRows} * itsColumns;
      const std::size_t aPlace = itsIsPlanar ? theSample * aPlane + aPixel : aPixel * itsSamples + theSample;
      unsigned int aValue = 0;
      if (itsBytes == 1)
      {
         // Bytes in words (OW) that came in big endian stand the other way round (PS3.5 8.1.1).
         aValue = itsPixels[itsIsBigEndian ? aPlace ^ 1 : aPlace];
      }
      else
      {
         const unsigned char* const aWord = itsPixels + 2 * aPlace;
         aValue = itsIsBigEndian ? aWord[0] * 256u + aWord[1] : aWord[1] * 256u + aWord[0];
      }
      return itsLevels[aValue & itsMost];
   }

   UINT32 itsRows, itsColumns;
   unsigned int itsSamples, itsBytes;
   unsigned int itsMost; // the highest value that a sample can have
   bool itsIsPlanar;
   bool itsIsBigEndian = false;
   const unsigned char* itsPixels = nullptr;
   std::vector<unsigned char> itsLevels; // on the screen, by value
};

std::optional<Source> ImageOf(const AbstractFilmBox& theFilmBox, const AbstractImageBox& theBox)
{
   for (const UINT32 aTag : kImages)
   {
      const VR* const aVR = FindVR(theBox, aTag);
      const SequenceVR* const aSequence = aVR != nullptr ? aVR->GetAsSequenceVR() : nullptr;
      if (aSequence != nullptr && !aSequence->IsEmpty())
      {
         return Source(*aSequence->GetSequenceArray()->front(), TextOf(theBox, PrintTags::kPolarity) == "REVERSE",
                       PresentationLUT(theFilmBox, theBox));
      }
   }
   return std::nullopt;
}
} // namespace

FilmSheet::FilmSheet(const AbstractFilmBox& theFilmBox)
{
   SetSize(theFilmBox);
   const unsigned char anEmpty = TextOf(theFilmBox, PrintTags::kEmptyDensity) == "WHITE" ? 255 : 0;
   itsPixels.assign(std::size_t{3} * itsWidth * itsHeight, anEmpty);
   const std::vector<Place> aPlaces = FindPlaces(TextOf(theFilmBox, PrintTags::kDisplayFormat));
   std::size_t anOrdinal = 0;
   for (const auto& aBox : theFilmBox.GetImageBoxes())
   {
      UINT16 aPosition = 0;
      const bool isPlaced =
          aBox->GetUINT16(GroupOf(PrintTags::kImagePosition), ElementOf(PrintTags::kImagePosition), aPosition) &&
          aPosition > 0;
      const std::size_t aPlace = isPlaced ? aPosition - 1u : anOrdinal;
      ++anOrdinal;
      if (aPlace < aPlaces.size())
      {
         Draw(theFilmBox, *aBox, aPlaces[aPlace]);
      }
   }
}

// "14INX17IN", "24CMX30CM"; without one as the first.
void FilmSheet::SetSize(const AbstractFilmBox& theFilmBox)
{
   constexpr std::size_t kLongestText = 16; // of a CS (PS3.5 6.2)
   const RWCString aSize = TextOf(theFilmBox, PrintTags::kFilmSize).substr(0, kLongestText);
   const std::vector<double> aNumbers = NumbersIn(aSize);
   double aWidth = 14;
   double aHeight = 17;
   if (aNumbers.size() == 2)
   {
      const double aUnit = aSize.find("CM") != RWCString::npos ? kCentimetresPerInch : 1;
      aWidth = std::clamp(aNumbers[0] / aUnit, 1.0, kLongest);
      aHeight = std::clamp(aNumbers[1] / aUnit, 1.0, kLongest);
   }
   if (TextOf(theFilmBox, PrintTags::kFilmOrientation) == "LANDSCAPE")
   {
      std::swap(aWidth, aHeight);
   }
   itsWidth = static_cast<UINT32>(aWidth * kPixelsPerInch);
   itsHeight = static_cast<UINT32>(aHeight * kPixelsPerInch);
}

std::vector<FilmSheet::Place> FilmSheet::FindPlaces(const RWCString& theFormat) const
{
   // As rows of so many images each; the columns of COL are rows on the side.
   const std::vector<double> aNumbers = NumbersIn(theFormat.substr(std::min(theFormat.find('\\'), theFormat.size())));
   std::vector<double> aRows = {1};
   const bool isByColumns = theFormat.starts_with("COL");
   if (theFormat.starts_with("STANDARD") && aNumbers.size() == 2)
   {
      aRows.assign(static_cast<std::size_t>(aNumbers[1]), aNumbers[0]);
   }
   else if ((isByColumns || theFormat.starts_with("ROW")) && !aNumbers.empty())
   {
      aRows = aNumbers;
   }
   std::vector<Place> aPlaces;
   const double aDepth = (isByColumns ? itsWidth : itsHeight) / static_cast<double>(aRows.size());
   for (std::size_t i = 0; i < aRows.size(); ++i)
   {
      const double anExtent = (isByColumns ? itsHeight : itsWidth) / aRows[i];
      const double aFar = static_cast<double>(i) * aDepth;
      const auto aCount = static_cast<std::size_t>(aRows[i]);
      for (std::size_t j = 0; j < aCount; ++j)
      {
         const double aNear = static_cast<double>(j) * anExtent;
         aPlaces.push_back(isByColumns ? Place{aFar, aNear, aDepth, anExtent} : Place{aNear, aFar, anExtent, aDepth});
      }
   }
   return aPlaces;
}

void FilmSheet::Draw(const AbstractFilmBox& theFilmBox, const AbstractImageBox& theBox, const Place& thePlace)
{
   const std::optional<Source> anImage = ImageOf(theFilmBox, theBox);
   if (!anImage)
   {
      return;
   }
   const double aScale = std::min((thePlace.itsWidth - 2 * kGap) / anImage->GetColumns(),
                                  (thePlace.itsHeight - 2 * kGap) / anImage->GetRows());
   const double aWidth = anImage->GetColumns() * aScale;
   const double aHeight = anImage->GetRows() * aScale;
   if (aWidth < 1 || aHeight < 1)
   {
      return; // too many images for a picture of this size
   }
   const auto aLeft = static_cast<UINT32>(thePlace.itsLeft + (thePlace.itsWidth - aWidth) / 2);
   const auto aTop = static_cast<UINT32>(thePlace.itsTop + (thePlace.itsHeight - aHeight) / 2);
   for (UINT32 y = 0; y < static_cast<UINT32>(aHeight); ++y)
   {
      const UINT32 aRow = std::min(static_cast<UINT32>((y + 0.5) / aScale), anImage->GetRows() - 1);
      for (UINT32 x = 0; x < static_cast<UINT32>(aWidth); ++x)
      {
         const UINT32 aColumn = std::min(static_cast<UINT32>((x + 0.5) / aScale), anImage->GetColumns() - 1);
         const Source::Color aColor = anImage->At(aRow, aColumn);
         std::copy(aColor.begin(), aColor.end(), &itsPixels[3 * ((std::size_t{aTop} + y) * itsWidth + aLeft + x)]);
      }
   }
}

void FilmSheet::Write(const std::string& thePath) const
{
   png_image anImage{};
   anImage.version = PNG_IMAGE_VERSION;
   anImage.width = itsWidth;
   anImage.height = itsHeight;
   anImage.format = PNG_FORMAT_RGB;
   if (!png_image_write_to_file(&anImage, thePath.c_str(), 0, itsPixels.data(), 0, nullptr))
   {
      throw std::runtime_error(thePath + ": " + anImage.message);
   }
}

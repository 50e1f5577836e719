// What datasets know of lossy compression (PS3.3 C.7.6.1.1.5).
#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
constexpr double kLargestRatio = 2147483647.0;

bool IsDigit(char theCharacter)
{
   return theCharacter >= '0' && theCharacter <= '9';
}

std::string_view WithoutBlanks(std::string_view theText)
{
   theText.remove_prefix(std::min(theText.find_first_not_of(' '), theText.size()));
   theText.remove_suffix(theText.size() - (theText.find_last_not_of(' ') + 1));
   return theText;
}

// Digits with at most one point, above 0; in every locale.
std::optional<double> ParseRatio(std::string_view theText)
{
   if (theText.find_first_not_of(".0123456789") != std::string_view::npos)
   {
      return std::nullopt;
   }
   double aRatio = 0;
   const char* const anEnd = theText.data() + theText.size();
   const auto [aRest, anError] = std::from_chars(theText.data(), anEnd, aRatio, std::chars_format::fixed);
   return anError == std::errc() && aRest == anEnd && aRatio > 0 ? std::optional(aRatio) : std::nullopt;
}

// (0028,2112): the steps of compression multiply. Nothing where a value is no ratio.
std::optional<double> ProductOfSteps(std::string_view theValues)
{
   double aProduct = 1;
   for (size_t aStart = 0; aStart <= theValues.size();)
   {
      const size_t anEnd = std::min(theValues.find('\\', aStart), theValues.size());
      const std::optional<double> aStep = ParseRatio(WithoutBlanks(theValues.substr(aStart, anEnd - aStart)));
      if (!aStep)
      {
         return std::nullopt;
      }
      aProduct *= *aStep;
      aStart = anEnd + 1;
   }
   return aProduct;
}

bool IsDerived(std::string_view theImageType)
{
   constexpr std::string_view kDerived = "DERIVED\\";
   if (theImageType.size() < kDerived.size())
   {
      return false;
   }
   for (size_t i = 0; i < kDerived.size(); ++i)
   {
      const char aCharacter = theImageType[i];
      const bool isLower = aCharacter >= 'a' && aCharacter <= 'z';
      if ((isLower ? static_cast<char>(aCharacter - 'a' + 'A') : aCharacter) != kDerived[i])
      {
         return false;
      }
   }
   return true;
}

// The number before the ":1" at thePlace, which must end at a blank, at the end or at a bracket that opens right before
// the number.
std::optional<double> RatioBefore(std::string_view theText, size_t thePlace)
{
   size_t aStart = thePlace;
   while (aStart > 0 && (IsDigit(theText[aStart - 1]) || theText[aStart - 1] == '.'))
   {
      --aStart;
   }
   const size_t aNext = thePlace + 2;
   if (aNext < theText.size() && theText[aNext] != ' ')
   {
      constexpr std::string_view kClosing = ")]}";
      constexpr std::string_view kOpening = "([{";
      const size_t aKind = kClosing.find(theText[aNext]);
      if (aKind == std::string_view::npos || aStart == 0 || theText[aStart - 1] != kOpening[aKind])
      {
         return std::nullopt;
      }
   }
   return ParseRatio(theText.substr(aStart, thePlace - aStart));
}

// The first "n:1" in (0008,2111).
std::optional<double> DescribedRatio(std::string_view theDescription)
{
   constexpr std::string_view kToOne = ":1";
   for (size_t aPlace = theDescription.find(kToOne); aPlace != std::string_view::npos;
        aPlace = theDescription.find(kToOne, aPlace + 1))
   {
      if (const std::optional<double> aRatio = RatioBefore(theDescription, aPlace))
      {
         return aRatio;
      }
   }
   return std::nullopt;
}

// (0028,0008), an integer string. 1 where it is absent or no number above 0.
UINT32 NumberOfFrames(const DICOMDataObject& theObject)
{
   RWCString aText;
   theObject.GetString(0x0028, 0x0008, aText);
   const std::string_view aNumber = WithoutBlanks(aText);
   UINT32 aFrames = 0;
   const auto [aRest, anError] = std::from_chars(aNumber.data(), aNumber.data() + aNumber.size(), aFrames);
   return anError == std::errc() && aRest == aNumber.data() + aNumber.size() && aFrames != 0 ? aFrames : 1;
}

// The size of the pixels against the size of their compressed form, in bytes.
std::optional<double> MeasuredRatio(const DICOMDataObject& theObject, UINT32 theCompressedSize)
{
   constexpr UINT16 kFactors[] = {0x0010, 0x0011, 0x0002, 0x0100}; // rows, columns, samples per pixel, bits allocated
   double aBits = NumberOfFrames(theObject);
   for (const UINT16 anElement : kFactors)
   {
      UINT16 aFactor = 0;
      if (!theObject.GetUINT16(0x0028, anElement, aFactor))
      {
         return std::nullopt;
      }
      aBits *= aFactor;
   }
   return aBits / 8 / theCompressedSize;
}
} // namespace

int DICOMDataObject::GetLossyImageCompressionRatio(const TransferSyntaxType& theTransferSyntax, UINT32 theEnd,
                                                   UINT32 theStart) const
{
   const DICOMObjectLock aLock(*this);
   RWCString aText;
   if (!GetString(0x0028, 0x2110, aText) || (aText != "01" && aText != "1"))
   {
      return -1;
   }

   std::optional<double> aRatio;
   if (GetString(0x0028, 0x2112, aText))
   {
      aRatio = ProductOfSteps(aText);
   }
   const bool isKnown = aRatio >= 1.0;
   const bool isLossySyntax = theTransferSyntax.IsCompressed() && !theTransferSyntax.IsLosslessCompressed();
   RWCString aDescription;
   if (!isKnown && !isLossySyntax && GetString(0x0008, 0x0008, aText) && IsDerived(aText) &&
       GetString(0x0008, 0x2111, aDescription))
   {
      aRatio = DescribedRatio(aDescription);
   }
   if (!isKnown && isLossySyntax && theStart != 0 && theEnd > theStart)
   {
      aRatio = MeasuredRatio(*this, theEnd - theStart);
   }
   return aRatio >= 1.0 ? static_cast<int>(std::min(*aRatio, kLargestRatio)) : -1;
}

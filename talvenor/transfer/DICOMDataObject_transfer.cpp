// What datasets know of lossy compression (PS3.3 C.7.6.1.1.5).
#include "talvenor/dataset/DICOMDataObject.h"

#include <algorithm>
#include <charconv>
#include <forward_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
struct Attribute
{
   UINT16 itsGroup;
   UINT16 itsElement;
   UINT16 itsType;
};
constexpr Attribute kImageType = {0x0008, 0x0008, VRCode::CS};
constexpr Attribute kSOPClassUID = {0x0008, 0x0016, VRCode::UI};
constexpr Attribute kSOPInstanceUID = {0x0008, 0x0018, VRCode::UI};
constexpr Attribute kDerivationDescription = {0x0008, 0x2111, VRCode::ST};
constexpr Attribute kSourceImageSequence = {0x0008, 0x2112, VRCode::SQ};
constexpr Attribute kPhotometricInterpretation = {0x0028, 0x0004, VRCode::CS};
constexpr Attribute kNumberOfFrames = {0x0028, 0x0008, VRCode::IS};
constexpr Attribute kLossyCompression = {0x0028, 0x2110, VRCode::CS};
constexpr Attribute kLossyRatio = {0x0028, 0x2112, VRCode::DS};
constexpr Attribute kLossyMethod = {0x0028, 0x2114, VRCode::CS};

const char kPrivateCreator[] = "CORVAN0";

// Empty when the attribute is absent, too: the operations below do not tell the two apart.
RWCString TextOf(const DICOMDataObject& theObject, const Attribute& theAttribute)
{
   RWCString aText;
   theObject.GetString(theAttribute.itsGroup, theAttribute.itsElement, aText);
   return aText;
}

// Not left to the dictionary: a host may work without one.
std::unique_ptr<VR> MakeTextVR(const Attribute& theAttribute, std::string_view theText, TNEndian::EndianType theEndian)
{
   auto aVR = std::make_unique<VR>(theAttribute.itsGroup, theAttribute.itsElement, theEndian);
   aVR->SetTypeCode(theAttribute.itsType);
   aVR->SetData(theText.data(), static_cast<UINT32>(theText.size()), theAttribute.itsType == VRCode::UI ? '\0' : ' ');
   return aVR;
}

void Store(DICOMDataObject& theObject, const Attribute& theAttribute, std::string_view theText)
{
   theObject.ReplaceVR(MakeTextVR(theAttribute, theText, theObject.GetEndian()).release());
}

bool IsLossy(const TransferSyntaxType& theSyntax)
{
   return theSyntax.IsCompressed() && !theSyntax.IsLosslessCompressed();
}

bool IsMarkedLossy(std::string_view theLossyCompression)
{
   return theLossyCompression == "01" || theLossyCompression == "1";
}

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

// In letters of either case, as some peers write it.
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

// The place where the digits with at most one point that end before theEnd begin.
size_t StartOfNumber(std::string_view theText, size_t theEnd)
{
   size_t aStart = theEnd;
   for (bool hasPoint = false; aStart > 0; --aStart)
   {
      const char aCharacter = theText[aStart - 1];
      if (!IsDigit(aCharacter) && (aCharacter != '.' || hasPoint))
      {
         break;
      }
      hasPoint |= aCharacter == '.';
   }
   return aStart;
}

// The number before the ":1" at thePlace, which must end at a blank, at the end or at a bracket that opens right before
// the number.
std::optional<double> RatioBefore(std::string_view theText, size_t thePlace)
{
   const size_t aStart = StartOfNumber(theText, thePlace);
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
   const RWCString aText = TextOf(theObject, kNumberOfFrames);
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

// A ratio below 1 is unknown.
std::string RatioText(int theRatio, const char* theUnknown)
{
   return theRatio >= 1 ? std::to_string(theRatio) + ":1" : theUnknown;
}

// How the texts name a method of (0028,2114), PS3.3 C.7.6.1.1.5.1. The labels end with a blank where they are not
// empty.
struct LossyMethod
{
   const char* itsName;
   const char* itsLabel;
   const char* itsShortLabel;
};
constexpr LossyMethod kNamedMethods[] = {
    {"ISO_10918_1", "JPEG ", "JPEG "},
    {"ISO_15444_1", "JPEG 2000 ", "JP2K "},
};
constexpr LossyMethod kOtherMethod = {"", "", ""};

const LossyMethod& MethodOf(const TransferSyntaxType& theSyntax)
{
   const RWCString aName = theSyntax.GetLossyImageCompressionMethod();
   const auto aMethod = std::find_if(std::begin(kNamedMethods), std::end(kNamedMethods),
                                     [&](const LossyMethod& theMethod) { return aName == theMethod.itsName; });
   return aMethod != std::end(kNamedMethods) ? *aMethod : kOtherMethod;
}

std::string DescriptionOf(const LossyMethod& theMethod, int theRatio)
{
   return std::string("LOSSY ") + theMethod.itsLabel + "COMPRESSION " + RatioText(theRatio, "UNKNOWN RATIO");
}

// Fills what is empty; nothing that stands there is overwritten but a marker of another form than "01".
void MarkLossy(DICOMDataObject& theObject, const LossyMethod& theMethod, int theRatio)
{
   if (TextOf(theObject, kLossyCompression) != "01")
   {
      Store(theObject, kLossyCompression, "01");
   }
   if (*theMethod.itsName != '\0' && TextOf(theObject, kLossyMethod).empty())
   {
      Store(theObject, kLossyMethod, theMethod.itsName);
   }
   if (IsDerived(TextOf(theObject, kImageType)) && TextOf(theObject, kDerivationDescription).empty())
   {
      Store(theObject, kDerivationDescription, DescriptionOf(theMethod, theRatio));
   }
   if (theRatio >= 1 && TextOf(theObject, kLossyRatio).empty())
   {
      Store(theObject, kLossyRatio, std::to_string(theRatio));
   }
}

// (0008,0008) of an image derived from one of theImageType: DERIVED in place of the first value, and theMarker as the
// last one, which is never before the fourth.
std::string DerivedImageType(std::string_view theImageType, std::string_view theMarker)
{
   const size_t aSecond = theImageType.find('\\');
   const bool hasThird =
       aSecond != std::string_view::npos && theImageType.find('\\', aSecond + 1) != std::string_view::npos;
   std::string aDerived = "DERIVED";
   aDerived += aSecond != std::string_view::npos ? theImageType.substr(aSecond) : "\\PRIMARY";
   aDerived += hasThird ? "\\" : "\\\\";
   aDerived += theMarker;
   return aDerived;
}

// An item of (0008,2112) for the instance that was compressed; nothing without its two UIDs.
void AddSourceImage(DICOMDataObject& theObject)
{
   const RWCString aClass = TextOf(theObject, kSOPClassUID);
   RWCString anInstance;
   theObject.GetString(kPrivateCreator, "OrigSOPInstUID", anInstance);
   if (anInstance.empty())
   {
      anInstance = TextOf(theObject, kSOPInstanceUID);
   }
   if (aClass.empty() || anInstance.empty())
   {
      return;
   }

   const auto [aGroup, anElement, aType] = kSourceImageSequence;
   const VR* aSource = theObject.GetVR(aGroup, anElement);
   if (aSource != nullptr && (aSource->GetAsSequenceVR() == nullptr || aSource->GetTypeCode() != aType))
   {
      const std::unique_ptr<VR> aNoSequence(theObject.RemoveVR(aGroup, anElement));
   }
   auto aClassVR = MakeTextVR(kSOPClassUID, aClass, theObject.GetEndian());
   auto anInstanceVR = MakeTextVR(kSOPInstanceUID, anInstance, theObject.GetEndian());
   std::forward_list<VR*> anElements = {aClassVR.get(), anInstanceVR.get()};
   aClassVR.release();
   anInstanceVR.release();
   theObject.AddSequenceItem(aGroup, anElement, anElements);
}

// A private version marker above 1 keeps the photometric interpretation as it is; no marker counts as version 1.
bool NeedsYBR(const DICOMDataObject& theObject, const TransferSyntaxType& theSyntax)
{
   UINT16 aVersion = 1;
   theObject.GetUINT16(kPrivateCreator, "CORVANDemoFileVersion", aVersion);
   return aVersion <= 1 && theSyntax.GetUID() == TransferSyntaxType::TSJPEG50UID;
}
} // namespace

int DICOMDataObject::GetLossyImageCompressionRatio(const TransferSyntaxType& theTransferSyntax, UINT32 theEnd,
                                                   UINT32 theStart) const
{
   constexpr double kLargestRatio = 2147483647.0;
   const DICOMObjectLock aLock(*this);
   if (!IsMarkedLossy(TextOf(*this, kLossyCompression)))
   {
      return -1;
   }

   std::optional<double> aRatio = ProductOfSteps(TextOf(*this, kLossyRatio));
   const bool isKnown = aRatio >= 1.0;
   const bool isLossySyntax = IsLossy(theTransferSyntax);
   if (!isKnown && !isLossySyntax && IsDerived(TextOf(*this, kImageType)))
   {
      aRatio = DescribedRatio(TextOf(*this, kDerivationDescription));
   }
   if (!isKnown && isLossySyntax && theStart != 0 && theEnd > theStart)
   {
      aRatio = MeasuredRatio(*this, theEnd - theStart);
   }
   return aRatio >= 1.0 ? static_cast<int>(std::min(*aRatio, kLargestRatio)) : -1;
}

void DICOMDataObject::UpdateOutgoingLossyCompressionRelatedAttributes(const TransferSyntaxType& theTargetSyntax,
                                                                      int theRatio, bool theAdjustPhotometric)
{
   const DICOMObjectLock aLock(*this);
   if (IsLossy(theTargetSyntax) || IsMarkedLossy(TextOf(*this, kLossyCompression)))
   {
      MarkLossy(*this, MethodOf(theTargetSyntax), theRatio);
   }
   if (theAdjustPhotometric && NeedsYBR(*this, theTargetSyntax))
   {
      Store(*this, kPhotometricInterpretation, "YBR_FULL_422");
   }
}

void DICOMDataObject::UpdateIncomingLossyCompressionRelatedAttributes(const TransferSyntaxType& theTransferSyntax,
                                                                      bool theDerive, int theRatio)
{
   const DICOMObjectLock aLock(*this);
   if (!theDerive || !IsLossy(theTransferSyntax))
   {
      UpdateOutgoingLossyCompressionRelatedAttributes(theTransferSyntax, theRatio, false);
      return;
   }
   if (!TextOf(*this, kLossyMethod).empty())
   {
      return; // derived already
   }

   const LossyMethod& aMethod = MethodOf(theTransferSyntax);
   if (*aMethod.itsName != '\0')
   {
      Store(*this, kLossyMethod, aMethod.itsName);
   }
   const std::string aMarker = aMethod.itsShortLabel + ("LOSSY " + RatioText(theRatio, "?:1"));
   Store(*this, kImageType, DerivedImageType(TextOf(*this, kImageType), aMarker));
   Store(*this, kDerivationDescription, DescriptionOf(aMethod, theRatio) + " (CORVAN)");
   AddSourceImage(*this);
}

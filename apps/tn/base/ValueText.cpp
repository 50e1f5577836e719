#include "apps/tn/base/ValueText.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "apps/tn/base/Tags.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/io/TNEndian.h"

namespace
{
constexpr UINT16 kEncodedTypes[] = {VRCode::LO, VRCode::LT, VRCode::PN,          VRCode::SH,
                                    VRCode::ST, VRCode::UT, MakeVRCode('U', 'C')};

constexpr std::size_t kLongestValue = 32768; // that encoders take with a 16-bit length

template <class Number>
std::string NumbersText(const VR& theVR)
{
   std::string aText;
   for (UINT32 anOffset = 0; anOffset + sizeof(Number) <= theVR.GetLength(); anOffset += sizeof(Number))
   {
      aText += anOffset == 0 ? "" : "\\";
      aText += std::to_string(TNEndian::Load<Number>(theVR.GetData() + anOffset, theVR.GetDataEndian()));
   }
   return aText;
}

template <class Number>
std::string NumbersOf(const std::string& theText)
{
   std::string aBytes;
   const char* const anEnd = theText.data() + theText.size();
   for (const char* aPlace = theText.data(); aPlace < anEnd; ++aPlace)
   {
      Number aNumber = 0;
      const auto aResult = std::from_chars(aPlace, anEnd, aNumber);
      if (aResult.ec == std::errc())
      {
         char aValue[sizeof(Number)];
         TNEndian::Store(aValue, aNumber, TNEndian::LittleEndian);
         aBytes.append(aValue, sizeof aValue);
      }
      aPlace = std::find(aResult.ptr, anEnd, '\\');
   }
   return aBytes;
}
} // namespace

CharacterSet CharacterSetOf(const DICOMObject& theDataset)
{
   constexpr UINT32 kSpecificCharacterSet = 0x00080005;
   return CharacterSet(TextOf(theDataset, kSpecificCharacterSet));
}

std::string ValueText(const VR& theVR)
{
   if (theVR.GetData() == nullptr)
   {
      return "";
   }
   switch (theVR.GetTypeCode())
   {
   case VRCode::US: return NumbersText<UINT16>(theVR);
   case VRCode::UL: return NumbersText<UINT32>(theVR);
   default: break;
   }
   std::string aText(reinterpret_cast<const char*>(theVR.GetData()), theVR.GetLength());
   aText.erase(aText.find_last_not_of(std::string_view(" \0", 2)) + 1);
   return aText;
}

std::string ValueText(const VR& theVR, const CharacterSet& theCharacterSet)
{
   std::string aText = ValueText(theVR);
   return IsEncodedType(theVR.GetTypeCode()) ? theCharacterSet.ToUTF8(aText, theVR.GetTypeCode() == VRCode::PN) : aText;
}

bool IsEncodedType(UINT16 theType)
{
   return std::find(std::begin(kEncodedTypes), std::end(kEncodedTypes), theType) != std::end(kEncodedTypes);
}

std::unique_ptr<VR> MakeElement(UINT32 theTag, UINT16 theType, const std::string& theText)
{
   auto aVR = std::make_unique<VR>(GroupOf(theTag), ElementOf(theTag));
   aVR->SetTypeCode(theType);
   const std::string aValue = theType == VRCode::US   ? NumbersOf<UINT16>(theText)
                              : theType == VRCode::UL ? NumbersOf<UINT32>(theText)
                                                      : theText;
   if (!aValue.empty() && (aValue.size() <= kLongestValue || HasLongHeaderVRCode(theType)))
   {
      aVR->SetData(aValue.data(), static_cast<UINT32>(aValue.size()), theType == VRCode::UI ? '\0' : ' ');
   }
   return aVR;
}

std::vector<DICOMDataObject*> ItemsOf(const VR* theVR)
{
   std::vector<DICOMDataObject*> anItems;
   const SequenceVR* const aSequence = theVR == nullptr ? nullptr : theVR->GetAsSequenceVR();
   if (aSequence != nullptr && aSequence->GetSequenceArray() != nullptr)
   {
      std::copy_if(aSequence->GetSequenceArray()->begin(), aSequence->GetSequenceArray()->end(),
                   std::back_inserter(anItems), [](const DICOMDataObject* theItem) { return theItem != nullptr; });
   }
   return anItems;
}

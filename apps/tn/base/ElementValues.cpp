#include "apps/tn/base/ElementValues.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "apps/tn/base/CharacterSet.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"

namespace
{
// Texts in which a backslash is one (PS3.5 6.2).
constexpr UINT16 kSingleTexts[] = {VRCode::LT, VRCode::ST, VRCode::UT};

std::string WithoutBlanks(const std::string& theText)
{
   const std::size_t aStart = theText.find_first_not_of(' ');
   const std::size_t anEnd = theText.find_last_not_of(' ');
   return aStart == std::string::npos ? "" : theText.substr(aStart, anEnd + 1 - aStart);
}

// Control characters that no text has (PS3.5 6.1.3), of C1 in UTF-8 too: a terminal would obey them.
std::string WithoutControls(const std::string& theText)
{
   constexpr std::string_view kAllowed = "\t\n\f\r";
   constexpr char kReplacement[] = "\xEF\xBF\xBD";
   std::string aText;
   for (std::size_t i = 0; i < theText.size(); ++i)
   {
      const auto aByte = static_cast<unsigned char>(theText[i]);
      const auto aNext = static_cast<unsigned char>(i + 1 < theText.size() ? theText[i + 1] : 0);
      const bool isC1 = aByte == 0xC2 && aNext >= 0x80 && aNext < 0xA0;
      const bool isC0 = (aByte < 0x20 && kAllowed.find(theText[i]) == std::string_view::npos) || aByte == 0x7F;
      aText += isC1 || isC0 ? kReplacement : std::string(1, theText[i]);
      i += isC1 ? 1 : 0;
   }
   return aText;
}

std::vector<std::string> Texts(const VR& theVR, const CharacterSet& theCharacterSet)
{
   const std::string aText = WithoutControls(ValueText(theVR, theCharacterSet));
   if (std::find(std::begin(kSingleTexts), std::end(kSingleTexts), theVR.GetTypeCode()) != std::end(kSingleTexts))
   {
      return {aText};
   }
   std::vector<std::string> aValues;
   for (std::size_t aStart = 0; aStart <= aText.size();)
   {
      const std::size_t anEnd = std::min(aText.find('\\', aStart), aText.size());
      aValues.push_back(WithoutBlanks(aText.substr(aStart, anEnd - aStart)));
      aStart = anEnd + 1;
   }
   return aValues;
}

template <class Number>
std::vector<std::string> Numbers(const VR& theVR)
{
   std::vector<std::string> aValues;
   for (UINT32 i = 0; i + sizeof(Number) <= theVR.GetLength(); i += sizeof(Number))
   {
      const Number aNumber = TNEndian::Load<Number>(theVR.GetData() + i, theVR.GetDataEndian());
      char aText[32];
      aValues.emplace_back(aText, std::to_chars(aText, aText + sizeof aText, aNumber).ptr);
   }
   return aValues;
}

std::vector<std::string> TagTexts(const VR& theVR)
{
   std::vector<std::string> aValues;
   for (UINT32 i = 0; i + 4 <= theVR.GetLength(); i += 4)
   {
      const auto aHalf = [&](UINT32 theOffset) {
         return UINT32{TNEndian::Load<UINT16>(theVR.GetData() + i + theOffset, theVR.GetDataEndian())};
      };
      aValues.push_back(TagText(aHalf(0) << 16 | aHalf(2)));
   }
   return aValues;
}
} // namespace

std::vector<std::string> ValuesOf(const VR& theVR, const CharacterSet& theCharacterSet)
{
   if (theVR.GetData() == nullptr || theVR.GetLength() == 0)
   {
      return {};
   }
   switch (theVR.GetTypeCode())
   {
   case VRCode::US: return Numbers<UINT16>(theVR);
   case VRCode::SS: return Numbers<INT16>(theVR);
   case VRCode::UL: return Numbers<UINT32>(theVR);
   case VRCode::SL: return Numbers<INT32>(theVR);
   case VRCode::FL: return Numbers<FLOAT>(theVR);
   case VRCode::FD: return Numbers<DOUBLE>(theVR);
   case VRCode::AT: return TagTexts(theVR);
   case VRCode::OB:
   case VRCode::OF:
   case VRCode::OW: return {};
   default: return Texts(theVR, theCharacterSet);
   }
}

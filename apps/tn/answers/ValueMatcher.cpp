#include "apps/tn/answers/ValueMatcher.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <clocale>
#include <cstddef>
#include <cwctype>
#include <optional>

#include "talvenor/dictionary/VRType.h"

namespace
{
constexpr UINT16 kWildCardTypes[] = {VRCode::AE, VRCode::CS, VRCode::LO, VRCode::LT,           VRCode::PN,
                                     VRCode::SH, VRCode::ST, VRCode::UT, MakeVRCode('U', 'C'), MakeVRCode('U', 'R')};
constexpr UINT16 kLongTextTypes[] = {VRCode::LT, VRCode::ST, VRCode::UT, MakeVRCode('U', 'R')};
constexpr UINT16 kMomentTypes[] = {VRCode::DA, VRCode::TM, VRCode::DT};
constexpr UINT16 kNumberTypes[] = {VRCode::DS, VRCode::IS};

template <class Table>
bool Has(const Table& theTable, UINT16 theType)
{
   return std::find(std::begin(theTable), std::end(theTable), theType) != std::end(theTable);
}

// The parts of theText between theDelimiter; one, which is empty, of an empty text.
std::vector<std::string_view> Split(std::string_view theText, char theDelimiter)
{
   std::vector<std::string_view> aParts;
   for (;;)
   {
      const std::size_t anEnd = theText.find(theDelimiter);
      aParts.push_back(theText.substr(0, anEnd));
      if (anEnd == std::string_view::npos)
      {
         return aParts;
      }
      theText.remove_prefix(anEnd + 1);
   }
}

// In long text a backslash is a character as any other (PS3.5 6.2).
std::vector<std::string_view> SplitValues(UINT16 theType, std::string_view theText)
{
   return Has(kLongTextTypes, theType) ? std::vector{theText} : Split(theText, '\\');
}

std::string_view Trim(std::string_view theText, const char* theWhat = " ")
{
   const std::size_t aBegin = theText.find_first_not_of(theWhat);
   return aBegin == std::string_view::npos ? std::string_view()
                                           : theText.substr(aBegin, theText.find_last_not_of(theWhat) + 1 - aBegin);
}

// Where the next character of UTF-8 begins; a byte that begins none stands for itself.
std::size_t NextCharacter(std::string_view theText, std::size_t theIndex)
{
   ++theIndex;
   while (theIndex < theText.size() && (static_cast<unsigned char>(theText[theIndex]) & 0xC0) == 0x80)
   {
      ++theIndex;
   }
   return theIndex;
}

// Goes back to the last "*" only, which is enough: the time is the product of the lengths at most.
bool MatchesPattern(std::string_view thePattern, std::string_view theText)
{
   std::size_t aPlace = 0;
   std::size_t anIndex = 0;
   std::size_t aStar = std::string_view::npos;
   std::size_t aStarIndex = 0;
   while (anIndex < theText.size())
   {
      if (aPlace < thePattern.size() && thePattern[aPlace] == '*')
      {
         aStar = aPlace++;
         aStarIndex = anIndex;
      }
      else if (aPlace < thePattern.size() && thePattern[aPlace] == '?')
      {
         ++aPlace;
         anIndex = NextCharacter(theText, anIndex);
      }
      else if (aPlace < thePattern.size() && thePattern[aPlace] == theText[anIndex])
      {
         ++aPlace;
         ++anIndex;
      }
      else if (aStar != std::string_view::npos)
      {
         aPlace = aStar + 1;
         aStarIndex = NextCharacter(theText, aStarIndex);
         anIndex = aStarIndex;
      }
      else
      {
         return false;
      }
   }
   return thePattern.find_first_not_of('*', aPlace) == std::string_view::npos;
}

// The component groups (PS3.5 6.2): one that is empty in the key matches all. A key of one group may match any.
bool MatchesName(std::string_view theKey, std::string_view theName)
{
   const std::vector<std::string_view> aNames = Split(theName, '=');
   const std::vector<std::string_view> aKeys = Split(theKey, '=');
   if (aKeys.size() == 1)
   {
      return std::any_of(aNames.begin(), aNames.end(),
                         [&](std::string_view theGroup) { return MatchesPattern(theKey, theGroup); });
   }
   for (std::size_t anIndex = 0; anIndex < aKeys.size(); ++anIndex)
   {
      const std::string_view aGroup = anIndex < aNames.size() ? aNames[anIndex] : std::string_view();
      if (!aKeys[anIndex].empty() && !MatchesPattern(aKeys[anIndex], aGroup))
      {
         return false;
      }
   }
   return true;
}

// The text of a date and time without its offset from UTC (PS3.5 6.2), which is 14 hours at most.
std::string_view WithoutOffset(UINT16 theType, std::string_view theText)
{
   constexpr std::size_t kOffset = 5;
   constexpr std::size_t kYear = 4;
   if (theType == VRCode::DT && theText.size() >= kOffset + kYear)
   {
      const std::string_view anOffset = theText.substr(theText.size() - kOffset);
      if ((anOffset[0] == '+' || anOffset[0] == '-') && anOffset.substr(1, 2) <= "14")
      {
         theText.remove_suffix(kOffset);
      }
   }
   return theText;
}

// Dates and times to full length, so that they compare as text: what is missing is filled up with the first or the last
// that it can be. Nothing for what is no date or time. An offset from UTC is not looked at.
std::optional<std::string> FillMoment(UINT16 theType, std::string_view theText, bool theIsLast)
{
   theText = WithoutOffset(theType, theText);
   const char* const aModel = theType == VRCode::TM ? (theIsLast ? "235959999999" : "000000000000")
                                                    : (theIsLast ? "99991231235959999999" : "00000101000000000000");
   const std::size_t aFullLength = theType == VRCode::TM ? 12 : theType == VRCode::DA ? 8 : 20;
   const std::size_t aFraction = aFullLength - 6; // where a "." may stand
   std::string aDigits;
   for (const char aCharacter : theText)
   {
      const bool isOldDelimiter =
          (theType == VRCode::DA && aCharacter == '.') || (theType == VRCode::TM && aCharacter == ':'); // of ACR-NEMA
      if (std::isdigit(static_cast<unsigned char>(aCharacter)) != 0)
      {
         aDigits += aCharacter;
      }
      else if (!isOldDelimiter && !(aCharacter == '.' && theType != VRCode::DA && aDigits.size() == aFraction))
      {
         return std::nullopt;
      }
   }
   const std::size_t aShortest = theType == VRCode::DA ? aFullLength : theType == VRCode::TM ? 2 : 4;
   if (aDigits.size() < aShortest || aDigits.size() > aFullLength ||
       (aDigits.size() < aFraction && aDigits.size() % 2 != 0))
   {
      return std::nullopt;
   }
   return aDigits.append(aModel + aDigits.size(), aFullLength - aDigits.size());
}

// An end of a range: one that is not given comes before, or behind, all digits.
std::optional<std::string> FillEnd(UINT16 theType, std::string_view theText, bool theIsLast)
{
   theText = Trim(theText);
   return theText.empty() ? theIsLast ? ":" : "" : FillMoment(theType, theText, theIsLast);
}

std::optional<double> ToNumber(std::string_view theText)
{
   theText = Trim(theText);
   if (!theText.empty() && theText.front() == '+')
   {
      theText.remove_prefix(1);
   }
   double aNumber = 0;
   const auto aResult = std::from_chars(theText.data(), theText.data() + theText.size(), aNumber);
   return aResult.ec == std::errc() && aResult.ptr == theText.data() + theText.size() ? std::optional(aNumber)
                                                                                      : std::nullopt;
}

bool IsASCII(std::string_view theText)
{
   return std::none_of(theText.begin(), theText.end(),
                       [](char theByte) { return (static_cast<unsigned char>(theByte) & 0x80) != 0; });
}

// Lower case of the characters of two bytes, which are those of the alphabets that have cases (Latin, Greek, Cyrillic,
// Armenian).
std::string ToLower(std::string_view theText)
{
   std::string aResult(theText);
   std::transform(aResult.begin(), aResult.end(), aResult.begin(), [](char theByte) {
      return theByte >= 'A' && theByte <= 'Z' ? static_cast<char>(theByte + 32) : theByte;
   });
   if (IsASCII(aResult))
   {
      return aResult;
   }
   static const locale_t aLocale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
   for (std::size_t anIndex = 0; aLocale != nullptr && anIndex + 1 < aResult.size(); ++anIndex)
   {
      const unsigned int aFirst = static_cast<unsigned char>(aResult[anIndex]);
      const unsigned int aSecond = static_cast<unsigned char>(aResult[anIndex + 1]);
      if ((aFirst & 0xE0) == 0xC0 && (aSecond & 0xC0) == 0x80)
      {
         const wint_t aLower = ::towlower_l((aFirst & 0x1F) << 6 | (aSecond & 0x3F), aLocale);
         if (aLower >= 0x80 && aLower < 0x800)
         {
            aResult[anIndex] = static_cast<char>(0xC0 | aLower >> 6);
            aResult[anIndex + 1] = static_cast<char>(0x80 | (aLower & 0x3F));
         }
         ++anIndex;
      }
   }
   return aResult;
}
} // namespace

ValueMatcher::ValueMatcher(UINT16 theType, const std::string& theKey)
    : itsType(theType), itsKind(KindOf(theType, theKey))
{
   if (theKey.find_first_not_of("* ") == std::string::npos)
   {
      return; // also where wild cards mean nothing: many ask for "*" there
   }
   for (const std::string_view aText : SplitValues(theType, theKey))
   {
      itsKeys.push_back(MakeKey(std::string(Trim(aText))));
   }
}

ValueMatcher::Kind ValueMatcher::KindOf(UINT16 theType, const std::string& theKey)
{
   if (theType == VRCode::PN)
   {
      return Kind::Name;
   }
   if (Has(kMomentTypes, theType))
   {
      return Kind::Moment;
   }
   if (Has(kNumberTypes, theType))
   {
      return Kind::Number;
   }
   return Has(kWildCardTypes, theType) && theKey.find_first_of("*?") != std::string::npos ? Kind::Pattern : Kind::Exact;
}

ValueMatcher::Key ValueMatcher::MakeKey(const std::string& theText) const
{
   if (itsKind == Kind::Name)
   {
      return {FoldName(theText), ""};
   }
   if (itsKind != Kind::Moment)
   {
      return {theText, ""};
   }
   if (const auto aSingle = FillMoment(itsType, theText, false))
   {
      return {*aSingle, *aSingle};
   }
   // A hyphen may also begin an offset from UTC: the first that leaves two moments is taken.
   for (std::size_t aHyphen = theText.find('-'); aHyphen != std::string::npos; aHyphen = theText.find('-', aHyphen + 1))
   {
      const std::string_view aText = theText;
      const auto aFirst = FillEnd(itsType, aText.substr(0, aHyphen), false);
      const auto aLast = FillEnd(itsType, aText.substr(aHyphen + 1), true);
      if (aFirst && aLast && aText.size() > 1)
      {
         return {*aFirst, *aLast};
      }
   }
   throw BadKey("\"" + theText + "\" is neither a " + (itsType == VRCode::TM ? "time" : "date") +
                " nor a range of them");
}

bool ValueMatcher::Matches(std::string_view theValues) const
{
   if (IsUniversal())
   {
      return true;
   }
   for (const std::string_view aValue : SplitValues(itsType, theValues))
   {
      if (std::any_of(itsKeys.begin(), itsKeys.end(), [&](const Key& theKey) { return Matches(theKey, Trim(aValue)); }))
      {
         return true;
      }
   }
   return false;
}

bool ValueMatcher::Matches(const Key& theKey, std::string_view theValue) const
{
   switch (itsKind)
   {
   case Kind::Exact: return theValue == theKey.itsText;
   case Kind::Pattern: return MatchesPattern(theKey.itsText, theValue);
   case Kind::Name: return MatchesName(theKey.itsText, FoldName(theValue));
   case Kind::Number: {
      const std::optional<double> aNumber = ToNumber(theValue);
      return theValue == theKey.itsText || (aNumber && aNumber == ToNumber(theKey.itsText));
   }
   case Kind::Moment: {
      const std::optional<std::string> aMoment = FillMoment(itsType, theValue, false);
      return aMoment && theKey.itsText <= *aMoment && *aMoment <= theKey.itsLast;
   }
   }
   return false;
}

std::vector<std::string> ValueMatcher::GetExactValues() const
{
   std::vector<std::string> aValues;
   if (itsKind == Kind::Exact)
   {
      std::transform(itsKeys.begin(), itsKeys.end(), std::back_inserter(aValues),
                     [](const Key& theKey) { return theKey.itsText; });
   }
   return aValues;
}

std::string ValueMatcher::FoldName(std::string_view theName)
{
   std::string aResult;
   for (const std::string_view aGroup : Split(theName, '='))
   {
      aResult += aResult.empty() && aGroup.data() == theName.data() ? "" : "=";
      std::string aFolded;
      for (const std::string_view aComponent : Split(aGroup, '^'))
      {
         aFolded += ToLower(Trim(aComponent)) + "^";
      }
      aFolded.resize(aFolded.find_last_not_of("^ ") + 1);
      aResult += aFolded;
   }
   aResult.resize(aResult.find_last_not_of('=') + 1);
   return aResult;
}

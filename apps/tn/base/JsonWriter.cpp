#include "apps/tn/base/JsonWriter.h"

#include <iomanip>
#include <string_view>

namespace
{
// The length of the UTF-8 character at the start of theText, 0 when there is none: too long forms, surrogates and
// numbers above U+10FFFF are none (RFC 3629).
std::size_t CharacterLength(std::string_view theText)
{
   const auto aByte = [&](std::size_t i) { return static_cast<unsigned char>(theText[i]); };
   const unsigned char aFirst = aByte(0);
   const std::size_t aLength = aFirst < 0x80                      ? 1
                               : aFirst >= 0xC2 && aFirst < 0xE0  ? 2
                               : aFirst >= 0xE0 && aFirst < 0xF0  ? 3
                               : aFirst >= 0xF0 && aFirst <= 0xF4 ? 4
                                                                  : 0;
   if (aLength == 0 || aLength > theText.size())
   {
      return 0;
   }
   for (std::size_t i = 1; i < aLength; ++i)
   {
      if ((aByte(i) & 0xC0) != 0x80)
      {
         return 0;
      }
   }
   const bool isForbidden = (aFirst == 0xE0 && aByte(1) < 0xA0) || (aFirst == 0xED && aByte(1) >= 0xA0) ||
                            (aFirst == 0xF0 && aByte(1) < 0x90) || (aFirst == 0xF4 && aByte(1) >= 0x90);
   return isForbidden ? 0 : aLength;
}
} // namespace

void JsonWriter::Text(const std::string& theName, const std::string& theText)
{
   Name(theName);
   Quoted(theText);
}

void JsonWriter::Number(const std::string& theName, double theNumber)
{
   Name(theName);
   itsOutput << std::fixed << std::setprecision(3) << theNumber << std::defaultfloat;
}

void JsonWriter::Name(const std::string& theName)
{
   itsOutput << (itsIsFirst ? "" : ",");
   itsIsFirst = false;
   if (!theName.empty())
   {
      Quoted(theName);
      itsOutput << ':';
   }
}

void JsonWriter::Quoted(const std::string& theText)
{
   constexpr char kDigits[] = "0123456789abcdef";
   itsOutput << '"';
   for (std::string_view aRest = theText; !aRest.empty();)
   {
      const std::size_t aLength = CharacterLength(aRest);
      const auto aByte = static_cast<unsigned char>(aRest.front());
      if (aLength == 0)
      {
         itsOutput << "\xEF\xBF\xBD";
      }
      else if (aByte < 0x20 || aByte == 0x7F)
      {
         itsOutput << "\\u00" << kDigits[aByte >> 4] << kDigits[aByte & 15];
      }
      else
      {
         itsOutput << (aByte == '"' || aByte == '\\' ? "\\" : "") << aRest.substr(0, aLength);
      }
      aRest.remove_prefix(aLength == 0 ? 1 : aLength);
   }
   itsOutput << '"';
}

void JsonWriter::Begin(const std::string& theName, char theBracket)
{
   Name(theName);
   itsOutput << theBracket;
   itsIsFirst = true;
}

void JsonWriter::End(char theBracket)
{
   itsOutput << theBracket;
   itsIsFirst = false;
}

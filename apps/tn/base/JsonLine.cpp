#include "apps/tn/base/JsonLine.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace
{
constexpr unsigned int kMaximumDepth = 64;

class JsonReader
{
public:
   explicit JsonReader(const std::string& theText) : itsText(theText) {}

   std::map<std::string, std::string> ReadObject()
   {
      std::map<std::string, std::string> aTexts;
      Expect('{');
      if (!Takes('}'))
      {
         do
         {
            const std::string aName = ReadText();
            Expect(':');
            if (Next() == '"')
            {
               aTexts[aName] = ReadText();
            }
            else
            {
               SkipValue(1);
            }
         } while (Takes(','));
         Expect('}');
      }
      if (Next() != '\0')
      {
         Fail();
      }
      return aTexts;
   }

private:
   [[noreturn]] void Fail() const
   {
      throw std::invalid_argument("no JSON object at character " + std::to_string(itsPosition + 1));
   }

   // The next character that is no blank; NUL at the end.
   char Next()
   {
      itsPosition = std::min(itsText.find_first_not_of(" \t\r\n", itsPosition), itsText.size());
      return itsPosition < itsText.size() ? itsText[itsPosition] : '\0';
   }
   bool Takes(char theCharacter)
   {
      const bool isThere = Next() == theCharacter;
      itsPosition += isThere ? 1 : 0;
      return isThere;
   }
   void Expect(char theCharacter)
   {
      if (!Takes(theCharacter))
      {
         Fail();
      }
   }

   std::string ReadText()
   {
      Expect('"');
      std::string aText;
      while (itsPosition < itsText.size() && itsText[itsPosition] != '"')
      {
         const char aCharacter = itsText[itsPosition++];
         aText += aCharacter == '\\' ? ReadEscaped() : std::string(1, aCharacter);
      }
      Expect('"');
      return aText;
   }

   // Behind a backslash. UIDs are ASCII: other characters that are written by number are not told apart.
   std::string ReadEscaped()
   {
      const char aKind = itsPosition < itsText.size() ? itsText[itsPosition++] : '\0';
      switch (aKind)
      {
      case '"':
      case '\\':
      case '/': return std::string(1, aKind);
      case 'b':
      case 'f':
      case 'n':
      case 'r':
      case 't': return " ";
      case 'u': return ReadNumbered();
      default: Fail();
      }
   }
   std::string ReadNumbered()
   {
      constexpr std::size_t kDigits = 4;
      unsigned int aNumber = 0;
      const char* const aStart = itsText.data() + itsPosition;
      const char* const anEnd = aStart + std::min(kDigits, itsText.size() - itsPosition);
      const auto [aRest, anError] = std::from_chars(aStart, anEnd, aNumber, 16);
      if (anError != std::errc() || aRest != aStart + kDigits)
      {
         Fail();
      }
      itsPosition += kDigits;
      return aNumber < 0x80 ? std::string(1, static_cast<char>(aNumber)) : "?";
   }

   void SkipValue(unsigned int theDepth)
   {
      if (theDepth > kMaximumDepth)
      {
         Fail();
      }
      switch (Next())
      {
      case '"': ReadText(); break;
      case '[': SkipMembers('[', ']', theDepth); break;
      case '{': SkipMembers('{', '}', theDepth); break;
      default: SkipWord();
      }
   }
   void SkipMembers(char theOpening, char theClosing, unsigned int theDepth)
   {
      Expect(theOpening);
      if (Takes(theClosing))
      {
         return;
      }
      do
      {
         if (theOpening == '{')
         {
            ReadText();
            Expect(':');
         }
         SkipValue(theDepth + 1);
      } while (Takes(','));
      Expect(theClosing);
   }
   // A number, true, false or null.
   void SkipWord()
   {
      const std::size_t anEnd = std::min(itsText.find_first_of(" \t\r\n,]}", itsPosition), itsText.size());
      if (anEnd == itsPosition)
      {
         Fail();
      }
      itsPosition = anEnd;
   }

   const std::string& itsText;
   std::size_t itsPosition = 0;
};
} // namespace

std::map<std::string, std::string> ReadJsonLine(const std::string& theLine)
{
   return JsonReader(theLine).ReadObject();
}

#include "apps/tn/help/HelpFormatter.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace
{
constexpr std::size_t kWidth = 72; // of the column of descriptions; the one before has 30

struct TypeRow
{
   const char* itsType; // CLI11's
   const char* itsText;
};
constexpr TypeRow kTypes[] = {
    {"TEXT", "TEXT"}, {"INT", "N"}, {"UINT", "N"}, {"FLOAT", "N"}, {"ENUM", "TEXT"},
};

std::string Choices(const std::string& theList)
{
   std::string aText;
   std::istringstream aStream(theList);
   for (std::string aChoice; std::getline(aStream, aChoice, ',');)
   {
      aText += (aText.empty() ? "" : "|") + aChoice.substr(0, aChoice.find("->"));
   }
   return aText;
}

// What stands between the first theBegin and the next theEnd; empty when there are none.
std::string Between(const std::string& theText, char theBegin, char theEnd)
{
   const std::size_t aBegin = theText.find(theBegin);
   const std::size_t anEnd = theText.find(theEnd, aBegin == std::string::npos ? 0 : aBegin);
   return aBegin == std::string::npos || anEnd == std::string::npos ? ""
                                                                    : theText.substr(aBegin + 1, anEnd - aBegin - 1);
}
} // namespace

std::string HelpFormatter::SimplifyType(const std::string& theType)
{
   if (const std::string aList = Between(theType, '{', '}'); !aList.empty())
   {
      return Choices(aList);
   }
   const std::size_t aColon = theType.find(':');
   const std::string aName = theType.substr(0, aColon);
   const std::string aCheck = aColon == std::string::npos ? "" : theType.substr(aColon + 1);
   const auto aRow = std::find_if(std::begin(kTypes), std::end(kTypes),
                                  [&](const TypeRow& theRow) { return aName == theRow.itsType; });
   if (aRow == std::end(kTypes))
   {
      return aName;
   }
   if (aCheck == "FILE" || aCheck == "DIR")
   {
      return aCheck;
   }
   std::string aRange = Between(aCheck, '[', ']');
   aRange.erase(std::remove(aRange.begin(), aRange.end(), ' '), aRange.end());
   return aRange.empty() ? aRow->itsText : aRange;
}

std::string HelpFormatter::make_option_opts(const CLI::Option* theOption) const
{
   std::string aText = CLI::Formatter::make_option_opts(theOption);
   const std::string aType = theOption->get_type_name();
   if (const std::size_t aPlace = aText.find(aType); !aType.empty() && aPlace != std::string::npos)
   {
      aText.replace(aPlace, aType.size(), SimplifyType(aType));
   }
   return aText;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* theOption) const
{
   std::istringstream aWords(theOption->get_description());
   std::string aText;
   std::size_t aColumn = 0;
   for (std::string aWord; aWords >> aWord; aColumn += aWord.size())
   {
      if (aColumn != 0)
      {
         const bool isFull = aColumn + 1 + aWord.size() > kWidth;
         aText += isFull ? '\n' : ' ';
         aColumn = isFull ? 0 : aColumn + 1;
      }
      aText += aWord;
   }
   return aText;
}

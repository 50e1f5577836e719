#include "talvenor/print/ImageDisplayFormat.h"

#include <charconv>
#include <vector>

namespace
{
// Decimal numbers between commas, none of them 0 or above theMost; empty when there is anything else.
std::vector<unsigned int> ParseNumbers(std::string_view theText, unsigned int theMost)
{
   std::vector<unsigned int> aNumbers;
   while (true)
   {
      const std::size_t aComma = theText.find(',');
      const std::string_view aText = theText.substr(0, aComma);
      unsigned int aNumber = 0;
      const auto [anEnd, anError] = std::from_chars(aText.data(), aText.data() + aText.size(), aNumber);
      if (anError != std::errc() || anEnd != aText.data() + aText.size() || aNumber == 0 || aNumber > theMost ||
          aNumbers.size() == theMost)
      {
         return {};
      }
      aNumbers.push_back(aNumber);
      if (aComma == std::string_view::npos)
      {
         return aNumbers;
      }
      theText.remove_prefix(aComma + 1);
   }
}

// Columns and rows, each bounded already.
unsigned int CountStandard(const std::vector<unsigned int>& theNumbers)
{
   return theNumbers.size() == 2 ? theNumbers[0] * theNumbers[1] : 0;
}

// The boxes of each row, or of each column.
unsigned int CountEach(const std::vector<unsigned int>& theNumbers)
{
   unsigned int aSum = 0;
   for (const unsigned int aNumber : theNumbers)
   {
      aSum += aNumber;
   }
   return aSum;
}

// A layout of the printer's own, by number: how many boxes it has is not known here.
unsigned int CountCustom(const std::vector<unsigned int>& theNumbers)
{
   return theNumbers.size() == 1 ? 1 : 0;
}

struct Format
{
   std::string_view itsPrefix;
   unsigned int (*itsCount)(const std::vector<unsigned int>& theNumbers); // null: exactly the prefix, one box
};

constexpr Format kFormats[] = {
    {"STANDARD\\", CountStandard}, {"ROW\\", CountEach}, {"COL\\", CountEach},
    {"CUSTOM\\", CountCustom},     {"SLIDE", nullptr},   {"SUPERSLIDE", nullptr},
};
} // namespace

unsigned int CountImageBoxes(std::string_view theText, unsigned int theMost)
{
   for (const Format& aFormat : kFormats)
   {
      if (!theText.starts_with(aFormat.itsPrefix))
      {
         continue;
      }
      const std::string_view aRest = theText.substr(aFormat.itsPrefix.size());
      if (aFormat.itsCount == nullptr)
      {
         return aRest.empty() ? 1 : 0;
      }
      const unsigned int aCount = aFormat.itsCount(ParseNumbers(aRest, theMost));
      return aCount <= theMost ? aCount : 0;
   }
   return 0;
}

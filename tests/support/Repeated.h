// A text many times in a row.
#pragma once

#include <string>
#include <string_view>

inline std::string Repeated(std::string_view theText, std::size_t theCount)
{
   std::string aResult;
   while (theCount-- != 0)
   {
      aResult += theText;
   }
   return aResult;
}

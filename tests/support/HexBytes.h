// Bytes written as in a hex dump: FromHex("FFD8 FFE0 0004").
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

inline std::vector<unsigned char> FromHex(std::string_view theText)
{
   std::string aDigits(theText);
   std::erase(aDigits, ' ');
   if (aDigits.size() % 2 != 0)
   {
      throw std::invalid_argument("half a byte in " + aDigits);
   }
   std::vector<unsigned char> aBytes;
   for (std::size_t i = 0; i < aDigits.size(); i += 2)
   {
      aBytes.push_back(static_cast<unsigned char>(std::stoul(aDigits.substr(i, 2), nullptr, 16)));
   }
   return aBytes;
}

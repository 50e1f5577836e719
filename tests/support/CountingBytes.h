// Bytes that tell where they stand: 1, 2, 3 and so on, from 0 again behind 255.
#pragma once

#include <numeric>
#include <vector>

inline std::vector<unsigned char> CountingBytes(std::size_t theCount, unsigned char theFirst = 1)
{
   std::vector<unsigned char> aBytes(theCount);
   std::iota(aBytes.begin(), aBytes.end(), theFirst);
   return aBytes;
}

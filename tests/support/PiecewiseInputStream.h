// Bytes in memory that arrive in pieces of a given size, as from a network: it cannot seek, and counts its reads.
#pragma once

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "talvenor/io/InputStream.h"

class PiecewiseInputStream : public InputStream
{
public:
   explicit PiecewiseInputStream(std::vector<unsigned char> theBytes, unsigned int thePieceSize = 0xFFFFFFFF)
       : itsBytes(std::move(theBytes)), itsPieceSize(thePieceSize)
   {}

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      ++itsReads;
      const auto aRest = static_cast<unsigned int>(itsBytes.size() - itsPosition);
      const unsigned int aCount = std::min({theCount, itsPieceSize, aRest});
      std::copy_n(itsBytes.begin() + static_cast<std::ptrdiff_t>(itsPosition), aCount, theBuffer);
      itsPosition += aCount;
      return aCount;
   }
   void Close() override { itsClosed = true; }

   unsigned int Reads() const { return itsReads; }
   std::size_t Consumed() const { return itsPosition; }
   bool IsClosed() const { return itsClosed; }

private:
   std::vector<unsigned char> itsBytes;
   unsigned int itsPieceSize;
   std::size_t itsPosition = 0;
   unsigned int itsReads = 0;
   bool itsClosed = false;
};

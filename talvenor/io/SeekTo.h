// Seeking by 64-bit sums in streams whose positions have 32 bits. Not part of the library's interface.
#pragma once

#include <algorithm>

#include "talvenor/io/InputStream.h"

// What is beyond the last position of 32 bits is skipped, as far as one Skip goes.
inline void SeekTo(InputStream& theStream, UINT64 thePosition)
{
   constexpr UINT64 kLastPosition = 0xFFFFFFFF;
   theStream.Seek(static_cast<unsigned int>(std::min(thePosition, kLastPosition)));
   if (thePosition > kLastPosition)
   {
      theStream.Skip(static_cast<unsigned int>(std::min(thePosition - kLastPosition, kLastPosition)));
   }
}

// Reads element headers and says exactly where one was cut short. Not part of the library's interface.
#pragma once

#include "talvenor/io/InputStream.h"
#include "talvenor/io/TNEndian.h"
#include "talvenor/transfer/ElementHeader.h"

// The element at which a decoder stops; the two comparisons are independent of each other.
struct StopLimit
{
   UINT16 itsGroup; // 0 for no limit
   UINT16 itsElement;

   bool IsSet() const { return itsGroup != 0; }
   bool IsReached(const ElementHeader& theHeader) const
   {
      return IsSet() && theHeader.itsGroup >= itsGroup && theHeader.itsElement >= itsElement;
   }
};

enum class HeaderEnd
{
   Whole,
   EndOfStream, // before the first byte
   AtStopLimit  // the tag (implicit VR: and the length) has been taken from the stream
};

// Both throw StreamIOException when the stream ends inside the header.
HeaderEnd ReadExplicitHeader(InputStream& theStream, TNEndian::EndianType theEndian, StopLimit theLimit,
                             ElementHeader& theHeader);
HeaderEnd ReadImplicitHeader(InputStream& theStream, TNEndian::EndianType theEndian, StopLimit theLimit,
                             ElementHeader& theHeader);

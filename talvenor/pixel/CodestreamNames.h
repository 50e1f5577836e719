// The names of what compressed images consist of. Not part of the library's interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

namespace CodestreamNames
{

// A run of codes that share a description. A run of several is numbered ("APP0", "APP1", ...) from itsFirstNumber on.
struct Row
{
   UINT32 itsFirst;
   UINT32 itsLast;
   const char* itsName; // empty for what is only described
   int itsFirstNumber;
   const char* itsDescription;
};

// A box of a JP2 file; its name is its type, four characters.
struct BoxRow
{
   UINT32 itsType;
   bool itsHasBoxes;
   const char* itsDescription;
};

// Null for what is not known.
const Row* FindJPEGMarker(UINT32 theMarker);
const Row* FindJPEG2000Marker(UINT32 theMarker);
const BoxRow* FindBox(UINT32 theType);

// The name of theCode, whose row was found (or not); hexadecimal, "0xBF", when it has none.
RWCString NameOf(const Row* theRow, UINT32 theCode);
RWCString DescriptionOf(const Row* theRow);

// The four characters without trailing blanks; hexadecimal when they cannot be printed.
RWCString BoxName(UINT32 theType);

// "0x" and upper case digits, an even number of them.
RWCString Hexadecimal(UINT32 theNumber);

} // namespace CodestreamNames

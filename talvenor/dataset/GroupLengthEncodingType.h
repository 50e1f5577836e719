// How encoders walk a dataset: which headers the lengths are computed for, and where the iterator puts group length
// elements (gggg,0000). Groups 0000, 0001 and 0002 always get theirs.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

enum GroupLengthEncodingType
{
   ImplicitWithGroupLength = 0, // a group length for every group
   ExplicitWithGroupLength = 1,
   ImplicitNoGroupLength = 2,
   ExplicitNoGroupLength = 3
};

// Whether lengths are those of implicit VR headers (PS3.5 7.1.3).
constexpr bool IsImplicit(GroupLengthEncodingType theType)
{
   return theType == ImplicitWithGroupLength || theType == ImplicitNoGroupLength;
}

// Whether the group gets a group length element.
constexpr bool HasGroupLength(GroupLengthEncodingType theType, UINT16 theGroup)
{
   return theGroup <= 0x0002 || theType == ImplicitWithGroupLength || theType == ExplicitWithGroupLength;
}

// How encoders walk a dataset: which headers the lengths are computed for, and where the iterator puts group length
// elements (gggg,0000). Groups 0000, 0001 and 0002 always get theirs.
#pragma once

enum GroupLengthEncodingType
{
   ImplicitWithGroupLength = 0,   // a group length for every group
   ExplicitWithGroupLength = 1,
   ImplicitNoGroupLength = 2,
   ExplicitNoGroupLength = 3
};

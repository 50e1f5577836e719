// The Image Display Format (2010,0010) of a film box: how many image boxes the film has (PS3.3 C.13.3). Not part of the
// library's interface.
#pragma once

#include <string_view>

// 0 when theText is no format of the standard, or has more than theMost boxes.
unsigned int CountImageBoxes(std::string_view theText, unsigned int theMost);

// The values of elements as texts in UTF-8 for people, one by one.
#pragma once

#include <string>
#include <vector>

class CharacterSet;
class VR;

// One text for each value; none where there is no value, and for sequences and bulk data. Numbers are in decimal. What
// a terminal would obey is replaced.
std::vector<std::string> ValuesOf(const VR& theVR, const CharacterSet& theCharacterSet);

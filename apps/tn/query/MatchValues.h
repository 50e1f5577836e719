// The values of a dataset that a peer has answered with, as texts in UTF-8.
#pragma once

#include <string>
#include <vector>

#include "apps/tn/base/CharacterSet.h"

class DICOMDataObject;
class DICOMObject;
class VR;

// What the dataset says in Specific Character Set.
CharacterSet CharacterSetOf(const DICOMObject& theDataset);

// One text for each value; none where there is no value, and for sequences and bulk data. Numbers are in decimal.
std::vector<std::string> ValuesOf(const VR& theVR, const CharacterSet& theCharacterSet);

// The items of a sequence, lent; none for anything else.
std::vector<const DICOMDataObject*> ItemsOf(const VR& theVR);

// The values of elements as text, and back: numbers in decimal, several of them with "\" between them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/tn/base/CharacterSet.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;
class DICOMObject;
class VR;

// What the dataset says in Specific Character Set (0008,0005).
CharacterSet CharacterSetOf(const DICOMObject& theDataset);

// As it came, but for the padding at its end.
std::string ValueText(const VR& theVR);

// In UTF-8.
std::string ValueText(const VR& theVR, const CharacterSet& theCharacterSet);

// Whether the text of the representation depends on the character set (PS3.5 6.1.2.2).
bool IsEncodedType(UINT16 theType);

// The element of the type with the text, which is in its character set. Numbers that are none are left out; without a
// value when the text is longer than the type can be.
std::unique_ptr<VR> MakeElement(UINT32 theTag, UINT16 theType, const std::string& theText);

// The items of a sequence, lent; null ones left out. None for null and for what is no sequence.
std::vector<DICOMDataObject*> ItemsOf(const VR* theVR);

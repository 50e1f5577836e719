// The elements of a dataset as members of a JSON object, for tn dump and tn find: named by keyword, or (gggg,eeee)
// where the dictionary has none for just this tag, so that no name comes twice. A value is a text in UTF-8, several are
// an array, sequences are arrays of objects; of bulk data the representation and the length are told. Group lengths are
// left out, and Specific Character Set, which is that of the texts no more.
#pragma once

class CharacterSet;
class DICOMObject;
class JsonWriter;

void WriteJsonElements(JsonWriter& theJson, const DICOMObject& theObject, const CharacterSet& theCharacterSet);

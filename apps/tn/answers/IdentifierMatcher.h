// Matches datasets with the identifier of a query (PS3.4 C.2.2), sequences included, and makes what they are answered
// with. The text of both is compared in UTF-8, whatever their character sets.
//
// What is matched is decided when it is made: one matcher serves many datasets, of any thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/tn/answers/ValueMatcher.h"
#include "talvenor/foundation/BasicTypes.h"

class CharacterSet;
class DICOMDataObject;
class DICOMObject;
class VR;

class IdentifierMatcher
{
public:
   // Throws ValueMatcher::BadKey, whose text names the attribute.
   explicit IdentifierMatcher(const DICOMDataObject& theIdentifier);
   ~IdentifierMatcher();

   bool Matches(const DICOMObject& theDataset) const;

   // The attributes of the identifier with the values of theDataset, without a value where it has none, and its
   // character set. Of a sequence with keys in its item the items that match.
   std::unique_ptr<DICOMDataObject> MakeAnswer(const DICOMObject& theDataset) const;

private:
   // An attribute of the identifier. One that is a sequence has the keys of its item, if there are any.
   struct Key
   {
      UINT32 itsTag;
      UINT16 itsType;
      std::optional<ValueMatcher> itsValue;
      std::unique_ptr<IdentifierMatcher> itsItem;
   };

   IdentifierMatcher(const DICOMObject& theKeys, const CharacterSet& theCharacterSet);
   static Key MakeKey(const VR& theVR, const CharacterSet& theCharacterSet);
   bool Matches(const DICOMObject& theDataset, const CharacterSet& theCharacterSet) const;
   bool IsUniversal() const;
   std::unique_ptr<DICOMDataObject> MakeAnswer(const DICOMObject& theDataset,
                                               const CharacterSet& theCharacterSet) const;
   static std::unique_ptr<VR> MakeSequence(const Key& theKey, const VR* theStored, const CharacterSet& theCharacterSet);

   std::vector<Key> itsKeys;
};

#include "apps/tn/base/JsonElements.h"

#include <algorithm>
#include <iterator>

#include "apps/tn/base/ElementValues.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/VRType.h"

namespace
{
constexpr UINT32 kSpecificCharacterSet = 0x00080005;
constexpr UINT16 kBulkTypes[] = {VRCode::OB,           VRCode::OW,           VRCode::OF, MakeVRCode('O', 'D'),
                                 MakeVRCode('O', 'L'), MakeVRCode('O', 'V'), VRCode::UN};

// A dictionary entry for a range of groups has one name for all of them.
std::string NameOf(UINT32 theTag)
{
   const MDDEntry* const anEntry =
       MDataDictionary::GetDefaultDataDictionary().Find(MAttributeTag(GroupOf(theTag), ElementOf(theTag)));
   const bool isOfThis = anEntry != nullptr && anEntry->GetTag() == theTag && !anEntry->Name().empty();
   return isOfThis ? anEntry->Name() : TagText(theTag);
}

void WriteItems(JsonWriter& theJson, const std::string& theName, const VR& theSequence,
                const CharacterSet& theCharacterSet)
{
   theJson.BeginArray(theName);
   for (const DICOMDataObject* const anItem : ItemsOf(&theSequence))
   {
      theJson.BeginObject();
      WriteJsonElements(theJson, *anItem, theCharacterSet);
      theJson.EndObject();
   }
   theJson.EndArray();
}

void WriteBulk(JsonWriter& theJson, const std::string& theName, const VR& theVR)
{
   theJson.BeginObject(theName);
   theJson.Text("vr", theVR.GetTypeCodeAsString());
   theJson.Number("length", theVR.GetLength());
   theJson.EndObject();
}

void WriteValues(JsonWriter& theJson, const std::string& theName, const std::vector<std::string>& theValues)
{
   if (theValues.size() <= 1)
   {
      theJson.Text(theName, theValues.empty() ? "" : theValues.front());
      return;
   }
   theJson.BeginArray(theName);
   for (const std::string& aValue : theValues)
   {
      theJson.Text("", aValue);
   }
   theJson.EndArray();
}
} // namespace

void WriteJsonElements(JsonWriter& theJson, const DICOMObject& theObject, const CharacterSet& theCharacterSet)
{
   DICOMObjectIterator aWalk(theObject, ExplicitNoGroupLength);
   while (const VR* const aVR = aWalk.Next())
   {
      const std::string aName = NameOf(aVR->GetTag());
      if (aVR->GetTag() == kSpecificCharacterSet || aVR->GetElement() == 0)
      {
         continue;
      }
      if (aVR->GetAsSequenceVR() != nullptr)
      {
         WriteItems(theJson, aName, *aVR, theCharacterSet);
      }
      else if (std::find(std::begin(kBulkTypes), std::end(kBulkTypes), aVR->GetTypeCode()) != std::end(kBulkTypes))
      {
         WriteBulk(theJson, aName, *aVR);
      }
      else
      {
         WriteValues(theJson, aName, ValuesOf(*aVR, theCharacterSet));
      }
   }
}

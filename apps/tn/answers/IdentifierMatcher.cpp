#include "apps/tn/answers/IdentifierMatcher.h"

#include <algorithm>

#include "apps/tn/base/CharacterSet.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"

namespace
{
constexpr UINT32 kSpecificCharacterSet = 0x00080005;

} // namespace

IdentifierMatcher::IdentifierMatcher(const DICOMDataObject& theIdentifier)
    : IdentifierMatcher(theIdentifier, CharacterSetOf(theIdentifier))
{}

IdentifierMatcher::IdentifierMatcher(const DICOMObject& theKeys, const CharacterSet& theCharacterSet)
{
   DICOMObjectIterator anIterator(theKeys, ExplicitNoGroupLength);
   for (const VR* aVR = anIterator.First(); aVR != nullptr; aVR = anIterator.Next())
   {
      if (aVR->GetTag() != kSpecificCharacterSet)
      {
         itsKeys.push_back(MakeKey(*aVR, theCharacterSet));
      }
   }
}

IdentifierMatcher::~IdentifierMatcher() = default;

IdentifierMatcher::Key IdentifierMatcher::MakeKey(const VR& theVR, const CharacterSet& theCharacterSet)
{
   Key aKey{theVR.GetTag(), theVR.GetTypeCode(), std::nullopt, nullptr};
   if (theVR.GetAsSequenceVR() != nullptr)
   {
      // One item (PS3.4 C.2.2.2.6).
      if (const auto anItems = ItemsOf(&theVR); !anItems.empty() && !anItems.front()->IsEmpty())
      {
         aKey.itsItem.reset(new IdentifierMatcher(*anItems.front(), theCharacterSet));
      }
      return aKey;
   }
   try
   {
      aKey.itsValue.emplace(aKey.itsType, ValueText(theVR, theCharacterSet));
   }
   catch (const ValueMatcher::BadKey& aFault)
   {
      throw ValueMatcher::BadKey(TagText(aKey.itsTag) + ": " + aFault.what());
   }
   return aKey;
}

bool IdentifierMatcher::Matches(const DICOMObject& theDataset) const
{
   return Matches(theDataset, CharacterSetOf(theDataset));
}

bool IdentifierMatcher::Matches(const DICOMObject& theDataset, const CharacterSet& theCharacterSet) const
{
   return std::all_of(itsKeys.begin(), itsKeys.end(), [&](const Key& theKey) {
      const VR* const aVR = FindVR(theDataset, theKey.itsTag);
      if (theKey.itsValue)
      {
         return theKey.itsValue->IsUniversal() ||
                theKey.itsValue->Matches(aVR == nullptr ? "" : ValueText(*aVR, theCharacterSet));
      }
      if (theKey.itsItem == nullptr || theKey.itsItem->IsUniversal())
      {
         return true;
      }
      const auto anItems = ItemsOf(aVR);
      return std::any_of(anItems.begin(), anItems.end(), [&](const DICOMDataObject* theItem) {
         return theKey.itsItem->Matches(*theItem, theCharacterSet);
      });
   });
}

bool IdentifierMatcher::IsUniversal() const
{
   return std::all_of(itsKeys.begin(), itsKeys.end(), [](const Key& theKey) {
      return theKey.itsValue ? theKey.itsValue->IsUniversal()
                             : theKey.itsItem == nullptr || theKey.itsItem->IsUniversal();
   });
}

std::unique_ptr<DICOMDataObject> IdentifierMatcher::MakeAnswer(const DICOMObject& theDataset) const
{
   auto anAnswer = MakeAnswer(theDataset, CharacterSetOf(theDataset));
   if (const VR* const aCharacterSet = FindVR(theDataset, kSpecificCharacterSet))
   {
      anAnswer->Push(aCharacterSet->Copy());
   }
   return anAnswer;
}

std::unique_ptr<DICOMDataObject> IdentifierMatcher::MakeAnswer(const DICOMObject& theDataset,
                                                               const CharacterSet& theCharacterSet) const
{
   auto anAnswer = std::make_unique<DICOMDataObject>(theDataset.GetEndian());
   for (const Key& aKey : itsKeys)
   {
      const VR* const aStored = FindVR(theDataset, aKey.itsTag);
      std::unique_ptr<VR> aVR;
      if (aKey.itsType == VRCode::SQ)
      {
         aVR = MakeSequence(aKey, aStored, theCharacterSet);
      }
      else if (aStored != nullptr)
      {
         aVR.reset(aStored->Copy());
      }
      else
      {
         aVR = std::make_unique<VR>(GroupOf(aKey.itsTag), ElementOf(aKey.itsTag), theDataset.GetEndian());
         aVR->SetTypeCode(aKey.itsType);
      }
      anAnswer->Push(aVR.release());
   }
   return anAnswer;
}

std::unique_ptr<VR> IdentifierMatcher::MakeSequence(const Key& theKey, const VR* theStored,
                                                    const CharacterSet& theCharacterSet)
{
   if (theKey.itsItem == nullptr && theStored != nullptr)
   {
      return std::unique_ptr<VR>(theStored->Copy());
   }
   auto aSequence = std::make_unique<SequenceVR>(GroupOf(theKey.itsTag), ElementOf(theKey.itsTag));
   for (const DICOMDataObject* const anItem : ItemsOf(theStored))
   {
      if (theKey.itsItem->Matches(*anItem, theCharacterSet))
      {
         aSequence->AddSequenceItem(theKey.itsItem->MakeAnswer(*anItem, theCharacterSet).release());
      }
   }
   return aSequence;
}

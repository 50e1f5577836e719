#include "apps/tn/query/QueryKeys.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <memory>
#include <stdexcept>

#include "apps/tn/base/Tags.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/VRType.h"

namespace
{
constexpr UINT32 kSpecificCharacterSet = 0x00080005;
constexpr UINT32 kQueryRetrieveLevel = 0x00080052;
constexpr char kUTF8[] = "ISO_IR 192";       // PS3.3 C.12.1.1.2
constexpr std::size_t kLongestValue = 32768; // as the encoders have it

struct Attribute
{
   UINT32 itsTag;
   UINT16 itsType;
};

[[noreturn]] void Refuse(const std::string& theText)
{
   throw std::invalid_argument(theText);
}

std::string InLowerCase(std::string theText)
{
   std::transform(theText.begin(), theText.end(), theText.begin(),
                  [](unsigned char theLetter) { return static_cast<char>(std::tolower(theLetter)); });
   return theText;
}

// What the user may have meant: the same letters in another case, or a beginning.
std::string SuggestionFor(const std::string& theKeyword)
{
   const std::string aWanted = InLowerCase(theKeyword);
   std::string aBest;
   MDataDictionary::GetDefaultDataDictionary().ForEach([&](const MDDEntry& theEntry) {
      const std::string aName = InLowerCase(theEntry.Name());
      const bool isNear = aWanted.size() > 3 && aName.compare(0, aWanted.size(), aWanted) == 0;
      if (isNear && (aBest.empty() || theEntry.Name().size() < aBest.size()))
      {
         aBest = theEntry.Name();
      }
   });
   return aBest.empty() ? "" : "; is it " + aBest + "?";
}

// "(gggg,eeee)"
bool ParseTag(const std::string& theText, UINT32& theTag)
{
   constexpr std::size_t kSize = 11;
   if (theText.size() != kSize || theText[0] != '(' || theText[5] != ',' || theText[10] != ')')
   {
      return false;
   }
   const std::string aDigits = theText.substr(1, 4) + theText.substr(6, 4);
   const auto [anEnd, anError] = std::from_chars(aDigits.data(), aDigits.data() + aDigits.size(), theTag, 16);
   return anError == std::errc() && anEnd == aDigits.data() + aDigits.size();
}

Attribute FindAttribute(const std::string& theText)
{
   const MDataDictionary& aDictionary = MDataDictionary::GetDefaultDataDictionary();
   UINT32 aTag = 0;
   if (ParseTag(theText, aTag))
   {
      const UINT16 aType = aDictionary.RunTimeClass(GroupOf(aTag), ElementOf(aTag), nullptr, 0);
      return {aTag, aType == VRCode::UN ? VRCode::LO : aType}; // keys are texts
   }
   const MDDEntry* const anEntry = aDictionary.Find(theText);
   if (anEntry == nullptr)
   {
      Refuse("no attribute has the keyword " + theText + SuggestionFor(theText) +
             " A key is KEYWORD=VALUE or (gggg,eeee)=VALUE");
   }
   return {anEntry->GetTag(), anEntry->GetTypeAsUshort()};
}

// The dots of a key are those between its parts: neither keywords nor tags have any.
std::vector<Attribute> ParsePath(const std::string& thePath)
{
   std::vector<Attribute> anAttributes;
   for (std::size_t aStart = 0; aStart <= thePath.size();)
   {
      const std::size_t anEnd = std::min(thePath.find('.', aStart), thePath.size());
      anAttributes.push_back(FindAttribute(thePath.substr(aStart, anEnd - aStart)));
      aStart = anEnd + 1;
   }
   return anAttributes;
}

std::unique_ptr<VR> MakeText(const Attribute& theAttribute, const std::string& theValue)
{
   auto aVR = std::make_unique<VR>(GroupOf(theAttribute.itsTag), ElementOf(theAttribute.itsTag));
   aVR->SetTypeCode(theAttribute.itsType);
   aVR->SetData(theValue.data(), static_cast<UINT32>(theValue.size()), theAttribute.itsType == VRCode::UI ? '\0' : ' ');
   return aVR;
}

template <class Number>
std::unique_ptr<VR> MakeNumber(const Attribute& theAttribute, const std::string& theValue)
{
   Number aNumber = 0;
   const auto [anEnd, anError] = std::from_chars(theValue.data(), theValue.data() + theValue.size(), aNumber);
   if (anError != std::errc() || anEnd != theValue.data() + theValue.size())
   {
      Refuse(theValue + " is no number that fits");
   }
   auto aVR = std::make_unique<VR>(GroupOf(theAttribute.itsTag), ElementOf(theAttribute.itsTag));
   aVR->SetTypeCode(theAttribute.itsType);
   Number aStored = 0;
   TNEndian::Store(&aStored, aNumber, aVR->GetDataEndian());
   aVR->SetData(&aStored, sizeof aStored, '\0');
   return aVR;
}

std::unique_ptr<VR> MakeKey(const Attribute& theAttribute, const std::string& theValue)
{
   if (theAttribute.itsType == VRCode::SQ)
   {
      return theValue.empty()
                 ? std::make_unique<SequenceVR>(GroupOf(theAttribute.itsTag), ElementOf(theAttribute.itsTag))
                 : throw std::invalid_argument("a sequence has no value; name an attribute of its item");
   }
   if (theValue.empty() || IsStringVRCode(theAttribute.itsType))
   {
      return theValue.size() <= kLongestValue ? MakeText(theAttribute, theValue)
                                              : throw std::invalid_argument("the value is too long");
   }
   switch (theAttribute.itsType)
   {
   case VRCode::US: return MakeNumber<UINT16>(theAttribute, theValue);
   case VRCode::SS: return MakeNumber<INT16>(theAttribute, theValue);
   case VRCode::UL: return MakeNumber<UINT32>(theAttribute, theValue);
   case VRCode::SL: return MakeNumber<INT32>(theAttribute, theValue);
   default: Refuse("attributes of this kind can be asked for, but not matched");
   }
}

// The item of the sequence, made where there is none.
DICOMDataObject& ItemOf(DICOMDataObject& theObject, const Attribute& theAttribute)
{
   if (theAttribute.itsType != VRCode::SQ)
   {
      Refuse(TagText(theAttribute.itsTag) + " is no sequence");
   }
   VR* const aVR = theObject.GetVR(GroupOf(theAttribute.itsTag), ElementOf(theAttribute.itsTag));
   SequenceVR* aSequence = aVR != nullptr ? aVR->GetAsSequenceVR() : nullptr;
   if (aSequence == nullptr)
   {
      aSequence = new SequenceVR(GroupOf(theAttribute.itsTag), ElementOf(theAttribute.itsTag));
      theObject.DICOMObject::Push(aSequence);
   }
   if (aSequence->GetSequenceArray() == nullptr || aSequence->GetSequenceArray()->empty())
   {
      aSequence->AddSequenceItem(new DICOMDataObject());
   }
   return *aSequence->GetSequenceArray()->front();
}
} // namespace

void QueryKeys::Add(const std::string& theKey)
{
   const std::size_t aNameSize = std::min(theKey.find('='), theKey.size());
   const std::string aName = theKey.substr(0, aNameSize);
   const std::string aValue = aNameSize < theKey.size() ? theKey.substr(aNameSize + 1) : "";
   try
   {
      const std::vector<Attribute> aPath = ParsePath(aName);
      DICOMDataObject* anObject = &itsIdentifier;
      Column aColumn = {aName, {}};
      for (const Attribute& anAttribute : aPath)
      {
         aColumn.itsPath.push_back(anAttribute.itsTag);
         if (&anAttribute != &aPath.back())
         {
            anObject = &ItemOf(*anObject, anAttribute);
         }
      }
      anObject->ReplaceVR(MakeKey(aPath.back(), aValue).release());
      const bool isNew = std::none_of(itsColumns.begin(), itsColumns.end(),
                                      [&](const Column& theColumn) { return theColumn.itsPath == aColumn.itsPath; });
      if (isNew)
      {
         itsColumns.push_back(aColumn);
      }
   }
   catch (const std::invalid_argument& anError)
   {
      Refuse("key " + theKey + ": " + anError.what());
   }
   if (std::any_of(aValue.begin(), aValue.end(), [](char theByte) { return (theByte & 0x80) != 0; }))
   {
      SetUTF8();
   }
}

void QueryKeys::SetUTF8()
{
   itsIdentifier.ReplaceVR(MakeText({kSpecificCharacterSet, VRCode::CS}, kUTF8).release());
}

void QueryKeys::SetLevel(const std::string& theLevel)
{
   if (!theLevel.empty())
   {
      itsIdentifier.ReplaceVR(MakeText({kQueryRetrieveLevel, VRCode::CS}, theLevel).release());
   }
}

bool ReadKeys(std::istream& theInput, std::vector<std::string>& theKeys)
{
   theKeys.clear();
   for (std::string aLine; std::getline(theInput, aLine);)
   {
      aLine.erase(aLine.find_last_not_of(" \t\r") + 1);
      if (aLine.empty() && !theKeys.empty())
      {
         return true;
      }
      if (!aLine.empty() && aLine[0] != '#')
      {
         theKeys.push_back(aLine);
      }
   }
   return !theKeys.empty();
}

// Short ways to make elements and datasets for tests.
#pragma once

#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"

// The element is the caller's; it is stored in little-endian order unless said otherwise.
inline VR* BytesElement(UINT32 theTag, UINT16 theType, const std::string& theBytes, char thePad = '\0')
{
   VR* aVR = new VR(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag));
   aVR->SetTypeCode(theType);
   aVR->SetData(theBytes.data(), static_cast<UINT32>(theBytes.size()), thePad);
   return aVR;
}

inline VR* TextElement(UINT32 theTag, const std::string& theText, UINT16 theType = VRCode::LO)
{
   return BytesElement(theTag, theType, theText, ' ');
}

template <class Value>
VR* NumberElement(UINT32 theTag, UINT16 theType, Value theValue,
                  TNEndian::EndianType theEndian = TNEndian::LittleEndian)
{
   VR* aVR = new VR(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag), theEndian);
   aVR->SetTypeCode(theType);
   TNEndian::Store(&theValue, theValue, theEndian);
   aVR->SetData(&theValue, sizeof theValue, '\0');
   return aVR;
}

// Pushes a short text under each tag.
inline void Fill(DICOMObject& theObject, std::initializer_list<UINT32> theTags)
{
   for (UINT32 aTag : theTags)
   {
      theObject.Push(TextElement(aTag, "value"));
   }
}

// The tags in the order in which a fresh iterator shows them.
inline std::vector<UINT32> TagsOf(const DICOMObject& theObject, GroupLengthEncodingType theType = ExplicitNoGroupLength)
{
   std::vector<UINT32> aTags;
   DICOMObjectIterator aWalk(theObject, theType);
   while (const VR* aVR = aWalk.Next())
   {
      aTags.push_back(aVR->GetTag());
   }
   return aTags;
}

inline std::string TextOf(const DICOMObject& theObject, UINT32 theTag)
{
   RWCString aText;
   const int wasFound = theObject.GetString(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag), aText);
   return wasFound ? aText : "(none)";
}

// An element that counts itself, so that a test sees when it goes.
class WatchedVR : public VR
{
public:
   WatchedVR(UINT32 theTag, int& theCount)
       : VR(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag)), itsCount(theCount)
   {
      ++itsCount;
   }
   WatchedVR(const WatchedVR&) = delete;
   ~WatchedVR() override { --itsCount; }

private:
   int& itsCount;
};

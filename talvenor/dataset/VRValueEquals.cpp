// When two values are the same.
#include "talvenor/dataset/VR.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "talvenor/dictionary/VRType.h"

namespace
{
// Calls theWork with every piece between separators that is not empty.
template <class Work>
void ForEachPiece(std::string_view theText, char theSeparator, Work theWork)
{
   while (!theText.empty())
   {
      const std::size_t anEnd = std::min(theText.find(theSeparator), theText.size());
      if (anEnd != 0)
      {
         theWork(theText.substr(0, anEnd));
      }
      theText.remove_prefix(std::min(anEnd + 1, theText.size()));
   }
}

std::string_view WithoutTrailing(std::string_view theText, char theCharacter)
{
   return theText.substr(0, theText.find_last_not_of(theCharacter) + 1);
}

// Trailing delimiters of empty components and component groups may be left out (PS3.5 6.2.1): "Doe^John^^=" is
// "Doe^John". A pad byte belongs to the last component.
RWCString NormalisedPersonName(std::string_view theName)
{
   RWCString aResult;
   ForEachPiece(theName, '=', [&](std::string_view theGroup) {
      aResult += WithoutTrailing(theGroup, '^');
      aResult += '=';
   });
   return RWCString(WithoutTrailing(aResult, '='));
}

RWCString NormalisedPersonNames(const VR& theVR)
{
   const std::string_view aText(reinterpret_cast<const char*>(theVR.GetData()), theVR.GetLength());
   RWCString aResult;
   bool aIsFirst = true;
   ForEachPiece(aText, '\\', [&](std::string_view theName) {
      if (!aIsFirst)
      {
         aResult += '\\';
      }
      aIsFirst = false;
      aResult += NormalisedPersonName(theName);
   });
   return aResult;
}
} // namespace

int VR::ValueEquals(const VR& theOther) const
{
   if (this == &theOther || itsData == theOther.itsData)
   {
      return 1;
   }
   if (itsData == nullptr || theOther.itsData == nullptr)
   {
      return 0;
   }
   if (IsEmpty() && theOther.IsEmpty())
   {
      return 1;
   }
   if (itsTypeCode == VRCode::PN && theOther.itsTypeCode == VRCode::PN)
   {
      return NormalisedPersonNames(*this) == NormalisedPersonNames(theOther);
   }
   return itsLength == theOther.itsLength && std::memcmp(itsData, theOther.itsData, itsLength) == 0;
}

int VR::ValueAndTagEquals(const VR& theOther) const
{
   return itsTag == theOther.itsTag && ValueEquals(theOther);
}

#include "talvenor/dictionary/MDDEntry.h"

#include <charconv>

#include "talvenor/dictionary/DictionaryLine.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
// The whole text must be a number that fits. from_chars takes no sign and no blank for an unsigned number.
template <class Number>
bool ParseNumber(std::string_view theText, int theBase, Number& theNumber)
{
   if (theBase == 16 && (theText.starts_with("0x") || theText.starts_with("0X")))
   {
      theText.remove_prefix(2);
   }
   const char* anEnd = theText.data() + theText.size();
   const std::from_chars_result aResult = std::from_chars(theText.data(), anEnd, theNumber, theBase);
   return aResult.ec == std::errc() && aResult.ptr == anEnd;
}

// A number at the front of the text; what follows it does not matter.
bool ParseLeadingNumber(std::string_view theText, UINT32& theNumber)
{
   return std::from_chars(theText.data(), theText.data() + theText.size(), theNumber).ec == std::errc();
}

MDDEntry::Fields ParseOrThrow(const RWCString& theLine)
{
   MDDEntry::Fields aFields;
   if (!MDDEntry::Parse(theLine, aFields))
   {
      throw InvalidEntryDescriptionException(theLine.c_str(), "", 0);
   }
   return aFields;
}
} // namespace

MDDEntry::MDDEntry(const MAttributeTag& theTag, ValueType theType, UINT32 theVMMin, UINT32 theVMMax,
                   const RWCString& theName, const RWCString& theDescription)
    : MAttributeTag(theTag), itsType(theType), itsVMMin(theVMMin), itsVMMax(theVMMax), itsName(theName),
      itsDescription(theDescription)
{
   SetType(theType);
}

MDDEntry::MDDEntry(UINT16 theGroup, UINT16 theElement, ValueType theType, UINT32 theVMMin, UINT32 theVMMax,
                   const RWCString& theName, const RWCString& theDescription)
    : MDDEntry(MAttributeTag(theGroup, theElement), theType, theVMMin, theVMMax, theName, theDescription)
{}

MDDEntry::MDDEntry(const RWCString& theLine) : MDDEntry(ParseOrThrow(theLine)) {}

MDDEntry::MDDEntry(const Fields& theFields)
    : MAttributeTag(theFields.itsGroup, theFields.itsElement), itsType(theFields.itsType), itsVMMin(theFields.itsVMMin),
      itsVMMax(theFields.itsVMMax), itsName(theFields.itsName), itsDescription(theFields.itsDescription)
{
   SetType(theFields.itsType);
}

bool MDDEntry::Parse(std::string_view theLine, Fields& theFields)
{
   DictionaryLine aLine(theLine);
   std::string_view aText;
   if (!aLine.Field(aText) || !ParseNumber(aText, 16, theFields.itsGroup) || !aLine.Field(aText) ||
       !ParseNumber(aText, 16, theFields.itsElement) || !aLine.Field(aText) || aText.empty())
   {
      return false;
   }
   theFields.itsType = StringToValueType(aText);
   if (!ValueTypeOK(theFields.itsType))
   {
      return true;
   }
   return aLine.Field(theFields.itsDescription) && aLine.Field(theFields.itsName) && !theFields.itsName.empty() &&
          aLine.Field(aText) && ParseNumber(aText, 10, theFields.itsVMMin) &&
          ParseLeadingNumber(aLine.LastField(), theFields.itsVMMax);
}

void MDDEntry::SetType(ValueType theType)
{
   if (!ValueTypeOK(theType))
   {
      throw InvalidValueTypeException(static_cast<UINT32>(theType), nullptr, 0);
   }
   itsType = theType;
}

MDDEntry::ValueType MDDEntry::StringToValueType(std::string_view theText)
{
   if (theText.size() == 2)
   {
      return UShortToValueType(MakeVRCode(theText[0], theText[1]));
   }
   std::size_t aType = kVRCodeCount;
   while (aType < kVRTypeCount && kVRTypes[aType].itsText != theText)
   {
      ++aType;
   }
   return static_cast<ValueType>(aType);
}

RWCString MDDEntry::ValueTypeToString(ValueType theType)
{
   return ValueTypeOK(theType) ? RWCString(kVRTypes[theType].itsText) : RWCString();
}

UINT16 MDDEntry::TypeStringToUShort(std::string_view theText)
{
   return theText.size() == 2 ? MakeVRCode(theText[0], theText[1]) : VRCode::UN;
}

RWCString MDDEntry::UShortToTypeString(UINT16 theCode)
{
   return {static_cast<char>(theCode >> 8), static_cast<char>(theCode & 0xFF)};
}

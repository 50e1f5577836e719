#include "talvenor/dictionary/MUIDDictionaryEntry.h"

#include <iterator>

#include "talvenor/dictionary/DictionaryLine.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
// By number.
constexpr std::string_view kTypeTexts[] = {"", "TS", "SC", "MC", "SI", "AC", "U1", "U2"};
static_assert(std::size(kTypeTexts) == MUIDDictionaryEntry::U2 + 1);

[[noreturn]] void ThrowAbout(const RWCString& theLine, const RWCString& theFault)
{
   throw InvalidEntryDescriptionException((theLine + theFault).c_str(), "", 0);
}

// A field ended by a comma.
std::string_view NextField(DictionaryLine& theFields, const RWCString& theLine)
{
   std::string_view aField;
   if (!theFields.Field(aField))
   {
      ThrowAbout(theLine, "");
   }
   return aField;
}

void RequireText(std::string_view theField, const RWCString& theLine)
{
   if (theField.empty())
   {
      ThrowAbout(theLine, ": Empty item");
   }
}
} // namespace

MUIDDictionaryEntry::MUIDDictionaryEntry(UIDType theType, BasicTransferSyntaxType theBasicType, const RWCString& theUID,
                                         const RWCString& theMnemonic, const RWCString& theDescription)
    : itsType(theType), itsBasicType(theType == TS ? theBasicType : BasicTransferSyntaxKind::UnknownBasicType),
      itsUID(theUID), itsMnemonic(theMnemonic), itsDescription(theDescription)
{
   if (!UIDTypeOK(theType))
   {
      throw InvalidUIDTypeException(static_cast<UINT32>(theType), nullptr, 0);
   }
}

MUIDDictionaryEntry::MUIDDictionaryEntry(const RWCString& theLine)
{
   DictionaryLine aFields(theLine);
   const std::string_view aType = NextField(aFields, theLine);
   RequireText(aType, theLine);
   itsType = StringToUIDType(aType);
   if (!UIDTypeOK(itsType))
   {
      ThrowAbout(theLine, "");
   }

   for (RWCString* aText : {&itsUID, &itsMnemonic})
   {
      *aText = NextField(aFields, theLine);
      RequireText(*aText, theLine);
   }

   // Only a transfer syntax has a field behind the description, and only there a comma ends the description.
   itsDescription = itsType == TS ? NextField(aFields, theLine) : aFields.LastField();
   RequireText(itsDescription, theLine);
   if (itsType != TS)
   {
      return;
   }
   const std::string_view aBasicType = aFields.LastField();
   RequireText(aBasicType, theLine);
   itsBasicType = BasicTransferSyntaxKind::StringToBasicTransferSyntaxType(aBasicType);
   if (itsBasicType == BasicTransferSyntaxKind::UnknownBasicType)
   {
      ThrowAbout(theLine, ": Unknown transfer syntax type (" + RWCString(aBasicType) + ")");
   }
}

RWCString MUIDDictionaryEntry::UIDTypeToString(UIDType theType)
{
   return UIDTypeOK(theType) ? RWCString(kTypeTexts[theType]) : RWCString();
}

MUIDDictionaryEntry::UIDType MUIDDictionaryEntry::StringToUIDType(std::string_view theText)
{
   for (int aType = TS; aType <= U2; ++aType)
   {
      if (kTypeTexts[aType] == theText)
      {
         return static_cast<UIDType>(aType);
      }
   }
   return InvalidUIDType;
}

#include "talvenor/ul/ULItemTexts.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace
{
constexpr char kNoType[] = "::Read: EOF while reading item type";
constexpr char kWrongType[] = "::Read: incorrect item type (";
constexpr char kNoBody[] = "::ReadDynamic: EOF while reading body";

// PS3.8 9.3.2, 9.3.3 and annex D, PS3.7 annex D. In the order of the types.
constexpr ULItemTexts kItems[] = {
    {0x10, "ApplicationContextItem", "::ReadDynamic: EOF while reading item type", kWrongType, kNoBody, kNoBody,
     nullptr, nullptr},
    {0x20, "PresentationContextItem", kNoType, kWrongType, kNoBody, kNoBody,
     "Presentation Context ID: ", "Item Length"},
    {0x21, "PresentationContextAcceptItem", kNoType, kWrongType, "::ReadDynamic: EOF while reading Reserved1 or Length",
     "::ReadDynamic: EOF while reading PCID, Reserved2, Result, or Reserved4",
     "PresentationContextAcceptItem:", "Length"},
    {0x30, "AbstractSyntaxSubItem", "::Read: EOF while reading subitem type", "::Read: incorrect subitem type (",
     kNoBody, kNoBody, nullptr, nullptr},
    {0x40, "TransferSyntaxItem", kNoType, kWrongType, kNoBody, kNoBody, nullptr, nullptr},
    {0x50, "UserInformationItem", kNoType, kWrongType, nullptr, nullptr, "User Information:", "Item Length"},
    {0x51, "MaximumLengthSubItem", kNoType, kWrongType, nullptr, nullptr, nullptr, nullptr},
    {0x52, "ImplementationClassUIDSubItem", kNoType, kWrongType, kNoBody, kNoBody, nullptr, nullptr},
    {0x54, "SCPSCURoleSelectSubItem", kNoType, kWrongType, kNoBody, kNoBody, "SCP/SCU Role Select:", "Item Length"},
    {0x55, "ImplementationVersionNameSubItem", kNoType, "::Read: incorrect item type", nullptr, nullptr, nullptr,
     nullptr},
};
} // namespace

const ULItemTexts& TextsOfULItem(unsigned char theType)
{
   const auto* const aRow = std::find_if(std::begin(kItems), std::end(kItems),
                                         [=](const ULItemTexts& theRow) { return theRow.itsType == theType; });
   assert(aRow != std::end(kItems));
   return *aRow;
}

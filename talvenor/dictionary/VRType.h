// The value representations (PS3.5 6.2), in one table: the dictionary, elements, decoders, encoders and the dump all
// look their facts up here. A code is the two letters as a 16-bit number, first letter in the high byte ("UI" is
// 0x5549); 0 means "not typed". Everything is constexpr: usable while globals are being built, safe from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "talvenor/foundation/BasicTypes.h"

// One row. The last five rows are kinds of dictionary entry, not representations of an element: their code is the one
// that an element of such an entry is given.
struct VRType
{
   std::string_view itsText;
   UINT16 itsCode;
   bool itsIsString;
   UINT8 itsPrimitiveSize; // bytes that are swapped together; 1 where order does not matter
   bool itsHasLongHeader;  // explicit VR: 2 reserved bytes and a 32-bit length (PS3.5 7.1.2)
};

// The code of two letters.
constexpr UINT16 MakeVRCode(char theFirst, char theSecond)
{
   return static_cast<UINT16>(static_cast<unsigned char>(theFirst) << 8 | static_cast<unsigned char>(theSecond));
}

// The codes by name: VRCode::SQ and so on.
namespace VRCode
{
inline constexpr UINT16 None = 0; // not typed
inline constexpr UINT16 AE = MakeVRCode('A', 'E');
inline constexpr UINT16 AS = MakeVRCode('A', 'S');
inline constexpr UINT16 AT = MakeVRCode('A', 'T');
inline constexpr UINT16 CS = MakeVRCode('C', 'S');
inline constexpr UINT16 DA = MakeVRCode('D', 'A');
inline constexpr UINT16 DS = MakeVRCode('D', 'S');
inline constexpr UINT16 DT = MakeVRCode('D', 'T');
inline constexpr UINT16 FL = MakeVRCode('F', 'L');
inline constexpr UINT16 FD = MakeVRCode('F', 'D');
inline constexpr UINT16 IS = MakeVRCode('I', 'S');
inline constexpr UINT16 LO = MakeVRCode('L', 'O');
inline constexpr UINT16 LT = MakeVRCode('L', 'T');
inline constexpr UINT16 OB = MakeVRCode('O', 'B');
inline constexpr UINT16 OF = MakeVRCode('O', 'F');
inline constexpr UINT16 OW = MakeVRCode('O', 'W');
inline constexpr UINT16 PN = MakeVRCode('P', 'N');
inline constexpr UINT16 SH = MakeVRCode('S', 'H');
inline constexpr UINT16 SL = MakeVRCode('S', 'L');
inline constexpr UINT16 SQ = MakeVRCode('S', 'Q');
inline constexpr UINT16 SS = MakeVRCode('S', 'S');
inline constexpr UINT16 ST = MakeVRCode('S', 'T');
inline constexpr UINT16 TM = MakeVRCode('T', 'M');
inline constexpr UINT16 UI = MakeVRCode('U', 'I');
inline constexpr UINT16 UL = MakeVRCode('U', 'L');
inline constexpr UINT16 UN = MakeVRCode('U', 'N');
inline constexpr UINT16 US = MakeVRCode('U', 'S');
inline constexpr UINT16 UT = MakeVRCode('U', 'T');
} // namespace VRCode

// Rows in the order of MDDEntry::ValueType; the numbers are part of the public interface.
inline constexpr VRType kVRTypes[] = {
    // text, code, string, primitive size, long header
    {"AE", VRCode::AE, true, 1, false},
    {"AS", VRCode::AS, true, 1, false},
    {"AT", VRCode::AT, false, 2, false},
    {"CS", VRCode::CS, true, 1, false},
    {"DA", VRCode::DA, true, 1, false},
    {"DS", VRCode::DS, true, 1, false},
    {"DT", VRCode::DT, true, 1, false},
    {"FL", VRCode::FL, false, 4, false},
    {"FD", VRCode::FD, false, 8, false},
    {"IS", VRCode::IS, true, 1, false},
    {"LO", VRCode::LO, true, 1, false},
    {"LT", VRCode::LT, true, 1, false},
    {"OB", VRCode::OB, false, 1, true},
    {"OF", VRCode::OF, false, 4, true},
    {"OW", VRCode::OW, false, 2, true},
    {"PN", VRCode::PN, true, 1, false},
    {"SH", VRCode::SH, true, 1, false},
    {"SL", VRCode::SL, false, 4, false},
    {"SQ", VRCode::SQ, false, 1, true},
    {"SS", VRCode::SS, false, 2, false},
    {"ST", VRCode::ST, true, 1, false},
    {"TM", VRCode::TM, true, 1, false},
    {"UI", VRCode::UI, true, 1, false},
    {"UL", VRCode::UL, false, 4, false},
    {"UN", VRCode::UN, false, 1, true},
    {"US", VRCode::US, false, 2, false},
    {"UT", VRCode::UT, true, 1, true},
    {"OW_or_OB", VRCode::OW, false, 2, true},
    {"US_US_or_SS_US", VRCode::US, false, 2, false},
    {"US_or_SS", VRCode::US, false, 2, false},
    {"US_or_SS_or_OW", VRCode::US, false, 2, false},
    {"NONE", VRCode::UN, false, 1, true},
};
inline constexpr std::size_t kVRTypeCount = std::size(kVRTypes); // rows; also "no such row"
inline constexpr std::size_t kVRCodeCount = 27;                  // rows that are representations of an element
static_assert(kVRTypeCount == 32 && kVRTypes[kVRCodeCount].itsText == "OW_or_OB");

// Row by code: 26 x 26 letters, kVRTypeCount where two letters name no representation.
inline constexpr auto kVRTypeByLetters = [] {
   std::array<UINT8, 26 * 26> aTable{};
   aTable.fill(kVRTypeCount);
   for (std::size_t aRow = 0; aRow < kVRCodeCount; ++aRow)
   {
      const UINT16 aCode = kVRTypes[aRow].itsCode;
      aTable[static_cast<std::size_t>(((aCode >> 8) - 'A') * 26 + (aCode & 0xFF) - 'A')] = static_cast<UINT8>(aRow);
   }
   return aTable;
}();

// The row number of a code; kVRTypeCount for a code that is none of the 27.
constexpr std::size_t VRTypeNumber(UINT16 theCode)
{
   const unsigned int aFirst = (theCode >> 8) - 'A';
   const unsigned int aSecond = (theCode & 0xFFu) - 'A';
   return aFirst < 26 && aSecond < 26 ? kVRTypeByLetters[aFirst * 26 + aSecond] : kVRTypeCount;
}

// The row of a code, or null for a code that is none of the 27.
constexpr const VRType* FindVRType(UINT16 theCode)
{
   const std::size_t aNumber = VRTypeNumber(theCode);
   return aNumber < kVRTypeCount ? &kVRTypes[aNumber] : nullptr;
}

constexpr bool IsKnownVRCode(UINT16 theCode)
{
   return VRTypeNumber(theCode) < kVRTypeCount;
}

// False for unknown codes.
constexpr bool IsStringVRCode(UINT16 theCode)
{
   const VRType* aType = FindVRType(theCode);
   return aType != nullptr && aType->itsIsString;
}

// 1 for unknown codes: bytes that nobody understands are never swapped.
constexpr unsigned int PrimitiveSizeOfVRCode(UINT16 theCode)
{
   const VRType* aType = FindVRType(theCode);
   return aType != nullptr ? aType->itsPrimitiveSize : 1;
}

// True for exactly OB, OF, OW, SQ, UN and UT; every other code, known or not, has the 16-bit length.
constexpr bool HasLongHeaderVRCode(UINT16 theCode)
{
   const VRType* aType = FindVRType(theCode);
   return aType != nullptr && aType->itsHasLongHeader;
}

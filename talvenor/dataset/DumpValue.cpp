#include "talvenor/dataset/DumpValue.h"

#include <algorithm>
#include <type_traits>

#include "talvenor/dataset/CommandSetTexts.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MUIDDictionary.h"

namespace
{
constexpr UINT32 kTextLimit = 64;

std::string_view AsText(const DumpValue& theValue)
{
   return {reinterpret_cast<const char*>(theValue.itsBytes), theValue.itsLength};
}

std::string_view WithoutTrailing(std::string_view theText, std::string_view thePadding)
{
   return theText.substr(0, theText.find_last_not_of(thePadding) + 1);
}

// Whether the byte goes on with a UTF-8 character that began before it.
bool IsContinuation(char theByte)
{
   return (theByte & 0xC0) == 0x80;
}

// Bytes of the UTF-8 character that begins with theByte.
std::size_t SizeOfCharacter(char theByte)
{
   const unsigned char aByte = static_cast<unsigned char>(theByte);
   return aByte >= 0xF0 ? 4 : aByte >= 0xE0 ? 3 : aByte >= 0xC0 ? 2 : 1;
}

// The beginning of a text, without a UTF-8 character that the limit would cut in two. Other character sets are cut at
// the limit.
std::string_view Cut(std::string_view theText)
{
   if (theText.size() > kTextLimit && IsContinuation(theText[kTextLimit]))
   {
      for (std::size_t aBack = 1; aBack < 4; ++aBack)
      {
         const char aByte = theText[kTextLimit - aBack];
         if (!IsContinuation(aByte))
         {
            return theText.substr(0, SizeOfCharacter(aByte) > aBack ? kTextLimit - aBack : kTextLimit);
         }
      }
   }
   return theText.substr(0, kTextLimit);
}

// The registered description of a UID, as " (description)".
void PrintKnownUID(DumpText& theText, std::string_view theUID)
{
   if (const MUIDDictionaryEntry* anEntry = MUIDDictionary::GetDefaultUIDDictionary().FindUID(theUID))
   {
      theText << " (" << anEntry->GetDescription() << ')';
   }
}

void PrintText(DumpText& theText, const DumpValue& theValue, UINT32)
{
   // A NUL pads UIDs (PS3.5 9.1); a blank may be content.
   theText << '"';
   theText.Escaped(Cut(WithoutTrailing(AsText(theValue), std::string_view("\0", 1))));
   theText << '"';
}

// Trailing blanks and NULs are padding for every reader of text (see VRAccess::GetString).
std::string_view UIDText(const DumpValue& theValue)
{
   return WithoutTrailing(AsText(theValue), std::string_view(" \0", 2));
}

void PrintUID(DumpText& theText, const DumpValue& theValue, UINT32 theLimit)
{
   PrintText(theText, theValue, theLimit);
   PrintKnownUID(theText, UIDText(theValue));
}

// A value too short for one number is shown raw. Bytes behind the last whole number are told by the length alone.
template <class T>
void PrintNumbers(DumpText& theText, const DumpValue& theValue, UINT32 theLimit)
{
   if (theValue.itsLength < sizeof(T))
   {
      PrintBytes(theText, theValue, kRawByteLimit);
      return;
   }
   const UINT32 aCount = std::min(theValue.itsLength, theLimit) / sizeof(T);
   for (UINT32 i = 0; i < aCount; ++i)
   {
      if (i > 0)
      {
         theText << ' ';
      }
      theText.Number(TNEndian::Load<T>(theValue.itsBytes + i * sizeof(T), theValue.itsEndian));
   }
   if (theValue.itsLength > theLimit)
   {
      theText << "...";
   }
}

// Attribute tags (AT): two 16-bit numbers each, in the byte order of the value.
void PrintTags(DumpText& theText, const DumpValue& theValue, UINT32)
{
   UINT32 aTag = 0;
   for (UINT32 i = 0; theValue.itsLength - i >= 4; i += 4)
   {
      const UINT32 aGroup = TNEndian::Load<UINT16>(theValue.itsBytes + i, theValue.itsEndian);
      aTag = aGroup << 16 | TNEndian::Load<UINT16>(theValue.itsBytes + i + 2, theValue.itsEndian);
      if (i > 0)
      {
         theText << ' ';
      }
      theText.Tag(aTag).WriteFullPiece();
   }
   if (theValue.itsLength != 4 || theValue.itsDictionary == nullptr)
   {
      return;
   }
   const MAttributeTag aSingleTag(static_cast<UINT16>(aTag >> 16), static_cast<UINT16>(aTag));
   if (const MDDEntry* anEntry = theValue.itsDictionary->Find(aSingleTag))
   {
      theText << " \"" << anEntry->Description() << '"';
   }
}

template <class T, TNEndian::EndianType Endian>
T LoadUnit(const unsigned char* thePlace)
{
   if constexpr (sizeof(T) == 1)
   {
      return *thePlace;
   }
   else
   {
      return TNEndian::Load<T, Endian>(thePlace);
   }
}

// Pixel data are summed in runs of constant length and, where they fit, in 32 bits, which compilers vectorise.
template <class T, TNEndian::EndianType Endian>
UINT64 SumIn(const DumpValue& theValue)
{
   using RunSum = std::conditional_t<sizeof(T) <= 2, UINT32, UINT64>;
   constexpr std::size_t kRun = 4096;
   const std::size_t aCount = theValue.itsLength / sizeof(T);
   const unsigned char* aPlace = theValue.itsBytes;
   UINT64 aSum = 0;
   std::size_t i = 0;
   for (; aCount - i >= kRun; i += kRun)
   {
      RunSum aRunSum = 0;
      for (std::size_t j = 0; j < kRun; ++j, aPlace += sizeof(T))
      {
         aRunSum += LoadUnit<T, Endian>(aPlace);
      }
      aSum += aRunSum;
   }
   for (; i < aCount; ++i, aPlace += sizeof(T))
   {
      aSum += LoadUnit<T, Endian>(aPlace);
   }
   return aSum;
}

// A check of the whole value, however little of it is shown.
template <class T>
void PrintSum(DumpText& theText, const DumpValue& theValue)
{
   const UINT64 aSum = theValue.itsEndian == TNEndian::BigEndian ? SumIn<T, TNEndian::BigEndian>(theValue)
                                                                 : SumIn<T, TNEndian::LittleEndian>(theValue);
   theText << "[sum = ";
   theText.Hex(aSum) << "] ";
}

struct Rendering
{
   UINT16 itsTypeCode;
   void (*itsPrintSum)(DumpText&, const DumpValue&); // null where none is shown
   void (*itsPrint)(DumpText&, const DumpValue&, UINT32 theLimit);
   UINT32 itsLimit; // in bytes of the value; 0 where itsPrint has its own
};

// Every other text type is printed by PrintText, everything else by PrintUntyped. The sum of floats is that of their
// bits: a check, not a quantity.
constexpr Rendering kRenderings[] = {
    {VRCode::UI, nullptr, PrintUID, 0},
    {VRCode::US, nullptr, PrintNumbers<UINT16>, 40},
    {VRCode::SS, nullptr, PrintNumbers<INT16>, 40},
    {VRCode::OW, PrintSum<UINT16>, PrintNumbers<UINT16>, 40},
    {VRCode::UL, nullptr, PrintNumbers<UINT32>, 80},
    {VRCode::SL, nullptr, PrintNumbers<INT32>, 80},
    {VRCode::FL, nullptr, PrintNumbers<FLOAT>, 80},
    {VRCode::OF, PrintSum<UINT32>, PrintNumbers<FLOAT>, 80},
    {VRCode::FD, nullptr, PrintNumbers<DOUBLE>, 160},
    {VRCode::OB, PrintSum<UINT8>, PrintBytes, 20},
    {VRCode::AT, nullptr, PrintTags, 0},
};

// A guess from length and content, for elements without a type and for types that have no rendering of their own.
void PrintUntyped(DumpText& theText, const DumpValue& theValue)
{
   switch (theValue.itsLength)
   {
   case 2: return PrintNumbers<UINT16>(theText, theValue, 2);
   case 4: return PrintNumbers<UINT32>(theText, theValue, 4);
   default:
      return ArePrintable(theValue.itsBytes, theValue.itsLength) ? PrintText(theText, theValue, kTextLimit)
                                                                 : PrintBytes(theText, theValue, kRawByteLimit);
   }
}

void PrintInWords(DumpText& theText, const DumpValue& theValue, std::string_view (*theWords)(UINT16))
{
   if (theValue.itsLength == 2)
   {
      theText << " (" << theWords(TNEndian::Load<UINT16>(theValue.itsBytes, theValue.itsEndian)) << ')';
   }
}
} // namespace

void PrintValue(DumpText& theText, const DumpValue& theValue, UINT16 theTypeCode)
{
   if (theValue.itsBytes == nullptr || theValue.itsLength == 0)
   {
      theText << "(null)";
      return;
   }
   for (const Rendering& aRendering : kRenderings)
   {
      if (aRendering.itsTypeCode == theTypeCode)
      {
         if (aRendering.itsPrintSum != nullptr)
         {
            aRendering.itsPrintSum(theText, theValue);
         }
         aRendering.itsPrint(theText, theValue, aRendering.itsLimit);
         return;
      }
   }
   IsStringVRCode(theTypeCode) ? PrintText(theText, theValue, kTextLimit) : PrintUntyped(theText, theValue);
}

void PrintBytes(DumpText& theText, const DumpValue& theValue, UINT32 theLimit)
{
   const UINT32 aCount = std::min(theValue.itsLength, theLimit);
   for (UINT32 i = 0; i < aCount; ++i)
   {
      if (i > 0)
      {
         theText << ' ';
      }
      theText.HexByte(theValue.itsBytes[i]);
   }
   if (theValue.itsLength > theLimit)
   {
      theText << "...";
   }
}

void PrintCommandAnnotation(DumpText& theText, const VR& theVR, TNEndian::EndianType theEndian)
{
   const DumpValue aValue{theVR.GetData(), theVR.GetLength(), theEndian, nullptr};
   if (aValue.itsBytes == nullptr)
   {
      return;
   }
   switch (theVR.GetElement()) // PS3.7 E.1
   {
   case 0x0002: // Affected SOP Class UID
   case 0x0003: // Requested SOP Class UID
      return PrintKnownUID(theText, UIDText(aValue));
   case 0x0100: return PrintInWords(theText, aValue, CommandFieldText);
   case 0x0800: return PrintInWords(theText, aValue, DataSetTypeText);
   case 0x0900: return PrintInWords(theText, aValue, StatusText);
   default: return;
   }
}

bool ArePrintable(const unsigned char* theBytes, UINT32 theLength)
{
   return std::all_of(theBytes, theBytes + theLength, IsPrintable);
}

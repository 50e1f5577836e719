#include "talvenor/transfer/ElementHeaderReader.h"

#include <span>
#include <string>

#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"

namespace
{
// A field of the header: what is said when the stream ends inside it, and when it ends right before it.
struct HeaderField
{
   unsigned int itsSize;
   const char* itsReader;
   const char* itsWhole;
   const char* itsEndText; // null for the first field: the end before it is no failure
};

constexpr HeaderField kGroup = {2, "VR::ReadGroup", "sizeof(itsGroup)", nullptr};
constexpr HeaderField kElement = {2, "VR::ReadElement", "sizeof(itsElement)",
                                  "ExplicitInputTransferSyntax::NextVR(): EOF while reading element code"};
constexpr HeaderField kTypeCode = {2, "VR::ReadTypeCode", "sizeof(itsTypeCode)",
                                   "ExplicitInputTransferSyntax::NextVR(): EOF while reading type code"};
constexpr HeaderField kFiller = {2, "VR::ReadFiller16", "sizeof(UINT16)",
                                 "ExplicitInputTransferSyntax::NextVR(): EOF while reading 2 reserved filler bytes"};
constexpr char kLengthEnd[] = "ExplicitInputTransferSyntax::NextVR(): EOF while reading element length";
constexpr HeaderField kLength16 = {2, "VR::ReadLength16", "sizeof(UINT16)", kLengthEnd};
constexpr HeaderField kLength32 = {4, "VR::ReadLength32", "sizeof(UINT32)", kLengthEnd};
constexpr char kImplicitEnd[] = "ImplicitInputTransferSyntax::NextVR(): EOF while reading element code or length";

// The layouts, PS3.5 7.1.2 and 7.1.3.
constexpr HeaderField kDelimiterLayout[] = {kGroup, kElement, kLength32};
constexpr HeaderField kShortLayout[] = {kGroup, kElement, kTypeCode, kLength16};
constexpr HeaderField kLongLayout[] = {kGroup, kElement, kTypeCode, kFiller, kLength32};
constexpr HeaderField kImplicitLayout[] = {kGroup,
                                           {2, "VR::ReadElement", "sizeof(itsElement)", kImplicitEnd},
                                           {4, "VR::ReadLength32", "sizeof(UINT32)", kImplicitEnd}};

// Throws for the field in which a header of theLayout ends after theCount bytes (more than none).
[[noreturn]] void ThrowCut(std::span<const HeaderField> theLayout, unsigned int theCount)
{
   auto aField = theLayout.begin();
   while (theCount >= aField->itsSize)
   {
      theCount -= aField->itsSize;
      ++aField;
   }
   const std::string aText = theCount == 0 ? aField->itsEndText
                                           : std::string(aField->itsReader) + "(EndianHandlingReader): Short read " +
                                                 std::to_string(theCount) + " bytes != " + aField->itsWhole;
   throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
}

// The layout of an explicit header of which theCount bytes, at least those of the tag, are there.
std::span<const HeaderField> LayoutOf(const ElementHeader& theHeader, const unsigned char* theBytes,
                                      unsigned int theCount)
{
   if (theHeader.itsGroup == ElementHeader::kDelimiterGroup)
   {
      return kDelimiterLayout;
   }
   if (theCount >= 6 && HasLongHeaderVRCode(MakeVRCode(static_cast<char>(theBytes[4]), static_cast<char>(theBytes[5]))))
   {
      return kLongLayout;
   }
   return kShortLayout;
}

void SetTag(ElementHeader& theHeader, const unsigned char* theBytes, TNEndian::EndianType theEndian)
{
   theHeader.itsGroup = TNEndian::Load<UINT16>(theBytes, theEndian);
   theHeader.itsElement = TNEndian::Load<UINT16>(theBytes + 2, theEndian);
}

// Every explicit header has eight bytes or more: the tag, then the type and a short length, or the length of a
// delimiter.
constexpr unsigned int kTagSize = 4;
constexpr unsigned int kShortSize = 8;
constexpr unsigned int kLongSize = 12;

// What follows the tag. theBytes holds the first eight bytes of the header and has room for all of a long one.
void ReadTypeAndLength(InputStream& theStream, TNEndian::EndianType theEndian, unsigned char* theBytes,
                       ElementHeader& theHeader)
{
   if (theHeader.itsGroup == ElementHeader::kDelimiterGroup)
   {
      theHeader.itsLength = TNEndian::Load<UINT32>(theBytes + kTagSize, theEndian);
      return;
   }
   theHeader.itsTypeCode = TNEndian::Load<UINT16, TNEndian::BigEndian>(theBytes + kTagSize); // first letter first
   if (!HasLongHeaderVRCode(theHeader.itsTypeCode))
   {
      theHeader.itsLength = TNEndian::Load<UINT16>(theBytes + 6, theEndian);
      return;
   }
   const unsigned int aCount = theStream.ReadFully(theBytes + kShortSize, kLongSize - kShortSize);
   if (aCount < kLongSize - kShortSize)
   {
      ThrowCut(kLongLayout, kShortSize + aCount);
   }
   theHeader.itsLength = TNEndian::Load<UINT32>(theBytes + kShortSize, theEndian);
}
} // namespace

HeaderEnd ReadExplicitHeader(InputStream& theStream, TNEndian::EndianType theEndian, StopLimit theLimit,
                             ElementHeader& theHeader)
{
   // Where decoding may stop at this element, its tag is read alone first.
   unsigned char aBytes[kLongSize];
   const unsigned int aFirstRead = theLimit.IsSet() ? kTagSize : kShortSize;
   unsigned int aCount = theStream.ReadFully(aBytes, aFirstRead);
   if (aCount == 0)
   {
      return HeaderEnd::EndOfStream;
   }
   if (aCount < kTagSize)
   {
      ThrowCut(kShortLayout, aCount);
   }
   SetTag(theHeader, aBytes, theEndian);
   if (theLimit.IsReached(theHeader))
   {
      return HeaderEnd::AtStopLimit;
   }
   if (aFirstRead == kTagSize)
   {
      aCount += theStream.ReadFully(aBytes + kTagSize, kShortSize - kTagSize);
   }
   if (aCount < kShortSize)
   {
      ThrowCut(LayoutOf(theHeader, aBytes, aCount), aCount);
   }
   ReadTypeAndLength(theStream, theEndian, aBytes, theHeader);
   return HeaderEnd::Whole;
}

HeaderEnd ReadImplicitHeader(InputStream& theStream, TNEndian::EndianType theEndian, StopLimit theLimit,
                             ElementHeader& theHeader)
{
   unsigned char aBytes[8];
   const unsigned int aCount = theStream.ReadFully(aBytes, sizeof aBytes);
   if (aCount < sizeof aBytes)
   {
      if (aCount == 0)
      {
         return HeaderEnd::EndOfStream;
      }
      ThrowCut(kImplicitLayout, aCount);
   }
   SetTag(theHeader, aBytes, theEndian);
   theHeader.itsLength = TNEndian::Load<UINT32>(aBytes + 4, theEndian);
   return theLimit.IsReached(theHeader) ? HeaderEnd::AtStopLimit : HeaderEnd::Whole;
}

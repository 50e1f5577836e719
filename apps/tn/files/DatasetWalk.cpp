#include "apps/tn/files/DatasetWalk.h"

#include <cstdio>
#include <string_view>

#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/FileWindow.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/io/TNEndian.h"

namespace
{
constexpr UINT32 kUndefined = 0xFFFFFFFF;
constexpr std::size_t kMaximumDepth = 256;
constexpr UINT32 kLongestUID = 64; // PS3.5 9.1

constexpr UINT32 kSOPClass = 0x00080016;
constexpr UINT32 kSOPInstance = 0x00080018;
constexpr UINT32 kPixelData = 0x7FE00010;
constexpr UINT32 kTrailingPadding = 0xFFFCFFFC;
constexpr UINT32 kItem = 0xFFFEE000;
constexpr UINT32 kItemEnd = 0xFFFEE00D;
constexpr UINT32 kSequenceEnd = 0xFFFEE0DD;
constexpr UINT16 kDelimiterGroup = 0xFFFE;

// Implicit VR little endian, whatever is around it: the content of a sequence of unknown VR (PS3.5 6.2.2).
constexpr DatasetSyntax kUnknownContent = {DatasetSyntax::Pixels::Native, false, true};

std::string Text(UINT32 theTag)
{
   char aText[16];
   std::snprintf(aText, sizeof aText, "(%04X,%04X)", theTag >> 16, theTag & 0xFFFF);
   return aText;
}

template <class Number>
Number Load(const unsigned char* theBytes, bool theIsLittleEndian)
{
   return theIsLittleEndian ? TNEndian::Load<Number, TNEndian::LittleEndian>(theBytes)
                            : TNEndian::Load<Number, TNEndian::BigEndian>(theBytes);
}
} // namespace

DatasetWalk::DatasetWalk(FileWindow& theFile, UINT64 theStart, const DatasetSyntax& theSyntax)
    : itsFile(theFile), itsPosition(theStart), itsEnd(theFile.GetSize()), itsLevels{{Kind::Dataset, theSyntax, 0}}
{}

void DatasetWalk::Run()
{
   while (itsPosition < itsEnd || itsLevels.size() > 1)
   {
      const UINT64 aStart = itsPosition;
      const Header aHeader = ReadHeader();
      switch (itsLevels.back().itsKind)
      {
      case Kind::Dataset:
         if (!TakeTop(aHeader))
         {
            itsEnd = aStart;
            return;
         }
         break;
      case Kind::Item: TakeInItem(aHeader); break;
      case Kind::Sequence:
      case Kind::Fragments: TakeInSequence(aHeader); break;
      }
   }
}

const unsigned char* DatasetWalk::Require(unsigned int theCount)
{
   const unsigned char* const aBytes = itsFile.At(itsPosition, theCount);
   if (aBytes == nullptr)
   {
      Fail(itsPosition == itsEnd ? "the file ends" : "the file ends inside the header of an element");
   }
   return aBytes;
}

DatasetWalk::Header DatasetWalk::ReadHeader()
{
   const DatasetSyntax& aSyntax = itsLevels.back().itsSyntax;
   const bool isLittle = aSyntax.itsIsLittleEndian;
   const unsigned char* aBytes = Require(8);
   const UINT16 aGroup = Load<UINT16>(aBytes, isLittle);
   Header aHeader{static_cast<UINT32>(aGroup << 16 | Load<UINT16>(aBytes + 2, isLittle)), 0, 0};
   if (!aSyntax.itsIsExplicit || aGroup == kDelimiterGroup)
   {
      aHeader.itsLength = Load<UINT32>(aBytes + 4, isLittle);
      itsPosition += 8;
      return aHeader;
   }
   aHeader.itsVR = MakeVRCode(static_cast<char>(aBytes[4]), static_cast<char>(aBytes[5]));
   if (!HasLongHeaderVRCode(aHeader.itsVR) && !IsLaterVR(aHeader.itsVR))
   {
      aHeader.itsLength = Load<UINT16>(aBytes + 6, isLittle);
      itsPosition += 8;
      return aHeader;
   }
   aHeader.itsLength = Load<UINT32>(Require(12) + 8, isLittle);
   itsPosition += 12;
   return aHeader;
}

// False when the dataset ends before this.
bool DatasetWalk::TakeTop(const Header& theHeader)
{
   const UINT32 aTag = theHeader.itsTag;
   if (aTag == kTrailingPadding && theHeader.itsLength > itsEnd - itsPosition)
   {
      return false; // padding of whatever length (PS3.10 7.2)
   }
   if ((aTag == kItemEnd || aTag == kSequenceEnd) && itsPosition == itsEnd)
   {
      return false; // harmless, and not part of it
   }
   if (aTag >> 16 == kDelimiterGroup)
   {
      Fail("an item or a delimiter stands outside any sequence");
   }
   const UINT32 aGroup = aTag >> 16;
   itsIsIrregular = itsIsIrregular || aGroup < 4; // groups 0000 and 0002, and those that nothing may have (PS3.5 7.1)
   if (aTag == kSOPClass || aTag == kSOPInstance)
   {
      TakeIdentity(theHeader);
   }
   TakeElement(theHeader);
   return true;
}

void DatasetWalk::TakeIdentity(const Header& theHeader)
{
   RWCString& aUID = theHeader.itsTag == kSOPClass ? itsSOPClassUID : itsSOPInstanceUID;
   if (theHeader.itsLength > kLongestUID)
   {
      Fail(Text(theHeader.itsTag) + " is longer than a UID can be");
   }
   if (const unsigned char* const aBytes = itsFile.At(itsPosition, theHeader.itsLength); aBytes != nullptr)
   {
      aUID.assign(reinterpret_cast<const char*>(aBytes), theHeader.itsLength);
      aUID.erase(aUID.find_last_not_of(std::string_view(" \0", 2)) + 1);
   }
}

void DatasetWalk::TakeInSequence(const Header& theHeader)
{
   const Level aLevel = itsLevels.back();
   if (theHeader.itsTag == kSequenceEnd)
   {
      itsLevels.pop_back();
   }
   else if (theHeader.itsTag != kItem)
   {
      Fail(Text(theHeader.itsTag) + " stands where an item should begin");
   }
   else if (theHeader.itsLength != kUndefined)
   {
      StepOver(theHeader);
   }
   else if (aLevel.itsKind == Kind::Fragments)
   {
      Fail("a fragment has no length");
   }
   else
   {
      Enter(Kind::Item, aLevel.itsSyntax, aLevel.itsTag);
   }
}

void DatasetWalk::TakeInItem(const Header& theHeader)
{
   if (theHeader.itsTag == kItemEnd)
   {
      itsLevels.pop_back();
   }
   else if (theHeader.itsTag >> 16 == kDelimiterGroup)
   {
      Fail(Text(theHeader.itsTag) + " stands where an item should end");
   }
   else
   {
      TakeElement(theHeader);
   }
}

void DatasetWalk::TakeElement(const Header& theHeader)
{
   theHeader.itsLength == kUndefined ? TakeUndefinedLength(theHeader) : StepOver(theHeader);
}

void DatasetWalk::TakeUndefinedLength(const Header& theHeader)
{
   const DatasetSyntax aSyntax = itsLevels.back().itsSyntax;
   const UINT16 aVR = theHeader.itsVR;
   if (theHeader.itsTag == kPixelData || aVR == VRCode::OB || aVR == VRCode::OW)
   {
      if (aSyntax.IsNative())
      {
         Fail(Text(theHeader.itsTag) + " is encapsulated, which the transfer syntax is not");
      }
      Enter(Kind::Fragments, aSyntax, theHeader.itsTag);
   }
   else if (aVR == VRCode::SQ || aVR == VRCode::None)
   {
      Enter(Kind::Sequence, aSyntax, theHeader.itsTag);
   }
   else if (aVR == VRCode::UN)
   {
      Enter(Kind::Sequence, kUnknownContent, theHeader.itsTag);
   }
   else
   {
      Fail(Text(theHeader.itsTag) + " has no length, which its VR does not allow");
   }
}

void DatasetWalk::StepOver(const Header& theHeader)
{
   const UINT64 aRest = itsEnd - itsPosition;
   if (theHeader.itsLength > aRest)
   {
      Fail("the file ends inside " + Text(theHeader.itsTag) + ", of whose " + std::to_string(theHeader.itsLength) +
           " bytes " + std::to_string(aRest) + " are there");
   }
   itsIsIrregular = itsIsIrregular || theHeader.itsLength % 2 != 0;
   itsPosition += theHeader.itsLength;
}

void DatasetWalk::Enter(Kind theKind, const DatasetSyntax& theSyntax, UINT32 theTag)
{
   if (itsLevels.size() > kMaximumDepth)
   {
      Fail("sequences are nested deeper than " + std::to_string(kMaximumDepth) + " levels");
   }
   itsLevels.push_back({theKind, theSyntax, theTag});
}

void DatasetWalk::Fail(const std::string& theText) const
{
   throw IncompleteDataset(theText + " (" + Place() + "byte " + std::to_string(itsPosition) + ")");
}

// "in (0008,1115) in (0008,1199), ": an item has the tag of its sequence.
std::string DatasetWalk::Place() const
{
   std::string aText;
   for (const Level& aLevel : itsLevels)
   {
      if (aLevel.itsKind == Kind::Sequence || aLevel.itsKind == Kind::Fragments)
      {
         aText += "in " + Text(aLevel.itsTag) + " ";
      }
   }
   if (!aText.empty())
   {
      aText.back() = ',';
      aText += ' ';
   }
   return aText;
}

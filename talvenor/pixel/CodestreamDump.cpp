#include "talvenor/pixel/CodestreamDump.h"

#include <algorithm>

namespace
{

constexpr std::size_t kOffsetWidth = 10;
constexpr std::size_t kNameWidth = 14;
constexpr std::size_t kLengthWidth = 10;

RWCString Aligned(const RWCString& theOffset, const RWCString& theName, const RWCString& theLength,
                  const RWCString& theDescription)
{
   const auto aSpace = [](std::size_t theWidth, const RWCString& theText) {
      return RWCString(theWidth - std::min(theWidth, theText.size()), ' ');
   };
   return aSpace(kOffsetWidth, theOffset) + theOffset + "  " + theName + aSpace(kNameWidth, theName) +
          aSpace(kLengthWidth, theLength) + theLength + (theDescription.empty() ? "" : "  " + theDescription);
}

} // namespace

CodestreamDump::CodestreamDump(std::ostream& theOutput, const RWCString& theNameTitle) : itsOutput(theOutput)
{
   itsOutput << Aligned("Offset", theNameTitle, "Length", "Description") << '\n';
}

void CodestreamDump::Line(INT64 theOffset, const RWCString& theName, INT64 theLength, const RWCString& theDescription)
{
   const RWCString anIndentation(2 * static_cast<std::size_t>(itsDepth), ' ');
   itsOutput << Columns(theOffset, anIndentation + theName, theLength, theDescription) << '\n';
}

RWCString CodestreamDump::Columns(INT64 theOffset, const RWCString& theName, INT64 theLength,
                                  const RWCString& theDescription)
{
   const auto aText = [](INT64 theNumber) { return theNumber >= 0 ? std::to_string(theNumber) : ""; };
   return Aligned(aText(theOffset), theName, aText(theLength), theDescription);
}

UINT32 SegmentBody::Number(std::size_t theOffset, std::size_t theCount) const
{
   UINT32 aNumber = 0;
   for (const unsigned char aByte : itsBytes.subspan(theOffset, theCount))
   {
      aNumber = aNumber << 8 | aByte;
   }
   return aNumber;
}

RWCString SegmentBody::Text(std::size_t theOffset, std::size_t theCount) const
{
   const auto aBytes = itsBytes.subspan(theOffset, std::min(theCount, itsBytes.size() - theOffset));
   RWCString aText(aBytes.begin(), std::find(aBytes.begin(), aBytes.end(), '\0'));
   const auto isUnprintable = [](char theChar) { return theChar < ' ' || theChar > '~'; };
   std::replace_if(aText.begin(), aText.end(), isUnprintable, '.');
   aText.erase(aText.find_last_not_of(' ') + 1);
   return aText;
}

RWCString WithDetail(std::span<const SegmentDetail> theTable, int theCode, const SegmentBody& theBody,
                     const RWCString& theDescription)
{
   const auto fits = [&](const SegmentDetail& theRow) {
      return theCode >= theRow.itsFirst && theCode <= theRow.itsLast && theBody.GetSize() >= theRow.itsSize;
   };
   const auto aRow = std::find_if(theTable.begin(), theTable.end(), fits);
   const RWCString aDetail = aRow != theTable.end() ? aRow->itsText(theBody) : "";
   return aDetail.empty() ? theDescription : theDescription + ": " + aDetail;
}

RWCString Counted(INT64 theNumber, const RWCString& theNoun)
{
   return std::to_string(theNumber) + " " + theNoun + (theNumber == 1 ? "" : "s");
}

// How the scanners of compressed images print: in columns, a line for each marker or box. Not part of the library's
// interface.
#pragma once

#include <ostream>
#include <span>

#include "talvenor/foundation/BasicTypes.h"

class CodestreamDump
{
public:
   // theOutput is borrowed. theNameTitle heads the column of names.
   CodestreamDump(std::ostream& theOutput, const RWCString& theNameTitle);

   // What is printed from here to the matching Leave stands inside what was printed last.
   void Enter() { ++itsDepth; }
   void Leave() { --itsDepth; }
   int GetDepth() const { return itsDepth; }

   // No offset and no length is printed below 0.
   void Line(INT64 theOffset, const RWCString& theName, INT64 theLength, const RWCString& theDescription);

   // What Line prints, as text without an end of line.
   static RWCString Columns(INT64 theOffset, const RWCString& theName, INT64 theLength,
                            const RWCString& theDescription);

private:
   std::ostream& itsOutput;
   int itsDepth = 0;
};

// The first bytes of a segment or box, for descriptions.
class SegmentBody
{
public:
   SegmentBody() = default;
   explicit SegmentBody(std::span<const unsigned char> theBytes) : itsBytes(theBytes) {}

   std::size_t GetSize() const { return itsBytes.size(); }

   // The big-endian number of theCount bytes there, which must be within GetSize.
   UINT32 Number(std::size_t theOffset, std::size_t theCount) const;

   // The characters from there up to a NUL or theCount, without trailing blanks, "." for what is not printable ASCII.
   RWCString Text(std::size_t theOffset, std::size_t theCount) const;

private:
   std::span<const unsigned char> itsBytes;
};

// What is worth telling about the content of a segment or box of a kind.
struct SegmentDetail
{
   int itsFirst; // codes of markers or boxes, first to last
   int itsLast;
   std::size_t itsSize; // of the body, at least
   RWCString (*itsText)(const SegmentBody& theBody);
};

// The description with the detail of the row that fits, if there is one: "Start of scan: 3 components".
RWCString WithDetail(std::span<const SegmentDetail> theTable, int theCode, const SegmentBody& theBody,
                     const RWCString& theDescription);

// "1 component", "3 components".
RWCString Counted(INT64 theNumber, const RWCString& theNoun);

// The dump of JPEG data.
#include <algorithm>

#include "talvenor/pixel/CodestreamDump.h"
#include "talvenor/pixel/JPEGFileInputStream.h"

namespace
{

// Fields: ISO 10918-1 B.2.2, B.2.3, B.2.4.
RWCString FrameDetail(const SegmentBody& theBody)
{
   return std::to_string(theBody.Number(3, 2)) + " x " + std::to_string(theBody.Number(1, 2)) + ", " +
          Counted(theBody.Number(5, 1), "component") + ", " + Counted(theBody.Number(0, 1), "bit");
}

RWCString ScanDetail(const SegmentBody& theBody)
{
   return Counted(theBody.Number(0, 1), "component");
}

RWCString NumberDetail(const SegmentBody& theBody)
{
   return std::to_string(theBody.Number(0, 2));
}

RWCString IdentifierDetail(const SegmentBody& theBody)
{
   return theBody.Text(0, 15);
}

RWCString TextDetail(const SegmentBody& theBody)
{
   return theBody.Text(0, theBody.GetSize());
}

constexpr SegmentDetail kDetails[] = {
    {0xC0, 0xC3, 6, FrameDetail},      // SOF0 to SOF3
    {0xC5, 0xC7, 6, FrameDetail},      // SOF5 to SOF7
    {0xC9, 0xCB, 6, FrameDetail},      // SOF9 to SOF11
    {0xCD, 0xCF, 6, FrameDetail},      // SOF13 to SOF15
    {0xF7, 0xF7, 6, FrameDetail},      // SOF55
    {0xDA, 0xDA, 1, ScanDetail},       // SOS
    {0xDC, 0xDD, 2, NumberDetail},     // DNL, DRI
    {0xE0, 0xEF, 1, IdentifierDetail}, // APPn
    {0xFE, 0xFE, 1, TextDetail},       // COM
};

// What stands between two markers.
struct DataRun
{
   void Print(CodestreamDump& theDump, INT64 theEnd) const
   {
      if (theEnd > itsBegin)
      {
         const RWCString aRestarts = itsRestarts > 0 ? ", " + Counted(itsRestarts, "restart marker") : "";
         theDump.Line(itsBegin, "-", theEnd - itsBegin, itsIsInScan ? "Entropy-coded data" + aRestarts : "No marker");
      }
   }

   INT64 itsBegin;
   bool itsIsInScan = false;
   int itsRestarts = 0;
};

} // namespace

void JPEGFileInputStream::dumpJPEGMarkers(std::ostream& theOutput)
{
   CodestreamDump aDump(theOutput, "Marker");
   DataRun aRun{GetPosition()};
   bool isJPEGLS = false;
   int aMarker = 0;
   int aLength = 0;
   // JPEG-LS stuffs a bit where JPEG stuffs a byte: 0xFF and a byte below 0x80 are data there (ISO 14495-1 A.1).
   while (ReadMarker(isJPEGLS && aRun.itsIsInScan ? 0x80 : 0x01, aMarker, aLength) >= 0)
   {
      if (aRun.itsIsInScan && aMarker >= M_RST0 && aMarker <= M_RST7)
      {
         ++aRun.itsRestarts;
         continue;
      }
      const bool hasSegment = isMarkerHasParameters(aMarker);
      aRun.Print(aDump, GetPosition() - (hasSegment ? 4 : 2));
      PrintMarker(aDump, aMarker, aLength);
      if (hasSegment)
      {
         SkipSegment(aMarker, aLength, "dumpJPEGMarkers(std::ostream&)"); // at the end of the stream no marker follows
      }
      isJPEGLS = isJPEGLS || aMarker == M_SOF55;
      aRun = {GetPosition(), aMarker == M_SOS};
   }
   aRun.Print(aDump, GetPosition());
   if (aMarker != M_EOI)
   {
      aDump.Line(GetPosition(), "-", -1, "The data ends here, without EOI");
   }
}

// Stands behind the marker and its length.
void JPEGFileInputStream::PrintMarker(CodestreamDump& theDump, int theMarker, int theLength)
{
   const bool hasSegment = isMarkerHasParameters(theMarker);
   unsigned char aBytes[64];
   const unsigned int aCount = Peek(aBytes, std::clamp<int>(theLength - 2, 0, sizeof aBytes));
   theDump.Line(GetPosition() - (hasSegment ? 4 : 2), getMarkerName(theMarker), hasSegment ? theLength : -1,
                WithDetail(kDetails, theMarker, SegmentBody({aBytes, aCount}), getMarkerDescription(theMarker)));
}

// The dumps of JPEG 2000 data.
#include <algorithm>

#include "talvenor/foundation/TNTrace.h"
#include "talvenor/pixel/CodestreamDump.h"
#include "talvenor/pixel/CodestreamNames.h"
#include "talvenor/pixel/JP2FileInputStream.h"

namespace
{

constexpr int kDeepest = 16; // boxes inside boxes; those in deeper ones are not looked at

// Fields: ISO 15444-1 I.5 for boxes, Annex A for markers.
RWCString FileTypeDetail(const SegmentBody& theBody)
{
   return theBody.Text(0, 4); // "jp2 "
}

RWCString ImageHeaderDetail(const SegmentBody& theBody)
{
   const UINT32 aDepth = theBody.Number(10, 1); // less 1; the high bit says that samples are signed
   return std::to_string(theBody.Number(4, 4)) + " x " + std::to_string(theBody.Number(0, 4)) + ", " +
          Counted(theBody.Number(8, 2), "component") + ", " +
          (aDepth == 0xFF ? "varying depth" : Counted((aDepth & 0x7F) + 1, "bit"));
}

RWCString ColourDetail(const SegmentBody& theBody)
{
   constexpr UINT32 kEnumerated = 1;
   if (theBody.Number(0, 1) != kEnumerated || theBody.GetSize() < 7)
   {
      return "ICC profile";
   }
   switch (const UINT32 aSpace = theBody.Number(3, 4))
   {
   case 16: return "sRGB";
   case 17: return "greyscale";
   case 18: return "sYCC";
   default: return "colour space " + std::to_string(aSpace);
   }
}

RWCString SizeDetail(const SegmentBody& theBody)
{
   const auto aSize = [&](std::size_t theSize, std::size_t theOrigin) {
      return INT64{theBody.Number(theSize, 4)} - INT64{theOrigin != 0 ? theBody.Number(theOrigin, 4) : 0};
   };
   return std::to_string(aSize(2, 10)) + " x " + std::to_string(aSize(6, 14)) + ", tiles of " +
          std::to_string(aSize(18, 0)) + " x " + std::to_string(aSize(22, 0)) + ", " +
          Counted(theBody.Number(34, 2), "component");
}

RWCString CodingDetail(const SegmentBody& theBody)
{
   static constexpr const char* kOrders[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"};
   const UINT32 anOrder = theBody.Number(1, 1);
   return (anOrder < std::size(kOrders) ? kOrders[anOrder] : "order " + std::to_string(anOrder)) + ", " +
          Counted(theBody.Number(2, 2), "layer") + ", " + Counted(theBody.Number(5, 1), "decomposition level") + ", " +
          (theBody.Number(9, 1) == 1 ? "5-3 reversible" : "9-7 irreversible");
}

RWCString TilePartDetail(const SegmentBody& theBody)
{
   const UINT32 aCount = theBody.Number(7, 1);
   const UINT32 aLength = theBody.Number(2, 4);
   return "tile " + std::to_string(theBody.Number(0, 2)) + ", part " + std::to_string(theBody.Number(6, 1)) +
          (aCount != 0 ? " of " + std::to_string(aCount) : "") + ", " +
          (aLength != 0 ? Counted(aLength, "byte") : "up to EOC");
}

RWCString CommentDetail(const SegmentBody& theBody)
{
   constexpr UINT32 kLatin = 1;
   return theBody.Number(0, 2) == kLatin ? theBody.Text(2, theBody.GetSize()) : "binary";
}

constexpr SegmentDetail kBoxDetails[] = {
    {0x66747970, 0x66747970, 4, FileTypeDetail},     // ftyp
    {0x69686472, 0x69686472, 11, ImageHeaderDetail}, // ihdr
    {0x636F6C72, 0x636F6C72, 3, ColourDetail},       // colr
};

constexpr SegmentDetail kMarkerDetails[] = {
    {JP2FileInputStream::M_SIZ, JP2FileInputStream::M_SIZ, 36, SizeDetail},
    {JP2FileInputStream::M_COD, JP2FileInputStream::M_COD, 10, CodingDetail},
    {JP2FileInputStream::M_SOT, JP2FileInputStream::M_SOT, 8, TilePartDetail},
    {JP2FileInputStream::M_COM, JP2FileInputStream::M_COM, 2, CommentDetail},
};

// Sets a pointer for a scope.
class WhileDumping
{
public:
   WhileDumping(CodestreamDump*& thePlace, CodestreamDump& theDump) : itsPlace(thePlace) { itsPlace = &theDump; }
   ~WhileDumping() { itsPlace = nullptr; }
   WhileDumping(const WhileDumping&) = delete;
   WhileDumping& operator=(const WhileDumping&) = delete;

private:
   CodestreamDump*& itsPlace;
};

} // namespace

void JP2FileInputStream::dumpJP2Boxes(std::ostream& theOutput)
{
   static constexpr unsigned char kCodestream[] = {0xFF, 0x4F, 0xFF, 0x51}; // SOC, SIZ
   unsigned char aBytes[sizeof kCodestream];
   const unsigned int aCount = Peek(aBytes, sizeof aBytes);
   if (std::equal(aBytes, aBytes + aCount, std::begin(kCodestream), std::end(kCodestream)))
   {
      dumpJP2CodestreamBox(theOutput);
      return;
   }
   CodestreamDump aDump(theOutput, "Box");
   const WhileDumping aScope(itsDump, aDump);
   if (!DumpBoxes(kNoLimit))
   {
      aDump.Line(-1, "-", -1, "The data ends inside a box");
   }
}

void JP2FileInputStream::dumpJP2CodestreamBox(std::ostream& theOutput, INT64 theMaxLength)
{
   CodestreamDump aDump(theOutput, "Marker");
   const WhileDumping aScope(itsDump, aDump);
   DumpCodestream(theMaxLength > 0 ? GetPosition() + std::min(theMaxLength, kNoLimit - GetPosition()) : kNoLimit);
}

// False when the stream ends inside a box.
bool JP2FileInputStream::DumpBoxes(INT64 theEnd)
{
   while (theEnd - GetPosition() >= 8)
   {
      const INT64 aPosition = GetPosition();
      int aType = 0;
      INT64 aLength = 0;
      if (readBoxHeader(aType, aLength) < 0)
      {
         return theEnd == kNoLimit && GetPosition() == aPosition;
      }
      PrintBox(aPosition, aLength, aType);
      const INT64 aRoom = theEnd - aPosition;
      const INT64 anEnd = aLength == 0 || aLength > aRoom ? theEnd : aPosition + aLength;
      if (!DumpBox(aType, anEnd))
      {
         return false;
      }
   }
   return true;
}

// Behind the header of a box that ends at theEnd.
bool JP2FileInputStream::DumpBox(int theType, INT64 theEnd)
{
   const CodestreamNames::BoxRow* const aRow = CodestreamNames::FindBox(static_cast<UINT32>(theType));
   bool isWhole = true;
   itsDump->Enter();
   if (theType == B_JP2C)
   {
      DumpCodestream(theEnd);
   }
   else if (aRow != nullptr && aRow->itsHasBoxes && itsDump->GetDepth() < kDeepest)
   {
      isWhole = DumpBoxes(theEnd);
   }
   itsDump->Leave();
   const bool isToTheEnd = theEnd == kNoLimit;
   return isWhole && (SkipFully(theEnd - GetPosition()) || isToTheEnd);
}

void JP2FileInputStream::DumpCodestream(INT64 theEnd)
{
   if (WalkCodestream(GetPosition(), theEnd, theEnd) < 0)
   {
      itsDump->Line(-1, "-", -1, "The codestream ends without EOC");
   }
}

void JP2FileInputStream::PrintBox(INT64 thePosition, INT64 theLength, int theType)
{
   unsigned char aBytes[16];
   const INT64 aBody = theLength > 0 ? theLength - (GetPosition() - thePosition) : INT64{sizeof aBytes};
   const unsigned int aCount =
       Peek(aBytes, static_cast<unsigned int>(std::clamp<INT64>(aBody, 0, INT64{sizeof aBytes})));
   const RWCString aDescription =
       WithDetail(kBoxDetails, theType, SegmentBody({aBytes, aCount}), getBoxDescription(theType));
   itsDump->Line(thePosition, getBoxName(theType), theLength, aDescription);
}

// Stands behind the marker and its length.
void JP2FileInputStream::PrintMarker(int theType, int theLength)
{
   unsigned char aBytes[64];
   const unsigned int aCount = Peek(aBytes, std::clamp<int>(theLength - 2, 0, sizeof aBytes));
   const RWCString aDescription =
       WithDetail(kMarkerDetails, theType, SegmentBody({aBytes, aCount}), getMarkerDescription(theType));
   const INT64 aPosition = GetPosition() - (theLength > 0 ? 4 : 2);
   const INT64 aLength = theLength > 0 ? theLength : -1;
   if (itsDump != nullptr)
   {
      itsDump->Line(aPosition, getMarkerName(theType), aLength, aDescription);
      return;
   }
   LogEntry anEntry(gTNTracer);
   anEntry << CodestreamDump::Columns(aPosition, getMarkerName(theType), aLength, aDescription) << "\n";
}

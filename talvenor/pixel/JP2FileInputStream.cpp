#include "talvenor/pixel/JP2FileInputStream.h"

#include <algorithm>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/CodestreamNames.h"

namespace
{

constexpr int kSOTLength = 10;         // of the segment, without the marker
constexpr INT64 kRoomForTilePart = 12; // what there must be more of behind a tile-part, before a maximum

constexpr char kWalk[] = "JP2FileInputStream::seekToEndOfCodestream(INT64 theCurrentOffset, INT64 theMaxLength): ";
constexpr char kTileHeader[] = "JP2FileInputStream::positionToStartOfData(INT64 theCurrentOffset, INT64 theMaxLength, "
                               "bool theTraceMarkersFlag): ";

[[noreturn]] void Fail(const RWCString& theText, TNResultCode theCode = TN_INVALID_ENCODING)
{
   throw StreamIOException(theText.c_str(), theCode, 0);
}

// Markers whose segments may stand in the main header and in a tile-part header (ISO 15444-1 Table A.2).
struct HeaderMarker
{
   int itsType;
   bool itsIsInMainHeader;
   bool itsIsInTileHeader;
};

constexpr HeaderMarker kHeaderMarkers[] = {
    {JP2FileInputStream::M_SIZ, true, false}, //
    {JP2FileInputStream::M_COD, true, true},  //
    {JP2FileInputStream::M_COC, true, true},  //
    {JP2FileInputStream::M_TLM, true, false}, //
    {JP2FileInputStream::M_PLM, true, false}, //
    {JP2FileInputStream::M_PLT, false, true}, //
    {JP2FileInputStream::M_QCD, true, true},  //
    {JP2FileInputStream::M_QCC, true, true},  //
    {JP2FileInputStream::M_RGN, true, true},  //
    {JP2FileInputStream::M_POC, true, true},  //
    {JP2FileInputStream::M_PPM, true, false}, //
    {JP2FileInputStream::M_PPT, false, true}, //
    {JP2FileInputStream::M_CRG, true, false}, //
    {JP2FileInputStream::M_COM, true, true},  //
};

bool IsIn(bool HeaderMarker::*theHeader, int theType)
{
   return std::any_of(std::begin(kHeaderMarkers), std::end(kHeaderMarkers),
                      [=](const HeaderMarker& theRow) { return theRow.itsType == theType && theRow.*theHeader; });
}

// Markers alone, without a segment: delimiters and 0xFF30 to 0xFF3F (ISO 15444-1 A.1.3). What does not begin with 0xFF
// is no marker.
bool HasSegment(int theType)
{
   switch (theType)
   {
   case JP2FileInputStream::M_SOC:
   case JP2FileInputStream::M_EPH:
   case JP2FileInputStream::M_SOD:
   case JP2FileInputStream::M_EOC: return false;
   default: return theType >= 0xFF00 && (theType < 0xFF30 || theType > 0xFF3F);
   }
}

} // namespace

JP2FileInputStream::JP2FileInputStream(InputStream& theStream, INT64 theLengthLimit)
    : LookAheadInputStream(theStream, theLengthLimit > 0 ? theLengthLimit : kNoLimit)
{}

JP2FileInputStream::JP2FileInputStream(InputStream* theStream, INT64 theLengthLimit)
    : LookAheadInputStream(theStream, theLengthLimit > 0 ? theLengthLimit : kNoLimit)
{}

int JP2FileInputStream::readBoxHeader(int& theBoxType, INT64& theLengthReturn)
{
   const INT64 aLength = readBoxLength();
   const INT64 aType = aLength >= 0 ? readBoxType() : -1;
   if (aType < 0)
   {
      return -1;
   }
   theBoxType = static_cast<int>(aType);
   theLengthReturn = aLength;
   if (aLength != 1)
   {
      return 8;
   }
   const UINT64 anExtendedLength = readExtendedBoxLength();
   if (anExtendedLength > static_cast<UINT64>(std::numeric_limits<INT64>::max()))
   {
      Fail("JP2FileInputStream::readBoxHeader(int& theBoxType, INT64& theLengthReturn): Extended length (" +
               std::to_string(anExtendedLength) + " bytes) > (2**63-1) bytes - I don't handle boxes that large",
           TN_INTERNAL_ERROR);
   }
   theLengthReturn = static_cast<INT64>(anExtendedLength);
   return anExtendedLength != 0 ? 16 : -1;
}

INT64 JP2FileInputStream::readBoxLength()
{
   UINT32 aLength = 0;
   if (!NextValue(aLength))
   {
      return -1;
   }
   if (aLength >= 2 && aLength <= 7)
   {
      Fail("JP2FileInputStream::readBoxLength(): Invalid box length: " + std::to_string(aLength));
   }
   return aLength;
}

UINT64 JP2FileInputStream::readExtendedBoxLength()
{
   UINT64 aLength = 0;
   if (!NextValue(aLength))
   {
      return 0;
   }
   if (aLength < 16)
   {
      Fail("JP2FileInputStream::readExtendedBoxLength()Invalid extended box length: " + std::to_string(aLength));
   }
   return aLength;
}

INT64 JP2FileInputStream::readBoxType()
{
   UINT32 aType = 0;
   return NextValue(aType) ? INT64{aType} : -1;
}

INT64 JP2FileInputStream::seekToStartOfCodestream()
{
   const INT64 aBegin = GetPosition();
   int aType = 0;
   INT64 aLength = 0;
   for (int aHeader = readBoxHeader(aType, aLength); aHeader > 0; aHeader = readBoxHeader(aType, aLength))
   {
      if (aType == B_JP2C)
      {
         return GetPosition() - aBegin;
      }
      if (aLength == 0 || !SkipFully(aLength - aHeader))
      {
         return -1;
      }
   }
   return -1;
}

INT64 JP2FileInputStream::seekToEndOfCodestream(INT64 theCurrentOffset, INT64 theMaxLength)
{
   if (theMaxLength == 0)
   {
      return WalkCodestream(theCurrentOffset, kNoLimit, kNoLimit);
   }
   return theMaxLength >= kRoomForTilePart
              ? WalkCodestream(theCurrentOffset, theMaxLength, theMaxLength - kRoomForTilePart - 1)
              : -1;
}

// Each turn consumes a marker at least.
INT64 JP2FileInputStream::WalkCodestream(INT64 theOffset, INT64 theMaxLength, INT64 theMaxTilePartEnd)
{
   INT64 anOffset = theOffset;
   bool hasBegun = false;
   bool isBehindTilePart = false;
   int aType = 0;
   do
   {
      int aLength = 0;
      const int aHeader = readMarkerHeader(aType, aLength);
      if (aHeader < 0)
      {
         return -1;
      }
      anOffset += aHeader;
      if (itsDump != nullptr)
      {
         PrintMarker(aType, aLength);
      }
      if (aType == M_SOT && hasBegun)
      {
         anOffset = SkipTilePart(anOffset, aLength, theMaxTilePartEnd);
         isBehindTilePart = true;
      }
      else if (aType == M_SOC || (aType == M_EOC && hasBegun))
      {
         if (aType == M_SOC && hasBegun)
         {
            Fail(RWCString(kWalk) + "Unexpected second SOC seen before end of codestream");
         }
         hasBegun = true;
      }
      else if (IsIn(&HeaderMarker::itsIsInMainHeader, aType) || (itsDump != nullptr && aLength > 0))
      {
         anOffset = SkipSegment(aType, aLength, kWalk) ? anOffset + aLength - 2 : -1;
      }
      else
      {
         Fail(RWCString(kWalk) + "Unexpected marker type (" + getMarkerName(aType) + ") encountered " +
              (isBehindTilePart ? "behind a tile-part" : "in main header"));
      }
      if (anOffset < 0 || anOffset > theMaxLength)
      {
         return -1;
      }
   } while (aType != M_EOC);
   return anOffset;
}

// A segment whose marker and length have been read.
bool JP2FileInputStream::SkipSegment(int theType, int theLength, const char* theMethod)
{
   if (theLength < 2)
   {
      Fail(theMethod + ("Invalid marker segment length: " + std::to_string(theLength)) + " (" + getMarkerName(theType) +
           ")");
   }
   return skipData(theLength - 2) == theLength - 2;
}

// From behind the length of SOT to behind the data of the tile-part. A length of 0, or one that leaves no data, does
// not say where that is: the data is searched for the marker behind it.
INT64 JP2FileInputStream::SkipTilePart(INT64 theOffset, int theSOTLength, INT64 theMaxEnd)
{
   if (theSOTLength != kSOTLength)
   {
      Fail(kWalk + ("Invalid SOT segment length: " + std::to_string(theSOTLength)));
   }
   int aTile = 0;
   int anIndex = 0;
   int aCount = 0;
   INT64 aLength = 0;
   const int aBody = readSOTBody(aTile, aLength, anIndex, aCount);
   const INT64 aData = aBody >= 0 ? positionToStartOfData(theOffset + aBody, theMaxEnd, itsDump != nullptr) : -1;
   if (aData < 0)
   {
      return -1;
   }
   const INT64 anEnd = theOffset - 4 + aLength;
   if (anEnd > aData)
   {
      return anEnd <= theMaxEnd && SkipFully(anEnd - aData) ? anEnd : -1;
   }
   const INT64 aSearched = SearchPacketData();
   return aSearched >= 0 && aSearched <= theMaxEnd - aData ? aData + aSearched : -1;
}

// The length of the packet data in front of the next SOT or EOC, at which the stream then stands.
INT64 JP2FileInputStream::SearchPacketData()
{
   int aType = 0;
   const INT64 aCount = findNextSotOrEocMarkerInCodestream(aType);
   if (aCount < 0)
   {
      return -1;
   }
   const unsigned char aMarker[] = {static_cast<unsigned char>(aType >> 8), static_cast<unsigned char>(aType)};
   Pushback(aMarker, sizeof aMarker);
   return aCount - static_cast<INT64>(sizeof aMarker);
}

int JP2FileInputStream::readMarkerHeader(int& theMarkerTypeReturn, int& theLengthReturn)
{
   UINT16 aType = 0;
   UINT16 aLength = 0;
   if (!NextValue(aType) || (HasSegment(aType) && !NextValue(aLength)))
   {
      return -1;
   }
   theMarkerTypeReturn = aType;
   theLengthReturn = aLength;
   return HasSegment(aType) ? 4 : 2;
}

// ISO 15444-1 A.4.2.
int JP2FileInputStream::readSOTBody(int& theTileIndexReturn, INT64& theTileLengthReturn, int& theTilePartIndexReturn,
                                    int& theTilePartCountReturn)
{
   UINT16 aTile = 0;
   unsigned char anIndex = 0;
   unsigned char aCount = 0;
   if (!NextValue(aTile))
   {
      return -1;
   }
   theTileLengthReturn = readTileLength();
   if (theTileLengthReturn < 0 || !NextByte(anIndex) || !NextByte(aCount))
   {
      return -1;
   }
   theTileIndexReturn = aTile;
   theTilePartIndexReturn = anIndex;
   theTilePartCountReturn = aCount;
   return 8;
}

INT64 JP2FileInputStream::readTileLength()
{
   UINT32 aLength = 0;
   if (!NextValue(aLength))
   {
      return -1;
   }
   if (aLength >= 1 && aLength <= 13)
   {
      Fail("JP2FileInputStream::readTileLength(): Invalid tile length: " + std::to_string(aLength));
   }
   return aLength;
}

// Packet data contains no marker above 0xFF8F but SOP, which is followed by its length and a packet number, and EPH
// (ISO 15444-1 A.8, B.10.1).
INT64 JP2FileInputStream::findNextSotOrEocMarkerInCodestream(int& theMarkerTypeReturn)
{
   const INT64 aBegin = GetPosition();
   unsigned char aCode = 0;
   while (SkipPastFF() && NextByte(aCode))
   {
      const int aType = 0xFF00 | aCode;
      if (aType == M_SOT || aType == M_EOC)
      {
         theMarkerTypeReturn = aType;
         return GetPosition() - aBegin;
      }
      if (aType == M_SOP)
      {
         skipData(4);
      }
      else if (aType >= M_SOT && aType != M_EPH)
      {
         Fail("JP2FileInputStream::findNextSotOrEocMarkerInCodestream(int& theMarkerTypeReturn): Unexpected marker "
              "encountered in packet stream: " +
              getMarkerName(aType));
      }
   }
   return -1;
}

INT64 JP2FileInputStream::positionToStartOfData(INT64 theCurrentOffset, INT64 theMaxLength, bool theTraceMarkersFlag)
{
   INT64 anOffset = theCurrentOffset;
   int aType = 0;
   do
   {
      int aLength = 0;
      const int aHeader = readMarkerHeader(aType, aLength);
      if (aHeader < 0)
      {
         return -1;
      }
      if (theTraceMarkersFlag)
      {
         PrintMarker(aType, aLength);
      }
      anOffset += aHeader;
      if (IsIn(&HeaderMarker::itsIsInTileHeader, aType))
      {
         anOffset = SkipSegment(aType, aLength, kTileHeader) ? anOffset + aLength - 2 : -1;
      }
      else if (aType != M_SOD && aType != M_EOC)
      {
         Fail(RWCString(kTileHeader) + "Unexpected marker type (" + getMarkerName(aType) +
              ") encountered in tile header");
      }
      if (aType == M_EOC || anOffset < 0 || (theMaxLength != 0 && anOffset > theMaxLength))
      {
         return -1;
      }
   } while (aType != M_SOD);
   return anOffset;
}

INT64 JP2FileInputStream::skipData(INT64 theCount)
{
   return ReadAway(theCount);
}

RWCString JP2FileInputStream::getBoxName(int theBoxType)
{
   return CodestreamNames::BoxName(static_cast<UINT32>(theBoxType));
}

RWCString JP2FileInputStream::getBoxDescription(int theBoxType)
{
   const CodestreamNames::BoxRow* const aRow = CodestreamNames::FindBox(static_cast<UINT32>(theBoxType));
   return aRow != nullptr ? aRow->itsDescription : "";
}

RWCString JP2FileInputStream::getMarkerName(int theMarkerType)
{
   const auto aType = static_cast<UINT32>(theMarkerType);
   return CodestreamNames::NameOf(CodestreamNames::FindJPEG2000Marker(aType), aType);
}

RWCString JP2FileInputStream::getMarkerDescription(int theMarkerType)
{
   return CodestreamNames::DescriptionOf(CodestreamNames::FindJPEG2000Marker(static_cast<UINT32>(theMarkerType)));
}

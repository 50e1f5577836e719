#include "talvenor/pixel/JPEGFileInputStream.h"

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/CodestreamNames.h"

namespace
{

INT64 LimitOf(unsigned int theLengthLimit, INT64 theNoLimit)
{
   return theLengthLimit != 0xFFFFFFFF ? theLengthLimit : theNoLimit;
}

} // namespace

JPEGFileInputStream::JPEGFileInputStream(InputStream& theStream, unsigned int theLengthLimit)
    : LookAheadInputStream(theStream, LimitOf(theLengthLimit, kNoLimit))
{}

JPEGFileInputStream::JPEGFileInputStream(InputStream* theStream, unsigned int theLengthLimit)
    : LookAheadInputStream(theStream, LimitOf(theLengthLimit, kNoLimit))
{}

INT64 JPEGFileInputStream::readMarker(int& theMarkerReturn, int& theLengthReturn)
{
   return ReadMarker(0x01, theMarkerReturn, theLengthReturn);
}

// A marker is 0xFF, any number of which may stand before it to fill up, and a byte that is neither 0xFF nor 0; 0xFF
// 0x00 is a byte of entropy-coded data (ISO 10918-1 B.1.1.2, B.1.1.5).
INT64 JPEGFileInputStream::ReadMarker(int theFirstCode, int& theMarkerReturn, int& theLengthReturn)
{
   const INT64 aBegin = GetPosition();
   unsigned char aCode = 0;
   do
   {
      if (!SkipPastFF())
      {
         return -1;
      }
      do
      {
         if (!NextByte(aCode))
         {
            return -1;
         }
      } while (aCode == 0xFF);
   } while (aCode < theFirstCode);
   theMarkerReturn = aCode;
   theLengthReturn = isMarkerHasParameters(aCode) ? readLength() : 0;
   return theLengthReturn >= 0 ? GetPosition() - aBegin : -1;
}

int JPEGFileInputStream::readLength()
{
   UINT16 aLength = 0;
   return NextValue(aLength) ? aLength : -1;
}

int JPEGFileInputStream::readByte()
{
   unsigned char aByte = 0;
   return NextByte(aByte) ? aByte : -1;
}

INT64 JPEGFileInputStream::seekToCodestreamPosition(int thePositionMarker)
{
   INT64 anOffset = -1;
   FindCodestreamPosition(thePositionMarker, anOffset);
   return anOffset;
}

bool JPEGFileInputStream::FindCodestreamPosition(int thePositionMarker, INT64& theOffset)
{
   if (thePositionMarker != M_SOI && thePositionMarker != M_EOI)
   {
      throw StreamIOException("seekToCodestreamPosition(thePositionMarker): invalid parameter - thePositionMarker must "
                              "be M_SOI or M_EOI",
                              TN_INTERNAL_ERROR, 0);
   }
   const INT64 aBegin = GetPosition();
   int aMarker = 0;
   int aLength = 0;
   theOffset = -1;
   while (readMarker(aMarker, aLength) >= 0)
   {
      if (aMarker == thePositionMarker && aMarker == M_SOI)
      {
         constexpr unsigned char kSOI[] = {0xFF, M_SOI};
         Pushback(kSOI, sizeof kSOI);
      }
      else if (isMarkerHasParameters(aMarker) && !SkipSegment(aMarker, aLength, "seekToCodestreamPosition(int)"))
      {
         theOffset = -1;
         return false;
      }
      theOffset = GetPosition() - aBegin;
      if (aMarker == thePositionMarker)
      {
         return true;
      }
   }
   return false;
}

bool JPEGFileInputStream::SkipSegment(int theMarker, int theLength, const char* theMethod)
{
   if (theLength < 2)
   {
      const RWCString aText = RWCString("JPEGFileInputStream::") + theMethod +
                              ": Invalid marker segment length: " + std::to_string(theLength) + " (" +
                              getMarkerName(theMarker) + " at offset " + std::to_string(GetPosition() - 4) + ")";
      throw StreamIOException(aText.c_str(), TN_INVALID_ENCODING, 0);
   }
   return ReadAway(theLength - 2) == theLength - 2;
}

bool JPEGFileInputStream::isMarkerHasParameters(int theMarker)
{
   return theMarker != M_SOI && theMarker != M_EOI && theMarker != M_TEM && (theMarker < M_RST0 || theMarker > M_RST7);
}

bool JPEGFileInputStream::isReservedMarker(int theMarker)
{
   return theMarker >= 0x02 && theMarker <= 0xBF;
}

RWCString JPEGFileInputStream::getMarkerName(int theMarker)
{
   const auto aMarker = static_cast<UINT32>(theMarker);
   return CodestreamNames::NameOf(CodestreamNames::FindJPEGMarker(aMarker), aMarker);
}

RWCString JPEGFileInputStream::getMarkerDescription(int theMarker)
{
   return CodestreamNames::DescriptionOf(CodestreamNames::FindJPEGMarker(static_cast<UINT32>(theMarker)));
}

// Finds the markers of JPEG data (ISO 10918-1 Annex B), in a file or in the fragments of encapsulated pixel data (PS3.5
// A.4.1): where an image starts (SOI) and where it ends (EOI). Nothing is decoded.
//
//    JPEGFileInputStream aScanner(aFile);
//    INT64 aBegin = 0;    // bytes in front of the image
//    INT64 aLength = 0;   // bytes of the image
//    if (aScanner.FindCodestreamPosition(JPEGFileInputStream::M_SOI, aBegin) &&
//        aScanner.FindCodestreamPosition(JPEGFileInputStream::M_EOI, aLength)) ...
//
// Segments are skipped by their lengths, so that the markers of a thumbnail inside an APPn segment are not met. JPEG-LS
// (ISO 14495-1) has the same markers, but its data can contain 0xFF and a byte below 0x80, which only the dump knows.
// Failures of the stream pass through. See LookAheadInputStream for what is read ahead. Not locked: one thread at a
// time.
#pragma once

#include <ostream>

#include "talvenor/pixel/LookAheadInputStream.h"

class CodestreamDump;

class TALVENOR_API JPEGFileInputStream : public LookAheadInputStream
{
public:
   // The second byte of the markers that are named in this interface. The values are those in the data.
   enum Marker
   {
      M_TEM = 0x01,
      M_RST0 = 0xD0,
      M_RST7 = 0xD7,
      M_SOI = 0xD8,
      M_EOI = 0xD9,
      M_SOS = 0xDA,
      M_SOF55 = 0xF7, // start of frame of JPEG-LS (ISO 14495-1)
   };

   // theLengthLimit, in bytes, ends the stream; 0xFFFFFFFF is no limit. A stream passed by reference is borrowed and
   // must outlive this one, one passed by pointer is owned.
   explicit JPEGFileInputStream(InputStream& theStream, unsigned int theLengthLimit = 0xFFFFFFFF);
   explicit JPEGFileInputStream(InputStream* theStream, unsigned int theLengthLimit = 0xFFFFFFFF);

   // The next marker, whatever stands before it, and the length of its segment as it is there (the two bytes of the
   // length counted; 0 for a marker that has no segment). The stream then stands behind the length. Returns the number
   // of bytes consumed, -1 when the stream ends first.
   INT64 readMarker(int& theMarkerReturn, int& theLengthReturn);

   // A big-endian 16-bit number and a byte; -1 at the end of the stream.
   int readLength();
   int readByte();

   // thePositionMarker is M_SOI or M_EOI (else StreamIOException, TN_INTERNAL_ERROR). The stream then stands at the SOI
   // or behind the EOI; returned is the number of bytes from where it stood before to there. When the stream ends
   // first: -1 inside a segment or when no marker came at all, else the number of bytes up to the end of the last one,
   // which is why FindCodestreamPosition is better. A segment of length 0 or 1 throws StreamIOException
   // (TN_INVALID_ENCODING).
   INT64 seekToCodestreamPosition(int thePositionMarker);
   INT64 seekToStartOfCodestream() { return seekToCodestreamPosition(M_SOI); }
   INT64 seekToEndOfCodestream() { return seekToCodestreamPosition(M_EOI); }

   // An addition to the listed operations: the same, and tells whether the marker is there. When it is not, theOffset
   // is what seekToCodestreamPosition returns.
   bool FindCodestreamPosition(int thePositionMarker, INT64& theOffset);

   // False for SOI, EOI, TEM and RST0 to RST7.
   static bool isMarkerHasParameters(int theMarker);

   // 0x02 to 0xBF.
   static bool isReservedMarker(int theMarker);

   // "SOF0", "APP1"; "0xXX" for what has no name. The description is the standard's, empty for what has no name.
   static RWCString getMarkerName(int theMarker);
   static RWCString getMarkerDescription(int theMarker);

   // Prints a line for each marker up to the end of the stream: position, name, length of the segment, description.
   // Entropy-coded data is one line however many restart markers it has. Throws as seekToCodestreamPosition does, after
   // the line of the marker at fault.
   void dumpJPEGMarkers(std::ostream& theOutput);

private:
   // readMarker, to which bytes below theFirstCode are data.
   INT64 ReadMarker(int theFirstCode, int& theMarkerReturn, int& theLengthReturn);

   // Skips what readMarker has not read of a segment; false at the end of the stream.
   bool SkipSegment(int theMarker, int theLength, const char* theMethod);
   void PrintMarker(CodestreamDump& theDump, int theMarker, int theLength);
};

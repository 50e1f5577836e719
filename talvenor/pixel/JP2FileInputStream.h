// Walks the boxes of a JP2 file (ISO 15444-1 Annex I) and the markers of a JPEG 2000 codestream (Annex A), which is
// also what encapsulated pixel data holds, without boxes (PS3.5 A.4.4): finds where a codestream starts and ends.
// Nothing is decoded. All integers are big endian.
//
//    JP2FileInputStream aFile(aSource);
//    if (aFile.seekToStartOfCodestream() >= 0)
//    {
//       const INT64 aLength = aFile.seekToEndOfCodestream();   // -1 when its end is missing
//    }
//
// Tile-parts are skipped by their lengths. What is wrong in the data throws StreamIOException with TN_INVALID_ENCODING;
// failures of the stream pass through. See LookAheadInputStream for what is read ahead. Not locked: one thread at a
// time.
#pragma once

#include <ostream>

#include "talvenor/pixel/LookAheadInputStream.h"

class CodestreamDump;

class TALVENOR_API JP2FileInputStream : public LookAheadInputStream
{
public:
   // Markers. The values are those in the data.
   enum MarkerType
   {
      M_SOC = 0xFF4F, // start of codestream
      M_SIZ = 0xFF51, // image and tile size
      M_COD = 0xFF52, // coding style default
      M_COC = 0xFF53, // coding style of a component
      M_TLM = 0xFF55, // tile-part lengths
      M_PLM = 0xFF57, // packet lengths, main header
      M_PLT = 0xFF58, // packet lengths, tile-part header
      M_QCD = 0xFF5C, // quantization default
      M_QCC = 0xFF5D, // quantization of a component
      M_RGN = 0xFF5E, // region of interest
      M_POC = 0xFF5F, // progression order change
      M_PPM = 0xFF60, // packed packet headers, main header
      M_PPT = 0xFF61, // packed packet headers, tile-part header
      M_CRG = 0xFF63, // component registration
      M_COM = 0xFF64, // comment
      M_SOT = 0xFF90, // start of tile-part
      M_SOP = 0xFF91, // start of packet
      M_EPH = 0xFF92, // end of packet header
      M_SOD = 0xFF93, // start of data
      M_EOC = 0xFFD9, // end of codestream
   };

   // Types of boxes: four characters.
   enum BoxType
   {
      B_JP2C = 0x6A703263 // "jp2c"
   };

   // theLengthLimit, in bytes, ends the stream; 0 is no limit. A stream passed by reference is borrowed and must
   // outlive this one, one passed by pointer is owned.
   explicit JP2FileInputStream(InputStream& theStream, INT64 theLengthLimit = 0);
   explicit JP2FileInputStream(InputStream* theStream, INT64 theLengthLimit = 0);

   // The header of a box: 8 bytes, or 16 with an extended length. theLengthReturn is that of the whole box with its
   // header; 0 for a box that reaches to the end of the file. Returns the size of the header, -1 when the stream ends
   // first. Throws for lengths that cannot be, and for one above 2^63 - 1 (TN_INTERNAL_ERROR).
   int readBoxHeader(int& theBoxType, INT64& theLengthReturn);

   // The parts of it. At the end of the stream they return -1, 0 (which no extended length is) and -1.
   INT64 readBoxLength();
   UINT64 readExtendedBoxLength();
   INT64 readBoxType();

   // Skips boxes up to the first contiguous codestream, and stands behind its header. Returns the number of bytes
   // skipped, header included; -1 when there is none.
   INT64 seekToStartOfCodestream();

   // From SOC to behind EOC. theCurrentOffset is what the caller calls the present position; returned is the position
   // behind EOC, counted from the same origin, or -1 when the stream ends first or the codestream would reach beyond
   // position theMaxLength. 0 is no maximum; else every tile-part has to end more than 12 bytes before it.
   INT64 seekToEndOfCodestream(INT64 theCurrentOffset = 0, INT64 theMaxLength = 0);

   // A marker, and the length of its segment as it is there (the two bytes of the length counted; 0 for a marker that
   // has no segment). Whatever stands at the position is taken for a marker. Returns the number of bytes consumed, 2 or
   // 4; -1 when the stream ends first.
   int readMarkerHeader(int& theMarkerTypeReturn, int& theLengthReturn);

   // The eight bytes behind the length of SOT; returns 8, -1 when the stream ends first. theTileLengthReturn counts
   // from the first byte of the SOT marker; 0 for a tile-part that reaches to EOC. theTilePartCountReturn is 0 when the
   // tile-part does not say how many the tile has.
   int readSOTBody(int& theTileIndexReturn, INT64& theTileLengthReturn, int& theTilePartIndexReturn,
                   int& theTilePartCountReturn);

   // A tile-part length: 0, or at least 14; -1 at the end of the stream. Throws for others.
   INT64 readTileLength();

   // Searches packet data for SOT or EOC, and stands behind it. Returns the number of bytes consumed, the marker
   // included; -1 when the stream ends first. Throws for a marker that packet data cannot contain.
   INT64 findNextSotOrEocMarkerInCodestream(int& theMarkerTypeReturn);

   // Skips the rest of a tile-part header, from behind SOT to behind SOD; offsets as in seekToEndOfCodestream. Returns
   // the offset behind SOD; -1 at EOC, at the end of the stream and beyond theMaxLength. With theTraceMarkersFlag the
   // markers are printed as a dump prints them, outside of a dump into gTNTracer.
   INT64 positionToStartOfData(INT64 theCurrentOffset, INT64 theMaxLength, bool theTraceMarkersFlag);

   // Reads and discards, in small blocks. Returns the number of bytes, less than theCount at the end of the stream.
   INT64 skipData(INT64 theCount);

   // "jp2h", "SIZ"; what is not known has as its name the four characters or, as markers have, the number in
   // hexadecimal ("0xFF30"), and an empty description.
   static RWCString getBoxName(int theBoxType);
   static RWCString getBoxDescription(int theBoxType);
   static RWCString getMarkerName(int theMarkerType);
   static RWCString getMarkerDescription(int theMarkerType);

   // Prints a line for each box up to the end of the stream: position, name, length, description; the boxes inside a
   // box indented below it, and the markers of each codestream. A stream that is a bare codestream is printed as one.
   // Throws where the data is at fault, after the lines of what stands before.
   void dumpJP2Boxes(std::ostream& theOutput);

   // The same for a codestream at the present position, to behind its EOC. theMaxLength is in bytes, 0 is no maximum.
   void dumpJP2CodestreamBox(std::ostream& theOutput, INT64 theMaxLength = 0);

private:
   INT64 WalkCodestream(INT64 theOffset, INT64 theMaxLength, INT64 theMaxTilePartEnd);
   INT64 SkipTilePart(INT64 theOffset, int theSOTLength, INT64 theMaxEnd);
   INT64 SearchPacketData();
   bool SkipSegment(int theType, int theLength, const char* theMethod);

   bool DumpBoxes(INT64 theEnd);
   bool DumpBox(int theType, INT64 theEnd);
   void DumpCodestream(INT64 theEnd);
   void PrintBox(INT64 thePosition, INT64 theLength, int theType);
   void PrintMarker(int theType, int theLength);

   CodestreamDump* itsDump = nullptr; // while a dump goes on
};

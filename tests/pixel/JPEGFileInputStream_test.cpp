#include "talvenor/pixel/JPEGFileInputStream.h"

#include <sstream>

#include <gtest/gtest.h>

#include "support/Decoding.h"
#include "support/HexBytes.h"

namespace
{
constexpr int kSOI = JPEGFileInputStream::M_SOI;
constexpr int kEOI = JPEGFileInputStream::M_EOI;

// Bytes as ISO 10918-1 B.1.1 lays them out; found offsets count to the SOI itself and to behind the EOI.
struct SearchCase
{
   const char* itsName;
   const char* itsBytes;
   int itsMarker;
   bool itsIsFound;
   INT64 itsOffset;
};
const SearchCase kSearches[] = {
    {"SOI at once", "FFD8 FFD9", kSOI, true, 0},
    {"SOI behind padding", "0000 00 FFD8 FFD9", kSOI, true, 3},
    {"SOI behind fill bytes", "FFFF FFD8", kSOI, true, 2},
    {"SOI behind the end of another image", "11 FFD9 00 FFD8", kSOI, true, 4},
    {"EOI", "FFD8 FFD9 00", kEOI, true, 4},
    {"EOI behind fill bytes", "FFD8 FFFFFF D9 00", kEOI, true, 6},
    {"thumbnail in APP1", "FFD8 FFE1 0006 FFD8 FFD9 FFDA 0002 1122 FFD9", kEOI, true, 18},
    {"EOI in a comment", "FFD8 FFFE 0004 FFD9 FFD9", kEOI, true, 10},
    {"stuffed byte and restarts", "FFD8 FFDA 0003 01 FF00 D9 FFD0 22 FFD7 FF00 FFD9", kEOI, true, 19},
    {"TEM has no segment", "FFD8 FF01 FFD9", kEOI, true, 6},
    {"reserved markers have one", "FFD8 FF02 0004 FFD9 FFD9", kEOI, true, 10},
    {"empty segment", "FFD8 FFE0 0002 FFD9", kEOI, true, 8},
    {"no EOI: up to behind the last marker", "FFD8 FFE0 0004 0000 11 22", kEOI, false, 8},
    {"no marker", "00 11 FF00 22", kSOI, false, -1},
    {"nothing", "", kSOI, false, -1},
    {"lone FF at the end", "FFD8 FF", kEOI, false, 2},
    {"segment cut", "FFD8 FFE0 0004 00", kEOI, false, -1},
    {"length cut", "FFD8 FFE0 00", kEOI, false, 2},
};

TEST(JPEGFileInputStream, MarkersAreFoundHoweverTheBytesArrive)
{
   for (const SearchCase& aCase : kSearches)
   {
      for (const unsigned int aPiece : {1u, 2u, 3u, 100u})
      {
         SCOPED_TRACE(aCase.itsName + std::string(", pieces of ") + std::to_string(aPiece));
         const Bytes aBytes = FromHex(aCase.itsBytes);
         PiecewiseInputStream aSource(aBytes, aPiece);
         JPEGFileInputStream aStream(aSource);
         INT64 anOffset = 0;
         EXPECT_EQ(aStream.FindCodestreamPosition(aCase.itsMarker, anOffset), aCase.itsIsFound);
         EXPECT_EQ(anOffset, aCase.itsOffset);
         if (aCase.itsIsFound)
         {
            EXPECT_EQ(aStream.GetPosition(), anOffset);
            EXPECT_EQ(aStream.readByte(),
                      anOffset < static_cast<INT64>(aBytes.size()) ? aBytes[static_cast<std::size_t>(anOffset)] : -1);
         }
         PiecewiseInputStream anAgain(aBytes, aPiece);
         EXPECT_EQ(JPEGFileInputStream(anAgain).seekToCodestreamPosition(aCase.itsMarker), aCase.itsOffset);
      }
   }
}

TEST(JPEGFileInputStream, AMarkerMayLieAcrossTheBlocksOfASearch)
{
   for (std::size_t aSize = 65530; aSize < 65542; ++aSize)
   {
      PiecewiseInputStream aSource(Bytes(aSize, 0x11) + FromHex("FFD8 FFE0 0004 FFD9 FFD9"));
      JPEGFileInputStream aStream(aSource);
      EXPECT_EQ(aStream.seekToStartOfCodestream(), static_cast<INT64>(aSize));
      EXPECT_EQ(aStream.seekToEndOfCodestream(), 10) << aSize;
   }
}

TEST(JPEGFileInputStream, AMillionFillBytesAreReadOnce)
{
   PiecewiseInputStream aSource(Bytes(1000000, 0xFF));
   JPEGFileInputStream aStream(aSource);
   EXPECT_EQ(aStream.seekToStartOfCodestream(), -1);
   EXPECT_LT(aSource.Reads(), 300u);
}

TEST(JPEGFileInputStream, WhatCannotBeIsRefused)
{
   const auto anErrorOf = [](const char* theBytes, int theMarker) {
      return StreamErrorOf([&] {
         PiecewiseInputStream aSource(FromHex(theBytes));
         JPEGFileInputStream(aSource).seekToCodestreamPosition(theMarker);
      });
   };
   const StreamError aBadMarker{"seekToCodestreamPosition(thePositionMarker): invalid parameter - thePositionMarker "
                                "must be M_SOI or M_EOI",
                                TN_INTERNAL_ERROR, 0};
   EXPECT_EQ(anErrorOf("FFD8 FFDA", 0xDA), aBadMarker);
   for (const char* const aLength : {"0", "1"})
   {
      const std::string aBytes = std::string("FFD8 FFE0 000") + aLength + " FFD9";
      const StreamError anError = anErrorOf(aBytes.c_str(), kEOI);
      EXPECT_EQ(anError.itsCode, TN_INVALID_ENCODING);
      EXPECT_NE(anError.itsMessage.find(std::string("length: ") + aLength + " (APP0 at offset 2)"), std::string::npos)
          << anError;
   }
}

TEST(JPEGFileInputStream, ReadMarkerTellsTheBytesItConsumed)
{
   PiecewiseInputStream aSource(FromHex("FFD8 0011 FFE0 0006 FF FFD9 FFDB 00"));
   JPEGFileInputStream aStream(aSource);
   int aMarker = 0;
   int aLength = 0;
   const INT64 kExpected[][3] = {{2, 0xD8, 0}, {6, 0xE0, 6}, {3, 0xD9, 0}, {-1, 0, 0}};
   for (const auto& aRow : kExpected)
   {
      EXPECT_EQ(aStream.readMarker(aMarker, aLength), aRow[0]);
      if (aRow[0] > 0)
      {
         EXPECT_EQ(aMarker, aRow[1]);
         EXPECT_EQ(aLength, aRow[2]);
      }
   }
}

TEST(JPEGFileInputStream, MarkersAreNamedAsInTheStandard)
{
   const struct
   {
      int itsMarker;
      const char* itsName;
      const char* itsDescription;
   } kCases[] = {
       {0xC3, "SOF3", "Start of frame, lossless (sequential)"},
       {0xD7, "RST7", "Restart"},
       {0xEF, "APP15", "Application segment"},
       {0xF6, "JPG6", "Reserved for JPEG extensions"},
       {0xFD, "JPG13", "Reserved for JPEG extensions"},
       {0xF7, "SOF55", "Start of frame, JPEG-LS"},
       {0xFE, "COM", "Comment"},
       {0x02, "0x02", "Reserved"},
       {0x00, "0x00", ""},
       {0x1234, "0x1234", ""},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(JPEGFileInputStream::getMarkerName(aCase.itsMarker), aCase.itsName);
      EXPECT_EQ(JPEGFileInputStream::getMarkerDescription(aCase.itsMarker), aCase.itsDescription) << aCase.itsName;
   }
   std::string aBare;
   std::string aReserved;
   for (int aMarker = 0; aMarker < 256; ++aMarker)
   {
      aBare += JPEGFileInputStream::isMarkerHasParameters(aMarker) ? "" : std::to_string(aMarker) + " ";
      aReserved += JPEGFileInputStream::isReservedMarker(aMarker) ? '.' : ' ';
   }
   EXPECT_EQ(aBare, "1 208 209 210 211 212 213 214 215 216 217 ");
   EXPECT_EQ(aReserved, "  " + std::string(0xBE, '.') + std::string(0x40, ' '));
}

struct DumpCase
{
   const char* itsName;
   const char* itsBytes;
   const char* itsLines;
};
const DumpCase kDumps[] = {
    {"baseline", "FFD8 FFE0 0007 4A464946 00 FFC0 000B 08 0200 0300 01 011100 FFDA 0003 01 11FF00 FFD0 22 FFFF D9 0000",
     "         0  SOI                       Start of image\n"
     "         2  APP0                   7  Application segment: JFIF\n"
     "        11  SOF0                  11  Start of frame, baseline DCT: 768 x 512, 1 component, 8 bits\n"
     "        24  SOS                    3  Start of scan: 1 component\n"
     "        29  -                      7  Entropy-coded data, 1 restart marker\n"
     "        36  EOI                       End of image\n"
     "        38  -                      2  No marker\n"},
    {"JPEG-LS: FF7F is data", "FFD8 FFF7 0002 FFDA 0002 FF7F 1122 FFD9",
     "         0  SOI                       Start of image\n"
     "         2  SOF55                  2  Start of frame, JPEG-LS\n"
     "         6  SOS                    2  Start of scan\n"
     "        10  -                      4  Entropy-coded data\n"
     "        14  EOI                       End of image\n"},
    {"cut in a comment with an escape sequence", "FFD8 FFFE 0009 411B5B",
     "         0  SOI                       Start of image\n"
     "         2  COM                    9  Comment: A.[\n"
     "         9  -                         The data ends here, without EOI\n"},
};

TEST(JPEGFileInputStream, DumpsALineForEachMarker)
{
   for (const DumpCase& aCase : kDumps)
   {
      SCOPED_TRACE(aCase.itsName);
      PiecewiseInputStream aSource(FromHex(aCase.itsBytes));
      std::ostringstream aText;
      JPEGFileInputStream(aSource).dumpJPEGMarkers(aText);
      EXPECT_EQ(aText.str(), std::string("    Offset  Marker            Length  Description\n") + aCase.itsLines);
   }
}
} // namespace

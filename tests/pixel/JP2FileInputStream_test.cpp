#include "talvenor/pixel/JP2FileInputStream.h"

#include <sstream>

#include <gtest/gtest.h>

#include "support/Decoding.h"
#include "support/HexBytes.h"
#include "talvenor/io/MemoryStreams.h"

namespace
{
const std::string kBoxHeader = "JP2FileInputStream::readBoxHeader(int& theBoxType, INT64& theLengthReturn): ";
const std::string kWalk = "JP2FileInputStream::seekToEndOfCodestream(INT64 theCurrentOffset, INT64 theMaxLength): ";
const std::string kTileHeader = "JP2FileInputStream::positionToStartOfData(INT64 theCurrentOffset, INT64 "
                                "theMaxLength, bool theTraceMarkersFlag): ";
const std::string kPackets = "JP2FileInputStream::findNextSotOrEocMarkerInCodestream(int& theMarkerTypeReturn): ";

// The offset that an operation returns, or the text and the code with which it fails.
template <class Operation>
std::string ResultOf(const Bytes& theBytes, unsigned int thePiece, Operation theOperation)
{
   PiecewiseInputStream aSource(theBytes, thePiece);
   JP2FileInputStream aStream(aSource);
   std::string aResult;
   const StreamError anError = StreamErrorOf([&] { aResult = theOperation(aStream); });
   return anError.itsCode == TN_NO_ERROR ? aResult : anError.itsMessage + " " + std::to_string(anError.itsCode);
}

// ISO 15444-1 I.4. Expected: size of the header, type, length of the box.
struct BoxCase
{
   const char* itsName;
   const char* itsBytes;
   std::string itsExpected;
};
const BoxCase kBoxHeaders[] = {
    {"empty box", "00000008 6A703263", "8 jp2c 8"},
    {"to the end of the file", "00000000 6A703263", "8 jp2c 0"},
    {"long", "FFFFFFFE 786D6C20", "8 xml 4294967294"},
    {"extended", "00000001 75756964 0000000000000010", "16 uuid 16"},
    {"as long as can be", "00000001 75756964 7FFFFFFFFFFFFFFF", "16 uuid 9223372036854775807"},
    {"a type that is no text", "00000008 00010203", "8 0x010203 8"},
    {"length 2", "00000002 6A703263", "JP2FileInputStream::readBoxLength(): Invalid box length: 2 61"},
    {"length 7", "00000007 6A703263", "JP2FileInputStream::readBoxLength(): Invalid box length: 7 61"},
    {"extended 0", "00000001 75756964 0000000000000000",
     "JP2FileInputStream::readExtendedBoxLength()Invalid extended box length: 0 61"},
    {"extended 15", "00000001 75756964 000000000000000F",
     "JP2FileInputStream::readExtendedBoxLength()Invalid extended box length: 15 61"},
    {"2^63", "00000001 75756964 8000000000000000",
     kBoxHeader + "Extended length (9223372036854775808 bytes) > (2**63-1) bytes - I don't handle boxes that large 6"},
    {"cut in the length", "000000", "-1"},
    {"cut in the type", "00000008 6A70", "-1"},
    {"cut in the extended length", "00000001 75756964 00", "-1"},
};

TEST(JP2FileInputStream, HeadersOfBoxesAreReadOrRefused)
{
   for (const BoxCase& aCase : kBoxHeaders)
   {
      SCOPED_TRACE(aCase.itsName);
      const std::string aResult = ResultOf(FromHex(aCase.itsBytes), 3, [](JP2FileInputStream& theStream) {
         int aType = 0;
         INT64 aLength = 0;
         const int aHeader = theStream.readBoxHeader(aType, aLength);
         return std::to_string(aHeader) +
                (aHeader > 0 ? " " + JP2FileInputStream::getBoxName(aType) + " " + std::to_string(aLength) : "");
      });
      EXPECT_EQ(aResult, aCase.itsExpected);
   }
}

TEST(JP2FileInputStream, TheCodestreamBoxIsFoundAlsoWhereSkippingSeeks)
{
   const struct
   {
      const char* itsName;
      const char* itsBytes;
      INT64 itsExpected;
   } kCases[] = {
       {"behind two boxes", "0000000A 66747970 1122 00000001 786D6C20 0000000000000011 33 0000000A 6A703263", 35},
       {"inside another box", "00000010 6A703268 00000008 6A703263", -1},
       {"behind a box to the end", "00000000 786D6C20 00000008 6A703263", -1},
       {"behind a box of 2^62 bytes", "00000001 786D6C20 4000000000000000 00000008 6A703263", -1},
       {"nothing", "", -1},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const Bytes aBytes = FromHex(aCase.itsBytes);
      MemoryInputStream aMemory(aBytes.data(), static_cast<unsigned int>(aBytes.size()));
      PiecewiseInputStream aSource(aBytes, 5);
      EXPECT_EQ(JP2FileInputStream(aMemory).seekToStartOfCodestream(), aCase.itsExpected);
      EXPECT_EQ(JP2FileInputStream(aSource).seekToStartOfCodestream(), aCase.itsExpected);
   }
}

// Markers of ISO 15444-1 Annex A. The main header (SOC, SIZ, COD) has 13 bytes, SOT 12, SOD 2.
#define MAIN "FF4F FF51 0004 0000 FF52 0003 01 "
#define SOT(LENGTH) "FF90 000A 0000 " LENGTH " 00 01 "
struct WalkCase
{
   const char* itsName;
   const char* itsBytes;
   INT64 itsOffset;
   INT64 itsMaxLength;
   std::string itsExpected;
};
const WalkCase kWalks[] = {
    {"one tile-part", MAIN SOT("00000012") "FF93 11223344 FFD9 00", 0, 0, "33"},
    {"counted from elsewhere", MAIN SOT("00000012") "FF93 11223344 FFD9 00", 5000000000, 0, "5000000033"},
    {"markers in its data", MAIN SOT("00000012") "FF93 FF90FFD9 FFD9", 0, 0, "33"},
    {"markers in its header", MAIN SOT("00000018") "FF58 0004 FF93 FF93 11223344 FFD9", 0, 0, "39"},
    {"all that a main header holds",
     "FF4F FF510002 FF520002 FF530002 FF5C0002 FF5D0002 FF5E0002 FF5F0002 FF600002 FF570002 FF550002 FF630002 FF640002 "
     "FFD9",
     0, 0, "52"},
    {"all that a tile header holds",
     MAIN SOT("00000036") "FF520002 FF530002 FF5C0002 FF5D0002 FF5E0002 FF5F0002 FF580002 FF610002 FF640002 FF93 "
                          "11223344 FFD9",
     0, 0, "69"},
    {"two tile-parts", MAIN SOT("00000010") "FF93 1122 " SOT("0000000F") "FF93 33 FFD9", 0, 0, "46"},
    {"length 0", MAIN SOT("00000000") "FF93 11FF8F FF92 FF91000400FF FFD9 00", 0, 0, "40"},
    {"length 0, then another", MAIN SOT("00000000") "FF93 1122 " SOT("0000000F") "FF93 33 FFD9", 0, 0, "46"},
    {"length without data", MAIN SOT("0000000E") "FF93 1122 FFD9", 0, 0, "31"},
    {"length less than the header", MAIN SOT("00000010") "FF64 0006 00010203 FF93 1122 FFD9", 0, 0, "39"},
    {"no tile-part", MAIN "FFD9", 0, 0, "15"},
    {"nothing", "", 0, 0, "-1"},
    {"half a marker", MAIN "FF", 0, 0, "-1"},
    {"no EOC", MAIN SOT("00000012") "FF93 11223344", 0, 0, "-1"},
    {"longer than the data", MAIN SOT("00000014") "FF93 11223344", 0, 0, "-1"},
    {"as long as can be", MAIN SOT("FFFFFFFF") "FF93 11223344 FFD9", 0, 0, "-1"},
    {"no end of packet data", MAIN SOT("00000000") "FF93 11FF92 FF910004", 0, 0, "-1"},
    {"EOC in the tile header", MAIN SOT("00000012") "FFD9", 0, 0, "-1"},
    {"maximum 11", MAIN SOT("00000012") "FF93 11223344 FFD9", 0, 11, "-1"},
    {"12 bytes behind the tile-part", MAIN SOT("00000012") "FF93 11223344 FFD9", 0, 43, "-1"},
    {"13 bytes behind the tile-part", MAIN SOT("00000012") "FF93 11223344 FFD9", 0, 44, "33"},
    {"13 bytes behind searched data", MAIN SOT("00000000") "FF93 11223344 FFD9", 0, 44, "33"},
    {"main header beyond the maximum", MAIN "FFD9", 0, 14, "-1"},
    {"second SOC", MAIN "FF4F", 0, 0, kWalk + "Unexpected second SOC seen before end of codestream 61"},
    {"SOD in the main header", MAIN "FF93", 0, 0, kWalk + "Unexpected marker type (SOD) encountered in main header 61"},
    {"unknown marker", MAIN "FF77 0002", 0, 0, kWalk + "Unexpected marker type (0xFF77) encountered in main header 61"},
    {"padding", "0000 FF4F", 0, 0, kWalk + "Unexpected marker type (0x00) encountered in main header 61"},
    {"tile-part before SOC", SOT("00000012"), 0, 0,
     kWalk + "Unexpected marker type (SOT) encountered in main header 61"},
    {"tile-part length that is wrong", MAIN SOT("0000000F") "FF93 1122 FFD9", 0, 0,
     kWalk + "Unexpected marker type (0x22FF) encountered behind a tile-part 61"},
    {"segment length 1", MAIN "FF64 0001", 0, 0, kWalk + "Invalid marker segment length: 1 (COM) 61"},
    {"SOT of 11", MAIN "FF90 000B", 0, 0, kWalk + "Invalid SOT segment length: 11 61"},
    {"tile-part length 1", MAIN SOT("00000001"), 0, 0,
     "JP2FileInputStream::readTileLength(): Invalid tile length: 1 61"},
    {"tile-part length 13", MAIN SOT("0000000D"), 0, 0,
     "JP2FileInputStream::readTileLength(): Invalid tile length: 13 61"},
    {"SIZ in a tile header", MAIN SOT("00000012") "FF51 0004", 0, 0,
     kTileHeader + "Unexpected marker type (SIZ) encountered in tile header 61"},
    {"SOD in packet data", MAIN SOT("00000000") "FF93 11 FF93", 0, 0,
     kPackets + "Unexpected marker encountered in packet stream: SOD 61"},
    {"FFFF in packet data", MAIN SOT("00000000") "FF93 FFFF", 0, 0,
     kPackets + "Unexpected marker encountered in packet stream: 0xFFFF 61"},
};

TEST(JP2FileInputStream, TheEndOfACodestreamIsFoundHoweverTheBytesArrive)
{
   for (const WalkCase& aCase : kWalks)
   {
      for (const unsigned int aPiece : {1u, 2u, 3u, 100u})
      {
         SCOPED_TRACE(aCase.itsName + std::string(", pieces of ") + std::to_string(aPiece));
         const auto aWalk = [&](JP2FileInputStream& theStream) {
            const INT64 anEnd = theStream.seekToEndOfCodestream(aCase.itsOffset, aCase.itsMaxLength);
            EXPECT_TRUE(anEnd < 0 || theStream.GetPosition() == anEnd - aCase.itsOffset);
            return std::to_string(anEnd);
         };
         EXPECT_EQ(ResultOf(FromHex(aCase.itsBytes), aPiece, aWalk), aCase.itsExpected);
      }
   }
}

TEST(JP2FileInputStream, AHundredThousandTilePartsTakeFewReads)
{
   for (const char* const aTilePart : {SOT("00000012") "FF93 11223344", SOT("0000000E") "FF93 11223344"})
   {
      Bytes aBytes = FromHex(MAIN);
      const Bytes aPart = FromHex(aTilePart);
      for (int i = 0; i < 100000; ++i)
      {
         aBytes.insert(aBytes.end(), aPart.begin(), aPart.end());
      }
      PiecewiseInputStream aSource(aBytes + FromHex("FFD9"));
      EXPECT_EQ(JP2FileInputStream(aSource).seekToEndOfCodestream(), 1800015);
      EXPECT_LT(aSource.Reads(), 1000u);
   }
}

TEST(JP2FileInputStream, ALimitEndsTheStream)
{
   const Bytes aBytes = FromHex(MAIN "FFD9");
   for (const INT64 aLimit : {14, 15})
   {
      PiecewiseInputStream aSource(aBytes);
      EXPECT_EQ(JP2FileInputStream(aSource, aLimit).seekToEndOfCodestream(), aLimit == 15 ? 15 : -1);
   }
}

TEST(JP2FileInputStream, BoxesAndMarkersAreDumped)
{
   const struct
   {
      const char* itsName;
      const char* itsBytes;
      const char* itsLines;
   } kCases[] = {
       {"file",
        "0000000C 6A502020 0D0A870A 0000002D 6A703268 00000016 69686472 00000200 00000300 0003 07 07 00 00"
        "0000000F 636F6C72 01 00 00 00000010 00000000 6A703263 " MAIN SOT("00000012") "FF93 11223344 FFD9",
        "    Offset  Box               Length  Description\n"
        "         0  jP                    12  JPEG 2000 signature\n"
        "        12  jp2h                  45  JP2 header\n"
        "        20    ihdr                22  Image header: 768 x 512, 3 components, 8 bits\n"
        "        42    colr                15  Colour space: sRGB\n"
        "        57  jp2c                   0  Contiguous codestream\n"
        "        65    SOC                     Start of codestream\n"
        "        67    SIZ                  4  Image and tile size\n"
        "        73    COD                  3  Coding style default\n"
        "        78    SOT                 10  Start of tile-part: tile 0, part 0 of 1, 18 bytes\n"
        "        90    SOD                     Start of data\n"
        "        96    EOC                     End of codestream\n"},
       {"bare codestream, cut, with a marker of another part",
        "FF4F FF51 0029 0000 00000300 00000200 00000100 00000000 00000080 00000040 00000000 00000000 0001 070101"
        "FF50 0004 1122 FF64 0007 0001 413141",
        "    Offset  Marker            Length  Description\n"
        "         0  SOC                       Start of codestream\n"
        "         2  SIZ                   41  Image and tile size: 512 x 512, tiles of 128 x 64, 1 component\n"
        "        45  CAP                    4  Extended capabilities\n"
        "        51  COM                    7  Comment: A1A\n"
        "            -                         The codestream ends without EOC\n"},
       {"box that is cut", "00000020 66747970 6A707820",
        "    Offset  Box               Length  Description\n"
        "         0  ftyp                  32  File type: jpx\n"
        "            -                         The data ends inside a box\n"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      PiecewiseInputStream aSource(FromHex(aCase.itsBytes), 7);
      std::ostringstream aText;
      JP2FileInputStream(aSource).dumpJP2Boxes(aText);
      EXPECT_EQ(aText.str(), aCase.itsLines);
   }
}
} // namespace

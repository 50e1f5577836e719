#include "apps/tn/codec/FrameDecoder.h"

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "talvenor/foundation/StreamIOException.h"

namespace
{
using Bytes = std::vector<unsigned char>;

const char kRLE[] = "1.2.840.10008.1.2.5";
const char kLossless[] = "1.2.840.10008.1.2.4.57";
const char kExtended[] = "1.2.840.10008.1.2.4.51";
const char kJPEGLS[] = "1.2.840.10008.1.2.4.80";
const char kLosslessAndLossy[] = "1.2.840.10008.1.2.4.50"; // in which a lossless frame stands by mistake

ImageDescription Image(UINT16 theRows, UINT16 theColumns, UINT16 theBits)
{
   ImageDescription anImage;
   anImage.itsRows = theRows;
   anImage.itsColumns = theColumns;
   anImage.itsBitsAllocated = theBits > 8 ? 16 : 8;
   anImage.itsBitsStored = theBits;
   anImage.itsHighBit = static_cast<UINT16>(theBits - 1);
   return anImage;
}

// The decoded cells, or what was wrong.
Bytes Decode(const char* theSyntax, const ImageDescription& theImage, const Bytes& theFrame, std::string& theFault)
{
   Bytes aPixels(theImage.GetFrameSize());
   try
   {
      // Of its own size, so that a sanitizer sees the first byte that is read behind it.
      const Bytes aFrame(theFrame.begin(), theFrame.end());
      FrameDecoder::New(theSyntax, theImage)->Decode(aFrame, aPixels);
   }
   catch (const StreamIOException& anException)
   {
      EXPECT_EQ(anException.GetResultCode(), TN_DECOMPRESSION_FAILED);
      theFault = anException.GetMessage();
      return {};
   }
   return aPixels;
}

Bytes operator+(Bytes theLeft, const Bytes& theRight)
{
   theLeft.insert(theLeft.end(), theRight.begin(), theRight.end());
   return theLeft;
}

// 1 row of 4 samples with 16 bits (PS3.5 G.3): the high bytes, then the low ones.
Bytes RLEFrame()
{
   Bytes aFrame(64);
   aFrame[0] = 2;  // segments
   aFrame[4] = 64; // where they begin
   aFrame[8] = 66;
   return aFrame + Bytes{0xFD, 0x01}                   // 0x01 four times
          + Bytes{0x01, 0x10, 0x20, 0x80, 0xFF, 0x30}; // two bytes, nothing, 0x30 twice
}

// 2 rows of 3 samples with 8 bits (T.81 annex H). The differences are 0, 1, -2 and 3, 0, -1; the codes of 0, 1, 2 and 3
// bits are 0, 10, 110 and 1110.
const Bytes kSOI = {0xFF, 0xD8};
const Bytes kTable = {0xFF, 0xC4, 0x00, 0x17, 0x00, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3};
const Bytes kFrameHeader = {0xFF, 0xC3, 0x00, 0x0B, 8, 0, 2, 0, 3, 1, 1, 0x11, 0};
const Bytes kScanHeader = {0xFF, 0xDA, 0x00, 0x08, 1, 1, 0x00, 1, 0, 0x00};
const Bytes kScan = {0b01011100, 0b11101101, 0b00111111}; // 0, 10 1, 110 01, 110 11, 0, 10 0, and ones
const Bytes kEOI = {0xFF, 0xD9};

Bytes LosslessFrame(unsigned char thePredictor)
{
   Bytes aScanHeader = kScanHeader;
   aScanHeader[7] = thePredictor;
   return kSOI + kTable + kFrameHeader + aScanHeader + kScan + kEOI;
}

Bytes With(Bytes thePart, std::size_t thePlace, unsigned char theByte)
{
   thePart[thePlace] = theByte;
   return thePart;
}

// 1 row of 12 samples with 12 bits: two blocks, all of whose quantization is 8. The codes are 0, 10 and 110, of 0, 2
// and 7 bits for DC; for AC of the end of a block, of 7 bits and of 16 zeros.
const Bytes kQuantisation = Bytes{0xFF, 0xDB, 0x00, 0x43, 0x00} + Bytes(64, 8);
const Bytes kTables = {0xFF, 0xC4, 0x00, 0x2A, 0x00, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                       2,    7,    0x10, 1,    1,    1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 0xF0};
const Bytes kExtendedHeaders = {
    0xFF, 0xC1, 0x00, 0x0B, 12,   0, 1, 0, 12, 1, 1, 0x11,
    0,    0xFF, 0xDA, 0x00, 0x08, 1, 1, 0, 0,  0, 0}; // the last coefficient is 63, whatever it says
// DC 110 1100100 (100), AC 10 1000111 (71), 0; DC 10 00 (-3), 0; ones
const Bytes kBlocks = {0b11011001, 0b00101000, 0b11101000, 0b01111111};
} // namespace

TEST(FrameDecoder, RLESegmentsBecomeSamplesInLittleEndian)
{
   std::string aFault;
   const Bytes anExpected = {0x10, 0x01, 0x20, 0x01, 0x30, 0x01, 0x30, 0x01};
   EXPECT_EQ(Decode(kRLE, Image(1, 4, 16), RLEFrame(), aFault), anExpected) << aFault;
}

TEST(FrameDecoder, EveryPredictorOfLosslessJPEG)
{
   const struct
   {
      unsigned char itsPredictor;
      unsigned char itsSecond, itsThird; // of the second row; by hand from T.81 table H.1
   } kCases[] = {{1, 131, 130}, {2, 129, 126}, {3, 128, 128}, {4, 132, 129},
                 {5, 131, 129}, {6, 130, 126}, {7, 130, 127}};
   for (const auto& aCase : kCases)
   {
      for (const char* const aSyntax : {kLossless, kLosslessAndLossy})
      {
         std::string aFault;
         const Bytes anExpected = {128, 129, 127, 131, aCase.itsSecond, aCase.itsThird};
         EXPECT_EQ(Decode(aSyntax, Image(2, 3, 8), LosslessFrame(aCase.itsPredictor), aFault), anExpected)
             << "predictor " << int{aCase.itsPredictor} << " " << aFault;
      }
   }
}

// DC alone makes 2048 + 100. The coefficient, 568, brings 568 / sqrt(32) cos((2x + 1) pi / 16), T.81 A.3.3.
TEST(FrameDecoder, ExtendedJPEGHasTwelveBits)
{
   std::string aFault;
   const Bytes aPixels =
       Decode(kExtended, Image(1, 12, 12), kSOI + kQuantisation + kTables + kExtendedHeaders + kBlocks + kEOI, aFault);
   ASSERT_EQ(aPixels.size(), 24U) << aFault;
   const int kExpected[] = {2246, 2231, 2204, 2168, 2128, 2092, 2065, 2050, 2145, 2145, 2145, 2145};
   for (std::size_t i = 0; i < 12; ++i)
   {
      EXPECT_EQ(aPixels[2 * i] | aPixels[2 * i + 1] << 8, kExpected[i]) << i;
   }
}

// The example that T.87 H.3 works out, 4 rows of 4 samples.
TEST(FrameDecoder, JPEGLSGivesTheSamplesOfItsStandard)
{
   const Bytes aFrame = {0xFF, 0xD8, 0xFF, 0xF7, 0x00, 0x0B, 0x08, 0x00, 0x04, 0x00, 0x04, 0x01, 0x01, 0x11, 0x00,
                         0xFF, 0xDA, 0x00, 0x08, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0xC0, 0x00, 0x00, 0x6C, 0x80,
                         0x20, 0x8E, 0x01, 0xC0, 0x00, 0x00, 0x57, 0x40, 0x00, 0x00, 0x6E, 0xE6, 0x00, 0x00, 0x01,
                         0xBC, 0x18, 0x00, 0x00, 0x05, 0xD8, 0x00, 0x00, 0x91, 0x60, 0xFF, 0xD9};
   std::string aFault;
   const Bytes anExpected = {0, 0, 90, 74, 68, 50, 43, 205, 64, 145, 145, 145, 100, 145, 145, 145};
   EXPECT_EQ(Decode(kJPEGLS, Image(4, 4, 8), aFrame, aFault), anExpected) << aFault;

   Decode(kJPEGLS, Image(5, 4, 8), aFrame, aFault);
   EXPECT_EQ(aFault, "the frame has Rows 4, the header says 5");
   aFault.clear();
   Decode(kJPEGLS, Image(4, 4, 8), Bytes(aFrame.begin(), aFrame.begin() + 30), aFault);
   EXPECT_NE(aFault, "");
}

TEST(FrameDecoder, SamplesOfFewerBitsHaveTheirSign)
{
   std::string aFault;
   ImageDescription anImage = Image(2, 3, 8);
   anImage.itsBitsAllocated = 16;
   anImage.itsIsSigned = true; // 128 is -128 then, and 127 stays
   const Bytes aPixels = Decode(kLossless, anImage, LosslessFrame(1), aFault);
   EXPECT_EQ(Bytes(aPixels.begin(), aPixels.begin() + 6), (Bytes{0x80, 0xFF, 0x81, 0xFF, 0x7F, 0x00})) << aFault;
}

TEST(FrameDecoder, CutFramesAreErrorsWhereverTheyAreCut)
{
   const struct
   {
      const char* itsSyntax;
      ImageDescription itsImage;
      Bytes itsFrame;
   } kCases[] = {
       {kRLE, Image(1, 4, 16), RLEFrame()},
       {kLossless, Image(2, 3, 8), kSOI + kTable + kFrameHeader + kScanHeader + kScan},
       {kExtended, Image(1, 12, 12), kSOI + kQuantisation + kTables + kExtendedHeaders + kBlocks},
       {"1.2.840.10008.1.2.4.80", Image(2, 3, 8), kSOI + Bytes{0xFF, 0xF7, 0, 11, 8, 0, 2, 0, 3, 1, 1, 0x11, 0}},
       {"1.2.840.10008.1.2.4.90", Image(2, 3, 8), {0xFF, 0x4F, 0xFF, 0x51, 0, 41}}};
   for (const auto& aCase : kCases)
   {
      for (std::size_t aLength = 0; aLength < aCase.itsFrame.size(); ++aLength)
      {
         std::string aFault;
         Decode(aCase.itsSyntax, aCase.itsImage,
                Bytes(aCase.itsFrame.begin(), aCase.itsFrame.begin() + static_cast<long>(aLength)), aFault);
         EXPECT_NE(aFault, "") << aCase.itsSyntax << " cut to " << aLength;
      }
   }
}

TEST(FrameDecoder, FramesThatContradictOrLieAreNamed)
{
   const struct
   {
      const char* itsSyntax;
      Bytes itsFrame;
      const char* itsFault;
   } kCases[] = {
       {kRLE, With(RLEFrame(), 0, 3), "3 segments, its samples and bits need 2"},
       {kRLE, With(RLEFrame(), 8, 63), "segment 1 lies outside"},
       {kRLE, With(RLEFrame(), 11, 0xFF), "segment 1 lies outside"},
       {kRLE, With(RLEFrame(), 66, 0x7F), "a run goes beyond its segment"},
       {kRLE, With(RLEFrame(), 64, 0x80), "a run goes beyond its segment"},
       {kLossless, kSOI + kTable + With(kFrameHeader, 6, 4) + kScanHeader + kScan, "has Rows 4, the header says 1"},
       {kLossless, kSOI + kTable + With(kFrameHeader, 4, 17) + kScanHeader + kScan, "Rows 2"},
       {kLossless, kSOI + kFrameHeader, "Rows 2"},
       {kExtended, kSOI + kTables + With(kExtendedHeaders, 8, 4) + kBlocks, "no quantization table"},
       {kExtended, kSOI + kQuantisation + With(kExtendedHeaders, 8, 4) + kBlocks, "a scan has no Huffman table"},
       {kExtended, kSOI + kQuantisation + kTables + With(kExtendedHeaders, 8, 4) + Bytes{0x6D, 0xB7, 0x77},
        "more than 64 coefficients"},
       {kExtended, kSOI + kQuantisation + kTables + With(With(kExtendedHeaders, 8, 4), 4, 13) + kBlocks,
        "its process 8 or 12"},
   };
   for (const auto& aCase : kCases)
   {
      std::string aFault;
      Decode(aCase.itsSyntax, Image(1, 4, 16), aCase.itsFrame, aFault);
      EXPECT_NE(aFault.find(aCase.itsFault), std::string::npos) << aCase.itsFault << ": " << aFault;
   }
   const Bytes aHead = kSOI + kTable + kFrameHeader;
   const struct
   {
      Bytes itsFrame;
      const char* itsFault;
   } kLosslessCases[] = {
       {kSOI + kFrameHeader + kScanHeader + kScan, "a scan has no Huffman table"},
       {kSOI + With(kTable, 4, 0x05) + kFrameHeader, "a Huffman table of number 5"},
       {aHead + With(With(kTable, 5, 2), 8, 0), "too many codes"},
       {aHead + With(kTable, 3, 0x16), "a marker segment is too short"},
       {kSOI + kTable + With(kFrameHeader, 4, 9), "9 bits a sample, Bits Allocated is 8"},
       {kSOI + kTable + With(kFrameHeader, 9, 3), "Samples per Pixel 3, the header says 1"},
       {aHead + kFrameHeader, "two frame headers"},
       {kSOI + kTable + kScanHeader + kScan, "SOS before SOF"},
       {aHead + With(kScanHeader, 7, 0) + kScan, "scan header makes no sense"},
       {aHead + With(kScanHeader, 7, 8) + kScan, "scan header makes no sense"},
       {aHead + With(kScanHeader, 9, 8) + kScan, "scan header makes no sense"},
       {aHead + With(kScanHeader, 5, 2) + kScan, "component 2"},
       {aHead + Bytes{0xFF, 0xDD, 0, 4, 0, 2} + kScanHeader + kScan, "not one of whole lines"},
       {aHead + Bytes{0xFF, 0xDD, 0, 4, 0, 3} + kScanHeader + kScan, "the JPEG frame is cut"},
       {aHead + Bytes{0xFF, 0xDD, 0, 4, 0, 3} + kScanHeader + kScan + Bytes{0xFF, 0xD1}, "a restart marker is missing"},
       {aHead + kScanHeader + With(kScan, 0, 0xF0) + kEOI, "a code that its Huffman table has not"},
       {aHead + kEOI, "the JPEG frame is cut"},
   };
   for (const auto& aCase : kLosslessCases)
   {
      std::string aFault;
      Decode(kLossless, Image(2, 3, 8), aCase.itsFrame, aFault);
      EXPECT_NE(aFault.find(aCase.itsFault), std::string::npos) << aCase.itsFault << ": " << aFault;
   }
}

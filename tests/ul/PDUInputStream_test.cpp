#include "talvenor/ul/PDUInputStream.h"

#include <gtest/gtest.h>

#include "tests/support/HexBytes.h"
#include "tests/support/StreamErrors.h"
#include "tests/support/ULBytes.h"

namespace
{
const std::string kReceived = "PDUInputStream::ReadHeader(): Received ";
const std::string kShort = "PDUInputStream::ReadHeader(): Short read while reading PDU length of ";

struct HeaderCase
{
   const char* itsName;
   const char* itsBytes;
   UINT32 itsMaximum;
   StreamError itsError; // of the first Start; none: it returns itsResult
   int itsResult;
   unsigned int itsUnread; // bytes that were not waited for
};
const HeaderCase kHeaders[] = {
    {"nothing", "", 100, {}, 0, 0},
    {"type only", "04", 100, {}, 0, 0},
    {"type and reserved byte", "0400", 100, {}, 0, 0},
    {"part of the length", "0400 0000 00", 100, {kShort + "PDataTF", TN_END_OF_FILE, 0}, 0, 0},
    {"type 0", "00", 100, {kReceived + "Invalid PDU Type (0)", TN_INVALID_PDU, 0}, 0, 0},
    {"type 8", "0800 0000 0004", 100, {kReceived + "Invalid PDU Type (0)", TN_INVALID_PDU, 0}, 0, 5},
    {"GET /", "4745 5420 2F20", 100, {kReceived + "Invalid PDU Type (0)", TN_INVALID_PDU, 0}, 0, 5},
    {"the maximum", "0177 0000 0064", 100, {}, 1, 0},
    {"above the maximum",
     "0200 0000 0065",
     100,
     {kReceived + "AAssociateAC with length exceeding allowed maximum length", TN_PDU_LENGTH_MISMATCH, 0},
     0,
     0},
    {"all ones",
     "0400 FFFF FFFF",
     0xFFFFFFFE,
     {kReceived + "PDataTF with length exceeding allowed maximum length", TN_PDU_LENGTH_MISMATCH, 0},
     0,
     0},
    {"all ones, no maximum", "0400 FFFF FFFF", 0, {}, 1, 0},
};

TEST(PDUInputStream, HeadersAreRefusedAsSoonAsTheyCanBe)
{
   for (const HeaderCase& aCase : kHeaders)
   {
      SCOPED_TRACE(aCase.itsName);
      PeerBytes aPeer(FromHex(aCase.itsBytes));
      aPeer.Stream().SetMaxPDUReceiveLength(aCase.itsMaximum);
      int aResult = -1;
      const StreamError anError = StreamErrorOf([&] { aResult = aPeer.Stream().Start(); });
      if (aCase.itsError == StreamError())
      {
         EXPECT_EQ(aResult, aCase.itsResult) << anError;
      }
      else
      {
         EXPECT_EQ(anError, aCase.itsError);
      }
      EXPECT_EQ(aPeer.Unread(), aCase.itsUnread);
   }
}

TEST(PDUInputStream, TheSecondStartCountsTheHeaderToo)
{
   const std::string aText = kReceived + "PDataTF with length exceeding allowed maximum length";
   for (const unsigned int aLength : {1u, 26u, 27u, 32u})
   {
      SCOPED_TRACE(aLength);
      PeerBytes aPeer(PDUOf(4, Bytes(aLength)));
      PDUInputStream& aStream = aPeer.Stream();
      aStream.SetMaxPDUReceiveLength(32);
      ASSERT_EQ(aStream.Start(), 1);
      if (aLength + 6 <= 32)
      {
         EXPECT_EQ(aStream.Start(), 1);
      }
      else
      {
         EXPECT_EQ(StreamErrorOf([&] { aStream.Start(); }), (StreamError{aText, TN_PDU_LENGTH_MISMATCH, 0}));
      }
      EXPECT_EQ(aStream.SkipRemaining(), aLength);
      EXPECT_EQ(aStream.Start(), 0);
   }
}

TEST(PDUInputStream, NothingIsReadBehindThePDU)
{
   PeerBytes aPeer(PDUOf(4, Bytes(40, 7)) + PDUOf(6, {}) + PDUOf(5, {1, 2, 3, 4}) + PDUOf(7, {0, 0, 1, 2}));
   PDUInputStream& aStream = aPeer.Stream();
   unsigned char aBuffer[100] = {};
   ASSERT_EQ(aStream.Start(), 1);
   EXPECT_EQ(aPeer.Transport().ReadAheadLimits(), (std::vector<unsigned int>{10, 40}));
   EXPECT_EQ(aStream.Read(aBuffer, 3), 3u);
   EXPECT_EQ(aStream.Start(), 1) << "inside the PDU";
   EXPECT_EQ(aStream.Skip(30), 30u);
   EXPECT_EQ(aStream.Read(aBuffer, 100), 7u);
   EXPECT_EQ(aStream.Read(aBuffer, 1), 0u);
   EXPECT_EQ(aStream.Skip(1), 0u);

   ASSERT_EQ(aStream.Start(), 1) << "a PDU of length 0";
   EXPECT_EQ(aStream.GetPDUType(), PDUInputStream::AReleaseRP);
   EXPECT_FALSE(aStream.HasMoreData());

   ASSERT_EQ(aStream.Start(), 1);
   unsigned short aPair = 0;
   unsigned int aNumber = 77;
   EXPECT_EQ(aStream.DULRead(aPair), 2u);
   EXPECT_EQ(aPair, 0x0102);
   EXPECT_EQ(aStream.DULRead(aNumber), 2u) << "cut by the end of the PDU";
   EXPECT_EQ(aNumber, 77u);
   EXPECT_EQ(aStream.DULRead(aNumber), 0u);

   EXPECT_NE(aStream.DiscardPDU(), 0);
   EXPECT_EQ(aStream.DiscardPDU(), 0) << "the end of the connection";
}

TEST(PDUInputStream, TheEndInsideABodyIsToldByTheCallThatSeesIt)
{
   using Operation = unsigned int (*)(PDUInputStream&, unsigned int);
   struct Case
   {
      const char* itsName;
      Operation itsOperation;
      const char* itsText;
   };
   static unsigned char aBuffer[16];
   const Case kCases[] = {
       {"Read", [](PDUInputStream& s, unsigned int n) { return s.Read(aBuffer, n); },
        "PDUInputStream::Read: EOF before end of PDU data"},
       {"Skip", [](PDUInputStream& s, unsigned int n) { return s.Skip(n); },
        "PDUInputStream::Skip: EOF before end of PDU data"},
   };
   for (const Case& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      PeerBytes aPeer(PDUOf(4, Bytes(5), 16));
      ASSERT_EQ(aPeer.Stream().Start(), 1);
      EXPECT_EQ(StreamErrorOf([&] { aCase.itsOperation(aPeer.Stream(), 16); }),
                (StreamError{aCase.itsText, TN_END_OF_FILE, 0}));
      EXPECT_EQ(aPeer.Stream().GetRemainingLength(), 11u);
      EXPECT_EQ(aCase.itsOperation(aPeer.Stream(), 16), 0u) << "nothing in this call";
      EXPECT_EQ(aPeer.Stream().Start(), 1) << "still inside";
      EXPECT_EQ(StreamErrorOf([&] { aPeer.Stream().SkipRemaining(); }).itsCode, TN_END_OF_FILE);
   }
}

TEST(PDUInputStream, SmallMaximaAreRaised)
{
   PeerBytes aPeer({});
   EXPECT_EQ(aPeer.Stream().GetMaxPDUReceiveLength(), 32768u);
   for (const auto& [aLength, anExpected] : {std::pair{5u, 8u}, {0u, 0u}, {8u, 8u}, {0xFFFFFFFFu, 0xFFFFFFFFu}})
   {
      aPeer.Stream().SetMaxPDUReceiveLength(aLength);
      EXPECT_EQ(aPeer.Stream().GetMaxPDUReceiveLength(), anExpected);
      PDUInputStream::SetDefaultMaxPDUReceiveLength(aLength);
      EXPECT_EQ(PDUInputStream(aPeer.Transport()).GetMaxPDUReceiveLength(), anExpected);
   }
   PDUInputStream::SetDefaultMaxPDUReceiveLength(32768);
}
} // namespace

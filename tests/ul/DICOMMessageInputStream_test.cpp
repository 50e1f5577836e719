// DICOMMessageInputStream and the PDVInputStream below it.
#include "talvenor/ul/DICOMMessageInputStream.h"

#include <gtest/gtest.h>

#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDVOutputStream.h"
#include "tests/support/CapturedTrace.h"
#include "tests/support/HexBytes.h"
#include "tests/support/MemoryDULStream.h"
#include "tests/support/StreamErrors.h"

namespace
{

using Bytes = std::vector<unsigned char>;

// A P-DATA-TF PDU with this body.
Bytes PData(const std::string& theBody)
{
   Bytes aBytes = FromHex("0400 00000000");
   const Bytes aBody = FromHex(theBody);
   aBytes[4] = static_cast<unsigned char>(aBody.size() >> 8);
   aBytes[5] = static_cast<unsigned char>(aBody.size());
   aBytes.insert(aBytes.end(), aBody.begin(), aBody.end());
   return aBytes;
}

Bytes operator+(Bytes theOne, const Bytes& theOther)
{
   theOne.insert(theOne.end(), theOther.begin(), theOther.end());
   return theOne;
}

struct Receiver
{
   explicit Receiver(const Bytes& theWire)
       : itsStream(ScriptedChannel(theWire)), itsPDUs(itsStream), itsMessage(itsPDUs)
   {}
   Bytes Read(unsigned int theCount)
   {
      Bytes aBytes(theCount);
      aBytes.resize(itsMessage.Read(aBytes.data(), theCount));
      return aBytes;
   }

   MemoryDULStream itsStream;
   PDUInputStream itsPDUs;
   DICOMMessageInputStream itsMessage;
};

const Bytes kRelease = FromHex("0500 00000004 00000000");

// A command of 2 bytes on context 1, and its data set of 7 bytes in five PDVs, two of them empty, in three PDUs.
const Bytes kTwoMessages = PData("00000004 0103 C1C2  00000005 0100 D1D2D3") +
                           PData("00000002 0100  00000004 0100 D4D5") + PData("00000004 0100 D6D7  00000002 0102");

} // namespace

TEST(DICOMMessageInputStream, JoinsThePDVsOfAMessage)
{
   for (const unsigned int aPiece : {1u, 2u, 5u, 100u})
   {
      SCOPED_TRACE("pieces of " + std::to_string(aPiece));
      Receiver aReceiver(kTwoMessages);
      DICOMMessageInputStream& aMessage = aReceiver.itsMessage;
      ASSERT_TRUE(aMessage.Start());
      EXPECT_EQ(aMessage.GetMessageType(), PDVInputStream::CommandMessage);
      EXPECT_EQ(aMessage.GetCurrentPresentationContextID(), 1);
      EXPECT_EQ(aReceiver.Read(100), FromHex("C1C2"));
      EXPECT_FALSE(aMessage.HasUnfinishedMessage());

      ASSERT_TRUE(aMessage.Start());
      EXPECT_EQ(aMessage.GetMessageType(), PDVInputStream::DataMessage);
      Bytes aData;
      for (Bytes aBytes = aReceiver.Read(aPiece); !aBytes.empty(); aBytes = aReceiver.Read(aPiece))
      {
         aData = aData + aBytes;
      }
      EXPECT_EQ(aData, FromHex("D1D2D3D4D5D6D7"));
      EXPECT_EQ(aMessage.GetLength(), 7u);
      EXPECT_FALSE(aMessage.Start());
      EXPECT_EQ(aMessage.GetCurrentPresentationContextID(), 0);
   }
}

TEST(DICOMMessageInputStream, EveryCutIsAnErrorOrACleanEndBetweenMessages)
{
   for (std::size_t aLength = 0; aLength < kTwoMessages.size(); ++aLength)
   {
      SCOPED_TRACE(std::to_string(aLength) + " bytes");
      Receiver aReceiver({kTwoMessages.begin(), kTwoMessages.begin() + aLength});
      const StreamError anError = StreamErrorOf([&] {
         while (aReceiver.itsMessage.Start())
         {
            aReceiver.Read(100);
         }
      });
      // A connection may end before a message and, for the framing below, within the first two bytes of a PDU.
      EXPECT_EQ(anError.itsCode == TN_NO_ERROR, aLength <= 2) << anError;
      EXPECT_TRUE(aLength <= 2 || anError.itsCode == TN_END_OF_FILE || anError.itsCode == TN_INTERNAL_ERROR) << anError;
   }
}

TEST(DICOMMessageInputStream, MalformedInputIsRefusedWhetherReadOrSkipped)
{
   struct Case
   {
      const char* itsName;
      Bytes itsWire;
      StreamError itsError;
   };
   Bytes anEmptySeries = PData("00000002 0100");
   for (int i = 0; i < 13; ++i)
   {
      anEmptySeries = anEmptySeries + anEmptySeries; // 8192 PDVs
   }
   const Case kCases[] = {
       {"item length 0", PData("00000000 0102"), {"PDVInputStream::ReadHeader(): Invalid PDV length", TN_INVALID_PDU}},
       {"item length 1", PData("00000001 0102"), {"PDVInputStream::ReadHeader(): Invalid PDV length", TN_INVALID_PDU}},
       {"a PDU without PDV", PData(""), {"PDVInputStream::ReadHeader(): EOF while reading length", TN_END_OF_FILE}},
       {"three bytes of a length",
        PData("000000"),
        {"PDVInputStream::ReadHeader(): Short read while reading length", TN_INTERNAL_ERROR}},
       {"a length alone",
        PData("00000004"),
        {"PDVInputStream::ReadHeader(): EOF while reading presentation context ID", TN_END_OF_FILE}},
       {"no control header",
        PData("00000004 01"),
        {"PDVInputStream::ReadHeader(): EOF while reading PDV message header", TN_END_OF_FILE}},
       {"item length beyond the PDU",
        PData("00000006 0102 D1D2") + PData("00000004 0102 D3D4"),
        {"DICOMMessageInputStream::Read(): unable to read all data in PDV", TN_END_OF_FILE}},
       {"item length FFFFFFFF",
        PData("FFFFFFFF 0102 D1D2"),
        {"DICOMMessageInputStream::Read(): unable to read all data in PDV", TN_END_OF_FILE}},
       {"closed before the last fragment",
        PData("00000004 0100 D1D2"),
        {"PDVInputStream::ReadHeader(): EOF while reading PDV header", TN_END_OF_FILE}},
       {"another context",
        PData("00000004 0100 D1D2  00000004 0302 D3D4"),
        {"PDU_Service::GetInputTransferSyntax(): Presentation context specified in data message does not match "
         "current presentation context in use for command",
         TN_PDV_CONTEXT_MISMATCH}},
       {"a command inside data",
        PData("00000004 0100 D1D2  00000004 0103 C1C2"),
        {"DICOMMessageInputStream::Read(): message type changed within a message", TN_INVALID_ENCODING}},
       {"empty PDVs without end",
        anEmptySeries,
        {"DICOMMessageInputStream::Read(): too many PDVs without data", TN_INVALID_PDU}},
       {"a release inside a message",
        PData("00000004 0100 D1D2") + kRelease,
        {"PDVInputStream::ReadHeader(): Unexpected PDU type received - Expected PDataTF PDU but got AReleaseRQ",
         TN_UNEXPECTED_PDU}},
   };
   for (const Case& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      Receiver aReader(aCase.itsWire);
      EXPECT_EQ(StreamErrorOf([&] {
                   aReader.itsMessage.Start();
                   aReader.Read(100);
                }),
                aCase.itsError);
      Receiver aSkipper(aCase.itsWire);
      EXPECT_EQ(StreamErrorOf([&] {
                   aSkipper.itsMessage.Start();
                   aSkipper.itsMessage.Flush();
                }),
                aCase.itsError);
   }
}

TEST(DICOMMessageInputStream, LeavesAPDUOfAnotherTypeToTheCaller)
{
   Receiver aReceiver(PData("00000004 0102 D1D2") + kRelease);
   ASSERT_TRUE(aReceiver.itsMessage.Start());
   aReceiver.itsMessage.Flush();
   EXPECT_EQ(StreamErrorOf([&] { aReceiver.itsMessage.Start(); }).itsCode, TN_UNEXPECTED_PDU);
   EXPECT_EQ(aReceiver.itsPDUs.GetPDUType(), PDUInputStream::AReleaseRQ);
   EXPECT_EQ(aReceiver.itsPDUs.GetRemainingLength(), 4u);
   EXPECT_FALSE(aReceiver.itsMessage.HasUnfinishedMessage());
}

TEST(DICOMMessageInputStream, FlushLeadsToTheNextMessageFromAnyPlace)
{
   for (const unsigned int aRead : {0u, 1u, 3u, 4u, 7u})
   {
      SCOPED_TRACE(std::to_string(aRead) + " bytes read before");
      Receiver aReceiver(PData("00000005 0100 D1D2D3") + PData("00000006 0100 D4D5D6D7  00000002 0102") +
                         PData("00000004 0103 C1C2"));
      ASSERT_TRUE(aReceiver.itsMessage.Start());
      EXPECT_EQ(aReceiver.Read(aRead).size(), aRead);
      EXPECT_EQ(StreamErrorOf([&] { aReceiver.itsMessage.Start(); }),
                (StreamError{"PDVInputStream::Start(): Previous message not finished when attempting to start reading "
                             "next message",
                             TN_MESSAGE_NOT_FINISHED}));
      aReceiver.itsMessage.Flush();
      EXPECT_EQ(aReceiver.itsMessage.GetLength(), 7u);
      ASSERT_TRUE(aReceiver.itsMessage.Start());
      EXPECT_EQ(aReceiver.Read(100), FromHex("C1C2"));
   }
}

TEST(PDVInputStream, TracesCommandsAndLastFragmentsUnlessAllAreWanted)
{
   struct Case
   {
      const char* itsFlags;
      std::vector<std::string> itsLengths; // item lengths of the headers in the trace
   };
   for (const Case& aCase : {Case{"TNTracePDUVerbose", {}}, Case{"TNTracePDataTF", {"4", "2"}},
                             Case{"TNTracePDataTF,TNTracePDUVerbose", {"4", "5", "2", "4", "4", "2"}}})
   {
      const CapturedTrace aTrace(aCase.itsFlags);
      Receiver aReceiver(kTwoMessages);
      while (aReceiver.itsMessage.Start())
      {
         aReceiver.itsMessage.Flush();
      }
      const std::string aText = aTrace.Text();
      const std::string aStart = "PDVInputStream::ReadHeader(): Read PDV Header: \n\tPDV Length: ";
      std::vector<std::string> aLengths;
      for (std::size_t i = aText.find(aStart); i != std::string::npos; i = aText.find(aStart, i + 1))
      {
         aLengths.push_back(aText.substr(i + aStart.size(), 1));
      }
      EXPECT_EQ(aLengths, aCase.itsLengths) << aCase.itsFlags << aText;
   }
}

TEST(PDVInputStream, AHeaderWaitsUntilItsDataAreReadInPart)
{
   MemoryDULStream aStream(ScriptedChannel(PData("00000004 0502 D1D2")));
   PDUInputStream aPDUs(aStream);
   PDVInputStream aPDVs(aPDUs);
   EXPECT_TRUE(aPDVs.IsEndOfMessage());
   EXPECT_TRUE(aPDVs.Start());
   EXPECT_TRUE(aPDVs.Start());
   EXPECT_EQ(aPDVs.GetPresentationContextID(), 5);
   EXPECT_EQ(aPDVs.GetPDVLength(), 4u);
   EXPECT_EQ(aPDVs.Skip(1), 1u);
   EXPECT_EQ(StreamErrorOf([&] { aPDVs.Start(); }),
             (StreamError{"Previous PDV not fully read when attempting read new PDV", TN_PDV_NOT_FINISHED}));
   unsigned char aByte = 0;
   EXPECT_EQ(aPDVs.Read(&aByte, 1), 1u);
   EXPECT_EQ(aByte, 0xD2);
   EXPECT_FALSE(aPDVs.Start());
}

TEST(PDVInputStream, MessageTypesHaveNames)
{
   EXPECT_EQ(PDVInputStream::MessageTypeToString(1), "COMMAND");
   EXPECT_EQ(PDVOutputStream::MessageTypeToString(2), "DATA");
   EXPECT_EQ(PDVInputStream::MessageTypeToString(3), "Invalid Message Type (3)");
}

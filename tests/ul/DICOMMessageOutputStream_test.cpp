// DICOMMessageOutputStream and the PDVOutputStream below it.
#include "talvenor/ul/DICOMMessageOutputStream.h"

#include <gtest/gtest.h>

#include "talvenor/io/TNEndian.h"
#include "talvenor/ul/PDUOutputStream.h"
#include "tests/support/CountingBytes.h"
#include "tests/support/MemoryDULStream.h"
#include "tests/support/StreamErrors.h"

namespace
{

using Bytes = std::vector<unsigned char>;

IOBuffer* NewBuffer(const Bytes& theBytes)
{
   auto aBuffer = std::make_unique<IOBuffer>(static_cast<unsigned int>(theBytes.size() + 100));
   aBuffer->CopyIn(theBytes.data(), static_cast<unsigned int>(theBytes.size()));
   return aBuffer.release();
}

// What a peer sees: "PDU(16372:00) PDU(100:03 50:02)", data bytes and control header of each PDV of each PDU; theData
// is what the PDVs hold together. Checks lengths and the context ID.
std::string Dissect(const Bytes& theWire, Bytes& theData, unsigned char theContextID = 7)
{
   const auto aNumberAt = [&](std::size_t thePlace) {
      return TNEndian::Load<UINT32, TNEndian::BigEndian>(theWire.data() + thePlace);
   };
   std::string aText;
   for (std::size_t i = 0; i < theWire.size();)
   {
      const std::size_t anEnd = i + 6 + aNumberAt(i + 2);
      aText += std::string(aText.empty() ? "" : " ") + (theWire[i] == 4 ? "PDU(" : "other(");
      for (i += 6; i < anEnd;)
      {
         const std::size_t aNext = i + 4 + aNumberAt(i);
         char aPDV[32];
         std::snprintf(aPDV, sizeof aPDV, "%zu:%02X", aNext - i - 6, theWire[i + 5]);
         aText += (aText.back() == '(' ? "" : " ") + std::string(aPDV);
         aText += theWire[i + 4] == theContextID ? "" : " on another context";
         theData.insert(theData.end(), theWire.begin() + i + 6, theWire.begin() + aNext);
         i = aNext;
      }
      aText += i == anEnd ? ")" : " beyond the PDU)";
   }
   return aText;
}

struct Sender
{
   explicit Sender(UINT32 theMaximum = 16384, UINT32 theBlockSize = 32768)
       : itsStream(ScriptedChannel({}), std::make_shared<MemoryChannel>(), theBlockSize),
         itsPDUs(itsStream, theMaximum), itsMessage(itsPDUs)
   {
      Begin(PDVOutputStream::DataMessage);
   }
   void Begin(PDVOutputStream::MessageType theType)
   {
      itsMessage.SetMessageType(theType);
      itsMessage.SetPresentationContextID(7);
   }
   void Write(const Bytes& theBytes) { itsMessage.Write(theBytes.data(), static_cast<unsigned int>(theBytes.size())); }
   std::string Sent()
   {
      itsPDUs.FinishPDU();
      itsData.clear();
      return Dissect(itsStream.Written(), itsData);
   }

   MemoryDULStream itsStream;
   PDUOutputStream itsPDUs;
   DICOMMessageOutputStream itsMessage;
   Bytes itsData;
};

} // namespace

TEST(DICOMMessageOutputStream, CutsDataAsLargeAsThePeerAllowsAndMarksTheLastFragmentOnly)
{
   struct Case
   {
      const char* itsName;
      UINT32 itsMaximum, itsBlockSize; // of a PDU, of the transport
      std::size_t itsLength;
      const char* itsExpected;
   };
   const Case kCases[] = {
       {"three PDUs", 16384, 32768, 40000, "PDU(16372:00) PDU(16372:00) PDU(7256:02)"},
       {"a full PDU", 16384, 32768, 16372, "PDU(16372:02)"},
       {"a byte more", 16384, 32768, 16373, "PDU(16372:00) PDU(1:02)"},
       {"two full PDUs", 16384, 32768, 32744, "PDU(16372:00) PDU(16372:02)"},
       {"the smallest PDUs", 14, 32768, 5, "PDU(2:00) PDU(2:00) PDU(1:02)"},
       {"buffers smaller than a PDV", 16384, 1000, 20000, "PDU(16372:00) PDU(3628:02)"},
       {"a transport without block size", 16384, 0, 20000, "PDU(16372:00) PDU(3628:02)"},
       {"nothing", 16384, 32768, 0, ""},
   };
   for (const Case& aCase : kCases)
   {
      const Bytes aData = CountingBytes(aCase.itsLength);
      for (const std::size_t aPiece : {aCase.itsLength, std::size_t{1}, std::size_t{7}})
      {
         SCOPED_TRACE(std::string(aCase.itsName) + " in pieces of " + std::to_string(aPiece));
         Sender aSender(aCase.itsMaximum, aCase.itsBlockSize);
         for (std::size_t i = 0; i < aData.size(); i += aPiece)
         {
            aSender.Write({aData.begin() + i, aData.begin() + std::min(i + aPiece, aData.size())});
         }
         EXPECT_EQ(aSender.itsMessage.GetLength(), aCase.itsLength);
         aSender.itsMessage.FinishMessage();
         EXPECT_EQ(aSender.Sent(), aCase.itsExpected);
         EXPECT_EQ(aSender.itsData, aData);
      }
   }
}

TEST(DICOMMessageOutputStream, CommandAndDataSetShareAPDUByteForByte)
{
   Sender aSender;
   aSender.Begin(PDVOutputStream::CommandMessage);
   aSender.Write(Bytes(3, 0xCC));
   aSender.itsMessage.FinishMessage();
   EXPECT_TRUE(aSender.itsStream.Written().empty()) << "the PDU is the caller's to finish";
   aSender.Begin(PDVOutputStream::DataMessage);
   aSender.Write(Bytes(2, 0xDD));
   aSender.itsMessage.FinishMessage();
   aSender.itsMessage.FinishPDU();
   EXPECT_EQ(aSender.itsStream.Written(), (Bytes{
                                              0x04, 0x00,                   // P-DATA-TF, PS3.8 9.3.5
                                              0x00, 0x00, 0x00, 0x11,       // length of the PDU: 17
                                              0x00, 0x00, 0x00, 0x05,       // item length: 2 + 3
                                              0x07, 0x03, 0xCC, 0xCC, 0xCC, // context, command and last
                                              0x00, 0x00, 0x00, 0x04,       // item length: 2 + 2
                                              0x07, 0x02, 0xDD, 0xDD,       // context, last
                                          }));
}

TEST(DICOMMessageOutputStream, FlushEndsAPDVAndNotTheMessage)
{
   Sender aSender;
   aSender.Write(CountingBytes(10));
   aSender.itsMessage.Flush();
   aSender.itsMessage.Flush();
   aSender.Write(CountingBytes(5));
   aSender.itsMessage.Flush();
   aSender.itsMessage.FinishMessage();
   EXPECT_EQ(aSender.Sent(), "PDU(10:00 5:02)");
}

TEST(DICOMMessageOutputStream, AnEmptyMessageIsAnEmptyPDVWhereOneIsWanted)
{
   Sender aSender;
   aSender.itsMessage.FinishMessageEvenIfEmpty();
   aSender.Write(CountingBytes(4));
   aSender.itsMessage.FinishMessageEvenIfEmpty();
   EXPECT_EQ(aSender.Sent(), "PDU(0:02 4:02)");
}

TEST(DICOMMessageOutputStream, ADiscardedMessageLeavesNothingUnsentBehind)
{
   Sender aSender(106); // 94 bytes of data in a PDV
   aSender.Write(CountingBytes(200));
   aSender.itsMessage.DiscardMessage();
   aSender.Begin(PDVOutputStream::CommandMessage);
   aSender.Write(CountingBytes(4));
   aSender.itsMessage.FinishMessage();
   EXPECT_EQ(aSender.Sent(), "PDU(94:00) PDU(4:03)");
}

TEST(DICOMMessageOutputStream, FinishesAPDUOfAnotherTypeBeforeItsOwn)
{
   MemoryDULStream aStream(ScriptedChannel({}));
   PDUOutputStream aPDUs(aStream, 16384);
   aPDUs.SetPDUType(PDUOutputStream::AReleaseRP);
   aPDUs.DULWrite(0u);
   const DICOMMessageOutputStream aMessage(aPDUs);
   EXPECT_EQ(aStream.Written(), (Bytes{6, 0, 0, 0, 0, 4, 0, 0, 0, 0}));
   EXPECT_EQ(aPDUs.GetPDUType(), PDUOutputStream::PDataTF);
}

TEST(DICOMMessageOutputStream, BuffersStayWholeAndShareAPDVWhileTheyFit)
{
   struct Case
   {
      const char* itsName;
      std::vector<std::size_t> itsBuffers;
      std::size_t itsBytesBehind; // written from an array
      const char* itsExpected;
   };
   const Case kCases[] = {
       // 100 bytes fit a PDV
       {"they fit", {40, 60}, 0, "PDU(100:02)"},
       {"one does not", {40, 61}, 0, "PDU(40:00) PDU(61:02)"},
       {"bytes behind a buffer", {40}, 5, "PDU(45:02)"},
       {"bytes behind a buffer that fills the PDV", {100}, 5, "PDU(100:00) PDU(5:02)"},
       {"an empty one", {0, 3}, 0, "PDU(3:02)"},
   };
   for (const Case& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      Sender aSender(112);
      for (const std::size_t aLength : aCase.itsBuffers)
      {
         aSender.itsMessage.Write(NewBuffer(CountingBytes(aLength)));
      }
      aSender.Write(CountingBytes(aCase.itsBytesBehind));
      aSender.itsMessage.FinishMessage();
      EXPECT_EQ(aSender.Sent(), aCase.itsExpected);
   }
}

TEST(DICOMMessageOutputStream, ABufferReachesTheTransportAsItIs)
{
   struct AddressRecorder final : DULStream
   {
      AddressRecorder() : DULStream(32768, 32768) {}
      unsigned int Read(unsigned char*, unsigned int) override { return 0; }
      void Write(IOBuffer* theBuffer) override
      {
         itsAddresses.push_back(theBuffer->GetCopyOutPointer());
         delete theBuffer;
      }
      void Write(const unsigned char*, unsigned int) override { ADD_FAILURE() << "bytes were copied"; }
      void Close() override {}
      std::vector<const unsigned char*> itsAddresses;
   } aTransport;
   PDUOutputStream aPDUs(aTransport, 16384);
   DICOMMessageOutputStream aMessage(aPDUs);
   IOBuffer* const aBuffer = NewBuffer(CountingBytes(16372));
   const unsigned char* const anAddress = aBuffer->GetCopyOutPointer();
   aMessage.Write(aBuffer);
   aMessage.FinishMessage();
   aPDUs.FinishPDU();
   ASSERT_EQ(aTransport.itsAddresses.size(), 3u); // PDU header, PDV header, data
   EXPECT_EQ(aTransport.itsAddresses[2], anAddress);
}

TEST(DICOMMessageOutputStream, RefusesWhatWouldBreakTheMessage)
{
   struct Case
   {
      const char* itsName;
      void (*itsPreparation)(Sender&, PDVOutputStream&);
      void (*itsAction)(Sender&, PDVOutputStream&);
      StreamError itsError;
   };
   const auto writePDV = [](Sender&, PDVOutputStream& thePDVs) { thePDVs.Write(CountingBytes(3).data(), 3); };
   const auto finishPDV = [](Sender&, PDVOutputStream& thePDVs) {
      thePDVs.Write(CountingBytes(3).data(), 3);
      thePDVs.FinishPDV(1);
   };
   const auto writeMessage = [](Sender& theSender, PDVOutputStream&) {
      theSender.Write(CountingBytes(3));
      theSender.itsMessage.Flush();
   };
   const Case kCases[] = {
       {"type of a PDV",
        writePDV,
        [](Sender&, PDVOutputStream& thePDVs) { thePDVs.SetMessageType(PDVOutputStream::CommandMessage); },
        {"PDVOutputStream::SetMessageType(): Invalid attempt to change message type for non-empty PDV",
         TN_INTERNAL_ERROR}},
       {"context of a PDV",
        writePDV,
        [](Sender&, PDVOutputStream& thePDVs) { thePDVs.SetPresentationContextID(9); },
        {"PDVOutputStream::SetPresentationContextID(): Invalid attempt to change presentation context ID for "
         "non-empty PDV",
         TN_INTERNAL_ERROR}},
       {"bytes behind the last fragment",
        finishPDV,
        writePDV,
        {"PDVOutputStream::Write(): Invalid attempt to write to finished message", TN_INTERNAL_ERROR}},
       {"a buffer behind the last fragment",
        finishPDV,
        [](Sender&, PDVOutputStream& thePDVs) { thePDVs.Write(NewBuffer(CountingBytes(3))); },
        {"PDVOutputStream::Write(): Invalid attempt to write to finished message", TN_INTERNAL_ERROR}},
       {"a buffer larger than a PDV",
        writePDV,
        [](Sender&, PDVOutputStream& thePDVs) { thePDVs.Write(NewBuffer(CountingBytes(101))); },
        {"PDVOutputStream::Write(): IOBuffer contains more bytes than PDV user data size", TN_INVALID_ARGUMENT}},
       {"type of a message",
        writeMessage,
        [](Sender& theSender, PDVOutputStream&) {
           theSender.itsMessage.SetMessageType(PDVOutputStream::CommandMessage);
        },
        {"DICOMMessageOutputStream::SetMessageType(): Invalid attempt to change message type for non-empty message",
         TN_INTERNAL_ERROR}},
       {"context of a message",
        writeMessage,
        [](Sender& theSender, PDVOutputStream&) { theSender.itsMessage.SetPresentationContextID(9); },
        {"DICOMMessageOutputStream::SetPresentationContextID(): Invalid attempt to change presentation context ID for "
         "non-empty message",
         TN_INTERNAL_ERROR}},
   };
   for (const Case& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      Sender aSender(112);
      PDVOutputStream aPDVs(aSender.itsPDUs);
      aCase.itsPreparation(aSender, aPDVs);
      EXPECT_EQ(StreamErrorOf([&] { aCase.itsAction(aSender, aPDVs); }), aCase.itsError);
   }
}

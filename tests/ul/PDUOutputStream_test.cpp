#include "talvenor/ul/PDUOutputStream.h"

#include <gtest/gtest.h>

#include "talvenor/io/IOBuffer.h"
#include "tests/support/CountingBytes.h"
#include "tests/support/StreamErrors.h"
#include "tests/support/ULBytes.h"

namespace
{
std::unique_ptr<IOBuffer> BufferOf(const Bytes& theBytes)
{
   auto aBuffer = std::make_unique<IOBuffer>(static_cast<unsigned int>(theBytes.size()) + 1);
   aBuffer->CopyIn(theBytes.data(), static_cast<unsigned int>(theBytes.size()));
   return aBuffer;
}

class PDUOutputStreamTest : public testing::Test
{
protected:
   void Write(const Bytes& theBytes) { itsStream.Write(theBytes.data(), static_cast<unsigned int>(theBytes.size())); }

   MemoryDULStream itsTransport{ScriptedChannel({})};
   PDUOutputStream itsStream{itsTransport, 16}; // 10 bytes of user data
};

TEST_F(PDUOutputStreamTest, DataIsDividedAndAFullPDUGoesOutAtOnce)
{
   const Bytes aFirst = PDUOf(4, CountingBytes(10, 0));
   const Bytes aSecond = PDUOf(4, CountingBytes(10, 10));
   itsStream.SetPDUType(PDUOutputStream::PDataTF);
   Write(CountingBytes(25, 0));
   EXPECT_EQ(itsTransport.Written(), aFirst + aSecond);
   EXPECT_EQ(itsStream.GetPDULength(), 5u);
   EXPECT_EQ(itsStream.GetAvailableFreeSpace(), 5u);
   itsStream.FinishPDU();
   itsStream.FinishPDU(); // nothing to send
   EXPECT_EQ(itsTransport.Written(), aFirst + aSecond + PDUOf(4, CountingBytes(5, 20)));
   EXPECT_EQ(itsTransport.HeldCount(), itsTransport.Written().size()) << "flushing is a step of its own";
   itsStream.FlushOutput();
   EXPECT_EQ(itsTransport.HeldCount(), 0u);
}

TEST_F(PDUOutputStreamTest, OnlyDataIsDivided)
{
   itsStream.SetPDUType(PDUOutputStream::AAssociateRQ);
   const Bytes aBody = CountingBytes(40000, 0);
   Write(aBody);
   EXPECT_EQ(itsStream.GetAvailableFreeSpace(), 0u);
   itsStream.FinishPDU();
   EXPECT_EQ(itsTransport.Written(), PDUOf(1, aBody));
}

TEST_F(PDUOutputStreamTest, BuffersAreQueuedWholeAndInOrder)
{
   itsStream.Write(nullptr, 0);
   itsStream.Write(static_cast<IOBuffer*>(nullptr));
   itsStream.Write(new IOBuffer(5)); // empty
   EXPECT_EQ(itsStream.GetPDULength(), 0u);

   Write({1, 2, 3});
   itsStream.Write(BufferOf(CountingBytes(7, 4)).release());
   EXPECT_TRUE(itsTransport.Written().empty()) << "a PDU that a buffer fills stays";
   itsStream.DULWrite(static_cast<unsigned short>(0x0B0C));
   itsStream.Write(BufferOf(CountingBytes(9, 13)).release());
   EXPECT_EQ(itsTransport.Written(), PDUOf(4, CountingBytes(10, 1)) + PDUOf(4, {11, 12}));

   EXPECT_EQ(StreamErrorOf([&] { itsStream.Write(BufferOf(Bytes(11)).release()); }),
             (StreamError{"PDUOutputStream::Write(): IOBuffer contains more bytes than PDU user data size",
                          TN_INVALID_ARGUMENT, 0}));
   itsStream.FinishPDU();
   EXPECT_EQ(itsTransport.Written(),
             PDUOf(4, CountingBytes(10, 1)) + PDUOf(4, {11, 12}) + PDUOf(4, CountingBytes(9, 13)));
}

TEST_F(PDUOutputStreamTest, ABufferIsHandedOnWithoutCopying)
{
   class Catcher : public DULStream
   {
   public:
      Catcher() : DULStream(0, 0) {}
      unsigned int Read(unsigned char*, unsigned int) override { return 0; }
      void Write(IOBuffer* theBuffer) override { itsBuffers.emplace_back(theBuffer); }
      void Write(const unsigned char*, unsigned int) override { FAIL(); }
      void Close() override {}
      std::vector<std::unique_ptr<IOBuffer>> itsBuffers;
   } aCatcher;
   PDUOutputStream aStream(aCatcher, 20000);
   auto aBuffer = BufferOf(Bytes(1000));
   const IOBuffer* const anAddress = aBuffer.get();
   aStream.DULWrite(1u);
   aStream.Write(aBuffer.release());
   aStream.FinishPDU();
   ASSERT_EQ(aCatcher.itsBuffers.size(), 3u); // header, number, buffer
   EXPECT_EQ(aCatcher.itsBuffers[1]->GetAllocatedSize(), PDUOutputStream::itsDefaultBufferSize);
   EXPECT_EQ(aCatcher.itsBuffers[2].get(), anAddress);
}

TEST_F(PDUOutputStreamTest, TheTypeOfABodyCannotChangeButTheBodyCanBeDropped)
{
   Write({1, 2});
   itsStream.SetPDUType(PDUOutputStream::PDataTF);
   EXPECT_EQ(StreamErrorOf([&] { itsStream.SetPDUType(PDUOutputStream::AAbortRQ); }),
             (StreamError{"PDUOutputStream::SetPDUType(): Invalid attempt to change PDU type for non-empty PDU",
                          TN_INTERNAL_ERROR, 0}));
   PDUOutputStream aCopy(itsStream);
   itsStream.DropPDU();
   itsStream.SetPDUType(PDUOutputStream::AAbortRQ);
   Write({0, 0, 0, 6});
   itsStream.FinishPDU();
   aCopy.FinishPDU();
   EXPECT_EQ(itsTransport.Written(), PDUOf(7, {0, 0, 0, 6}) + PDUOf(4, {1, 2}));
}

TEST_F(PDUOutputStreamTest, WhatFailedIsNotSentLater)
{
   itsTransport.Output().Close();
   Write({1, 2});
   EXPECT_EQ(StreamErrorOf([&] { itsStream.FinishPDU(); }).itsCode, TN_END_OF_FILE);
   EXPECT_EQ(itsStream.GetPDULength(), 0u);
   EXPECT_NO_THROW(itsStream.FinishPDU());
}

TEST_F(PDUOutputStreamTest, SmallMaximaAreRaised)
{
   for (const auto& [aLength, anExpected] : {std::pair{0u, 14u}, {10u, 14u}, {15u, 15u}})
   {
      itsStream.SetMaxPDUSendLength(aLength);
      EXPECT_EQ(itsStream.GetMaxPDUSendLength(), anExpected);
      EXPECT_EQ(itsStream.GetMaxUserDataSize(), anExpected - 6);
      EXPECT_EQ(itsStream.GetMaximumOutputBlockSize(), anExpected - 6);
      PDUOutputStream::SetDefaultMaxPDUSendLength(aLength);
      EXPECT_EQ(PDUOutputStream::GetDefaultMaxPDUSendLength(), anExpected);
   }
   PDUOutputStream::SetDefaultMaxPDUSendLength(32768);
   Write(Bytes(7));
   itsStream.SetMaxPDUSendLength(14); // 8, of which 7 are used
   Write(Bytes(2));
   EXPECT_EQ(itsTransport.Written(), PDUOf(4, Bytes(8)));
}
} // namespace

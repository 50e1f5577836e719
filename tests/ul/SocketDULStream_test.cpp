#include "talvenor/ul/SocketDULStream.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <numeric>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

#include "support/CapturedErrorLog.h"
#include "support/ConnectedSockets.h"
#include "support/HexBytes.h"
#include "support/MemoryDULStream.h"
#include "support/StreamErrors.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{

// A stream and its peer, a bare socket.
struct StreamAndPeer
{
   StreamAndPeer() { itsStream->ManageConnection(itsSockets.itsRequester.UnmanageConnection()); }

   Socket& Peer() { return itsSockets.itsAcceptor; }
   void PeerSends(const std::vector<unsigned char>& theBytes)
   {
      ASSERT_EQ(Peer().SendBinary(theBytes.data(), static_cast<int>(theBytes.size())),
                static_cast<int>(theBytes.size()));
   }

   ConnectedSockets itsSockets;
   std::unique_ptr<SocketDULStream> itsStream = std::make_unique<SocketDULStream>();
};

// theCount bytes from theStart on of a sequence without a short period.
std::vector<unsigned char> Bytes(std::size_t theStart, std::size_t theCount)
{
   std::vector<unsigned char> aBytes(theCount);
   for (std::size_t i = 0; i < theCount; ++i)
   {
      aBytes[i] = static_cast<unsigned char>((theStart + i) * 2654435761u >> 13);
   }
   return aBytes;
}

IOBuffer* BufferOf(const std::vector<unsigned char>& theBytes)
{
   auto aBuffer = std::make_unique<IOBuffer>(static_cast<unsigned int>(theBytes.size()));
   aBuffer->CopyIn(theBytes.data(), static_cast<unsigned int>(theBytes.size()));
   return aBuffer.release();
}

TEST(SocketDULStreamTest, WhatArrivedBehindAFieldIsKeptCountedAndComesFirst)
{
   StreamAndPeer aPair;
   SocketDULStream& aStream = *aPair.itsStream;
   aPair.PeerSends(FromHex("0500 00000004 01020304 07"));
   unsigned char aType = 0, aReserved = 1, aBody[8] = {};
   unsigned int aLength = 0;
   EXPECT_EQ(aStream.DULRead(aType), 1u);
   EXPECT_EQ(aStream.BytesAvailable(), 10);
   aPair.PeerSends(FromHex("0809"));
   aPair.Peer().Close();
   EXPECT_EQ(aStream.DULRead(aReserved), 1u);
   EXPECT_EQ(aStream.DULRead(aLength), 4u);
   EXPECT_EQ(aLength, 4u);
   EXPECT_EQ(aStream.BytesAvailable(), 7);
   EXPECT_EQ(aStream.Skip(2), 2u);
   EXPECT_TRUE(aStream.InputConnected());
   EXPECT_EQ(aStream.Read(aBody, 8), 5u);
   EXPECT_EQ(std::vector(aBody, aBody + 5), FromHex("0304070809"));
   EXPECT_FALSE(aStream.InputConnected());
   EXPECT_EQ(aStream.Read(aBody, 1), 0u);
   EXPECT_EQ(aStream.Skip(1), 0u);
}

TEST(SocketDULStreamTest, NothingOfAConnectionReachesTheNext)
{
   StreamAndPeer aPair;
   unsigned char aByte = 0;
   aPair.PeerSends({1, 2, 3});
   ASSERT_EQ(aPair.itsStream->Read(&aByte, 1), 1u); // the others are read ahead
   ConnectedSockets aNext;
   const unsigned char aTen = 10;
   ASSERT_EQ(aNext.itsAcceptor.SendBinary(&aTen, 1), 1);
   aPair.itsStream->ManageConnection(aNext.itsRequester.UnmanageConnection());
   EXPECT_EQ(aPair.itsStream->Read(&aByte, 1), 1u);
   EXPECT_EQ(aByte, 10);
}

TEST(SocketDULStreamTest, BytesThatAreThereAreReadAlthoughNoTimeIsLeft)
{
   StreamAndPeer aPair;
   aPair.PeerSends(FromHex("0102"));
   unsigned char aByte = 0;
   EXPECT_EQ(aPair.itsStream->DULRead(aByte), 1u);
   EXPECT_EQ(aPair.itsStream->SetTimeout(-1), 1);
   EXPECT_EQ(aPair.itsStream->DULRead(aByte), 1u);
   EXPECT_EQ(aByte, 2);
   EXPECT_EQ(StreamErrorOf([&] { aPair.itsStream->DULRead(aByte); }),
             (StreamError{"SocketDULStream::Read(uchat_t*, size_t): Transport operation timed out.",
                          TN_TRANSPORT_TIMED_OUT, 0}));
}

// Reads and writes of many sizes: every way through both buffers.
TEST(SocketDULStreamTest, BytesOfAnyGroupingArriveInOrder)
{
   StreamAndPeer aPair;
   SocketDULStream aReader;
   aReader.ManageConnection(aPair.Peer().UnmanageConnection());
   const unsigned int kSizes[] = {1, 6, 4095, 4097, 8191, 8192, 8193, 32768, 65536, 200000, 2, 10000};
   std::jthread aWriter([&] {
      std::size_t aStart = 0;
      for (int i = 0; i < 48; ++i)
      {
         const unsigned int aSize = kSizes[i % 12];
         const std::vector<unsigned char> aBytes = Bytes(aStart, aSize);
         i % 5 < 2 ? aPair.itsStream->Write(BufferOf(aBytes)) : aPair.itsStream->Write(aBytes.data(), aSize);
         aStart += aSize;
      }
      aPair.itsStream.reset(); // sends what is held
   });
   std::size_t aStart = 0;
   unsigned int aCount = 1;
   for (int i = 0; aCount != 0; ++i)
   {
      std::vector<unsigned char> aBytes(kSizes[i % 11]);
      aCount = aReader.Read(aBytes.data(), static_cast<unsigned int>(aBytes.size()));
      aBytes.resize(aCount);
      ASSERT_EQ(aBytes, Bytes(aStart, aCount)) << "from " << aStart;
      aStart += aCount;
   }
   aWriter.join();
   EXPECT_EQ(aStart, 4 * std::accumulate(std::begin(kSizes), std::end(kSizes), std::size_t{0}));
}

// A socket that keeps the boundaries of sends shows the system calls.
class SocketDULStreamSendsTest : public testing::Test
{
protected:
   void SetUp() override
   {
      int aPair[2];
      ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, aPair), 0);
      itsStream.ManageConnection(aPair[0]);
      itsPeer.ManageConnection(aPair[1]);
   }
   // The number of bytes of the next send; -1 when there was none.
   int NextSend()
   {
      static unsigned char aBuffer[200000];
      unsigned int aCount = 0;
      return itsPeer.BytesAvailable(aCount) && aCount != 0 ? itsPeer.ReadBinary(aBuffer, sizeof aBuffer) : -1;
   }

   SocketDULStream itsStream;
   Socket itsPeer;
};

TEST_F(SocketDULStreamSendsTest, WhatIsWrittenUntilAFlushLeavesInOneSend)
{
   itsStream.DULWrite(static_cast<unsigned char>(4));
   itsStream.DULWrite(0x01020304u);
   itsStream.Write(BufferOf(Bytes(0, 1000)));
   itsStream.Write(new IOBuffer(10)); // empty
   itsStream.Write(nullptr);
   itsStream.DULWrite(static_cast<unsigned short>(7));
   EXPECT_EQ(NextSend(), -1);
   itsStream.FlushOutput();
   EXPECT_EQ(NextSend(), 1007);
   itsStream.FlushOutput();
   EXPECT_EQ(NextSend(), -1);

   itsStream.DULWrite(0x01020304u);
   itsStream.SetTimeout(-1);
   unsigned char aByte = 0;
   EXPECT_THROW(itsStream.DULRead(aByte), StreamIOException); // the question went out before the wait for an answer
   EXPECT_EQ(NextSend(), 4);
}

TEST_F(SocketDULStreamSendsTest, HeldBytesAreBounded)
{
   itsStream.Write(BufferOf(Bytes(0, 32768)));
   itsStream.Write(BufferOf(Bytes(0, 32767)));
   EXPECT_EQ(NextSend(), -1);
   itsStream.DULWrite(static_cast<unsigned char>(1));
   EXPECT_EQ(NextSend(), 65536);
   for (int i = 0; i < 65; ++i)
   {
      itsStream.Write(BufferOf({1, 2, 3}));
   }
   EXPECT_EQ(NextSend(), 64 * 3);
   itsStream.Write(Bytes(0, 8192).data(), 8192); // large enough not to be copied
   EXPECT_EQ(NextSend(), 3 + 8192);
   itsStream.DULWrite(static_cast<unsigned char>(1));
   itsStream.Close();
   EXPECT_EQ(NextSend(), 1);
}

// An A-ABORT must not land in the middle of a PDU of which a part was sent.
TEST(SocketDULStreamTest, AWriteThatIsCancelledLosesNothing)
{
   StreamAndPeer aPair;
   SocketDULStream& aStream = *aPair.itsStream;
   aStream.GetSocket().SetAbortPollMilliseconds(5);
   std::jthread anotherThread([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      aStream.GetSocket().SetAbortRequestedFlag(1);
   });
   std::size_t aWritten = 0;
   const auto aWriteOn = [&] {
      const std::size_t aStart = aWritten;
      aWritten += 30000;
      const std::vector<unsigned char> aBytes = Bytes(aStart, 30000);
      aStart % 60000 == 0 ? aStream.Write(BufferOf(aBytes)) : aStream.Write(aBytes.data(), 30000);
   };
   StreamError anError;
   while ((anError = StreamErrorOf(aWriteOn)).itsCode == TN_NO_ERROR)
   {}
   anotherThread.join();
   EXPECT_EQ(anError.itsCode, TN_CANCELLED) << anError;
   EXPECT_EQ(anError.itsMessage.find("SocketDULStream::Write("), 0u) << anError;

   aStream.GetSocket().SetAbortRequestedFlag(0);
   std::jthread aWriter([&] {
      aStream.Write(Bytes(aWritten, 10).data(), 10);
      aPair.itsStream.reset();
   });
   SocketDULStream aReader;
   aReader.ManageConnection(aPair.Peer().UnmanageConnection());
   std::vector<unsigned char> aReceived(aWritten + 11);
   aReceived.resize(aReader.Read(aReceived.data(), static_cast<unsigned int>(aReceived.size())));
   aWriter.join();
   EXPECT_EQ(aReceived.size(), aWritten + 10);
   EXPECT_TRUE(aReceived == Bytes(0, aWritten + 10));
}

TEST(SocketDULStreamTest, ClosingDoesNotWaitForAPeerThatDoesNotRead)
{
   StreamAndPeer aPair;
   SocketDULStream& aStream = *aPair.itsStream;
   aStream.GetSocket().SetAbortRequestedFlag(1);
   const std::vector<unsigned char> aBytes(30'000'000);
   EXPECT_EQ(StreamErrorOf([&] { aStream.Write(aBytes.data(), 30'000'000); }).itsCode, TN_CANCELLED);
   aStream.Close();
   EXPECT_FALSE(aStream.OutputConnected());
}

TEST(SocketDULStreamTest, ClosingWithBytesUnreadIsNoReset)
{
   StreamAndPeer aPair;
   aPair.PeerSends(Bytes(0, 50000));
   aPair.itsStream->DULWrite(0x07000000u);
   aPair.itsStream->Close();
   unsigned char aBuffer[10];
   EXPECT_EQ(aPair.Peer().ReadBinary(aBuffer, sizeof aBuffer), 4);
   EXPECT_EQ(aPair.Peer().ReadBinary(aBuffer, sizeof aBuffer), -1);
   EXPECT_EQ(aPair.Peer().GetResultCode(), TN_END_OF_FILE);
   EXPECT_EQ(aPair.Peer().SendBinary(aBuffer, 1), 1); // after a reset the system would refuse
}

struct FailureCase
{
   const char* itsName;
   void (*itsOperation)(StreamAndPeer&);
   StreamError itsError;
};
const FailureCase kFailures[] = {
    {"reading when closed",
     [](StreamAndPeer& p) {
        p.itsStream->Close();
        p.itsStream->Skip(1);
     },
     {"SocketDULStream::Read(uchat_t*, size_t): Transport not connected.", TN_NOT_CONNECTED, ENOTCONN}},
    {"writing when closed",
     [](StreamAndPeer& p) {
        p.itsStream->Close();
        p.itsStream->DULWrite(1u);
     },
     {"SocketDULStream::Write(uchat_t*, size_t): Transport not connected.", TN_NOT_CONNECTED, ENOTCONN}},
    {"writing a buffer when closed",
     [](StreamAndPeer& p) {
        p.itsStream->Close();
        p.itsStream->Write(BufferOf({1}));
     },
     {"SocketDULStream::Write(IOBuffer* theBuffer): while sending: Transport not connected.", TN_NOT_CONNECTED,
      ENOTCONN}},
    {"writing to a peer that is gone",
     [](StreamAndPeer& p) {
        p.Peer().Close();
        for (int i = 0; i < 1000; ++i)
        {
           p.itsStream->Write(Bytes(0, 9000).data(), 9000);
        }
     },
     {"SocketDULStream::Write(uchat_t*, size_t): EOF on output while sending", TN_END_OF_FILE, EPIPE}},
    {"counting when closed",
     [](StreamAndPeer& p) {
        p.itsStream->Close();
        p.itsStream->BytesAvailable();
     },
     {"SocketDULStream::BytesAvailable(): Transport not connected.", TN_NOT_CONNECTED, ENOTCONN}},
    {"opening to nobody",
     [](StreamAndPeer&) { delete SocketDULStreamFactory::GetInstance().GetConnectedDULStream("127.0.0.1", "0"); },
     {"SocketDULStream::Open(const RWCString& theIPAddress, const RWCString& thePort) failed: Invalid argument in "
      "function call.",
      TN_INVALID_ARGUMENT, 0}},
};

TEST(SocketDULStreamTest, FailuresAreThrownWithTheCodesOfTheSocket)
{
   for (const FailureCase& aCase : kFailures)
   {
      StreamAndPeer aPair;
      EXPECT_EQ(StreamErrorOf([&] { aCase.itsOperation(aPair); }), aCase.itsError) << aCase.itsName;
   }
}

TEST(SocketDULStreamTest, TheFactoryConnects)
{
   Socket aListener;
   ASSERT_TRUE(aListener.Listen(0, 1, "127.0.0.1"));
   const std::unique_ptr<DULStream> aStream(SocketDULStreamFactory::GetInstance().GetConnectedDULStream(
       "127.0.0.1", std::to_string(aListener.GetListenPort())));
   ASSERT_TRUE(aListener.Accept(10));
   EXPECT_TRUE(aStream->InputConnected() && aStream->OutputConnected());
   EXPECT_EQ(aStream->GetPreferredInputBlockSize(), 32768u);
   EXPECT_EQ(aStream->GetMaximumOutputBlockSize(), 32768u);
   EXPECT_EQ(aStream->GetTimeout(), 300);
   EXPECT_EQ(aStream->GetPeerPort(), std::to_string(aListener.GetListenPort()));
}

// The base class, over a stream in memory.
TEST(DULStreamTest, AValueThatArrivesInPartIsNotConverted)
{
   MemoryDULStream aStream(ScriptedChannel(FromHex("01 0203 04050607 0809")));
   unsigned char aByte = 0;
   unsigned short aShort = 0;
   unsigned int anInt = 0;
   EXPECT_EQ(aStream.DULRead(aByte), 1u);
   EXPECT_EQ(aStream.DULRead(aShort), 2u);
   EXPECT_EQ(aStream.DULRead(anInt), 4u);
   EXPECT_EQ(aByte, 1);
   EXPECT_EQ(aShort, 0x0203);
   EXPECT_EQ(anInt, 0x04050607u);
   EXPECT_EQ(aStream.DULRead(anInt), 2u);
   EXPECT_EQ(anInt, 0x04050607u);

   MemoryDULStream aLongStream(ScriptedChannel(std::vector<unsigned char>(5000)));
   EXPECT_EQ(aLongStream.Skip(4999), 4999u);
   EXPECT_EQ(aLongStream.Skip(2048), 1u);
}

} // namespace

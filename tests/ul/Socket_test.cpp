#include "talvenor/ul/Socket.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/CapturedErrorLog.h"
#include "support/CapturedTrace.h"
#include "support/ConnectedSockets.h"
#include "support/CountingBytes.h"
#include "support/StreamErrors.h"
#include "talvenor/foundation/TNXInitializer.h"
#include "talvenor/ul/SocketInputStream.h"
#include "talvenor/ul/SocketOutputStream.h"
#include "talvenor/ul/SocketRules.h"

namespace
{

using SocketRules::SlicedWait;
using SocketRules::WaitResult;

struct PiecesCase
{
   const char* itsName;
   int itsBufferSize, itsTotal;
   std::vector<int> itsPieces;
};
const PiecesCase kPiecesCases[] = {
    {"large buffer", 64240, 60000, {16384, 16384, 16384, 4096, 6752}},
    {"large buffer, exactly one piece left", 64240, 16384, {4096, 4096, 8192}},
    {"small buffer: halves of it", 20000, 30000, {10000, 10000, 4096, 5904}},
    {"tiny buffer", 3, 3, {1, 1, 1}},
    {"buffer of unknown size", 0, 9000, {4096, 4904}},
};

TEST(SocketRulesTest, APieceNeverQueuesFarMoreThanHalfTheSendBuffer)
{
   for (const PiecesCase& aCase : kPiecesCases)
   {
      std::vector<int> aPieces;
      for (int aLeft = aCase.itsTotal; aLeft > 0; aLeft -= aPieces.back())
      {
         aPieces.push_back(SocketRules::PieceSize(aLeft, aCase.itsBufferSize));
      }
      EXPECT_EQ(aPieces, aCase.itsPieces) << aCase.itsName;
   }
}

struct WaitCase
{
   const char* itsName;
   int itsTimeout, itsInterval, itsMilliseconds; // seconds, seconds, milliseconds
   int itsAbortAfter;                            // slices
   int itsReadyAfter;                            // slices
   std::vector<INT64> itsSlices;                 // milliseconds
   WaitResult itsResult;
};
constexpr int kNever = 1000;
const WaitCase kWaitCases[] = {
    {"time-out below the interval", 10, 60, 0, kNever, kNever, {10000}, WaitResult::kTimedOut},
    {"time-out of several slices", 150, 60, 0, kNever, kNever, {60000, 60000, 30000}, WaitResult::kTimedOut},
    {"abort during a slice", 300, 60, 0, 2, kNever, {60000, 60000}, WaitResult::kCancelled},
    {"abort before the first", 300, 60, 0, 0, kNever, {}, WaitResult::kCancelled},
    {"without limit, noticed all the same", 0, 60, 0, 3, kNever, {60000, 60000, 60000}, WaitResult::kCancelled},
    {"flags are not watched", 7, 0, 0, 0, kNever, {7000}, WaitResult::kTimedOut},
    {"neither limit nor flags", 0, 0, 0, 0, 1, {-1}, WaitResult::kReady},
    {"shorter slices", 1, 60, 400, kNever, kNever, {400, 400, 200}, WaitResult::kTimedOut},
    {"ready", 300, 60, 0, kNever, 2, {60000, 60000}, WaitResult::kReady},
};

TEST(SocketRulesTest, AWaitIsCutIntoSlicesThatLookAtTheFlags)
{
   for (const WaitCase& aCase : kWaitCases)
   {
      SlicedWait aWait(aCase.itsTimeout, aCase.itsInterval, aCase.itsMilliseconds);
      std::vector<INT64> aSlices;
      const auto isAborted = [&] { return static_cast<int>(aSlices.size()) >= aCase.itsAbortAfter; };
      const auto aWaitOnce = [&](INT64 theMilliseconds) {
         aSlices.push_back(theMilliseconds);
         return static_cast<int>(aSlices.size()) == aCase.itsReadyAfter ? WaitResult::kReady : WaitResult::kTimedOut;
      };
      EXPECT_EQ(aWait.Wait(isAborted, aWaitOnce, [] { return INT64{0}; }), aCase.itsResult) << aCase.itsName;
      EXPECT_EQ(aSlices, aCase.itsSlices) << aCase.itsName;
   }
}

// What was ready and then was not must not start the time-out anew.
TEST(SocketRulesTest, AWaitThatIsResumedHasTheTimeThatIsLeft)
{
   SlicedWait aWait(10, 0, 0);
   INT64 aNow = 0;
   std::vector<INT64> aSlices;
   const auto aWaitOnce = [&](INT64 theMilliseconds) {
      aSlices.push_back(theMilliseconds);
      aNow += 4'000'000'000;
      return aSlices.size() < 3 ? WaitResult::kReady : WaitResult::kTimedOut;
   };
   const auto wait = [&] { return aWait.Wait([] { return false; }, aWaitOnce, [&] { return aNow; }); };
   EXPECT_EQ(wait(), WaitResult::kReady);
   EXPECT_EQ(wait(), WaitResult::kReady);
   EXPECT_EQ(wait(), WaitResult::kTimedOut);
   EXPECT_EQ(aSlices, (std::vector<INT64>{10000, 6000, 2000}));
}

TEST(SocketTest, BytesArriveInOrderAndThenTheEnd)
{
   ConnectedSockets aPair;
   const std::vector<unsigned char> aSent = CountingBytes(1'000'000);
   std::jthread aSender([&] {
      EXPECT_EQ(aPair.itsRequester.SendBinary(aSent.data(), static_cast<int>(aSent.size())), 1'000'000);
      EXPECT_EQ(aPair.itsRequester.GetResultCode(), TN_NO_ERROR);
      aPair.itsRequester.Close();
   });
   std::vector<unsigned char> aReceived;
   unsigned char aBuffer[40000];
   int aCount = 0;
   while ((aCount = aPair.itsAcceptor.ReadBinary(aBuffer, sizeof aBuffer)) > 0)
   {
      aReceived.insert(aReceived.end(), aBuffer, aBuffer + aCount);
   }
   aSender.join();
   EXPECT_EQ(aReceived, aSent);
   EXPECT_EQ(aCount, -1);
   EXPECT_EQ(aPair.itsAcceptor.GetResultCode(), TN_END_OF_FILE);
   EXPECT_FALSE(aPair.itsAcceptor.InputConnected());
   EXPECT_TRUE(aPair.itsAcceptor.OutputConnected()); // it may still be sent to
   EXPECT_EQ(aPair.itsAcceptor.ReadBinary(aBuffer, 1), -1);
   EXPECT_EQ(aPair.itsAcceptor.GetResultCode(), TN_NOT_CONNECTED);
}

TEST(SocketTest, SendingToAPeerThatIsGoneEndsWithoutASignal)
{
   ConnectedSockets aPair;
   aPair.itsAcceptor.Close();
   const unsigned char aByte = 0;
   int aCount = 1;
   for (int i = 0; i < 1000 && aCount == 1; ++i) // the first byte makes the peer answer that it is gone
   {
      aCount = aPair.itsRequester.SendBinary(&aByte, 1);
   }
   EXPECT_EQ(aCount, -1);
   EXPECT_EQ(aPair.itsRequester.GetResultCode(), TN_END_OF_FILE);
   EXPECT_FALSE(aPair.itsRequester.OutputConnected());
}

TEST(SocketTest, SettingsReadBackAsTheyWereGranted)
{
   Socket aListener;
   aListener.SetTCPSendBufferSize(20000);
   aListener.SetTCPReceiveBufferSize(30000);
   ASSERT_TRUE(aListener.Listen(0, 1));
   EXPECT_TRUE(aListener.Listened());
   Socket aRequester;
   ASSERT_TRUE(aRequester.Open("localhost", std::to_string(aListener.GetListenPort())));
   ASSERT_TRUE(aListener.Accept(10));
   EXPECT_EQ(aListener.GetTCPSendBufferSize(), 20000);
   EXPECT_EQ(aListener.GetTCPReceiveBufferSize(), 30000);
   EXPECT_EQ(aRequester.GetTCPSendBufferSize(), 64240);
   EXPECT_EQ(aRequester.GetPeerPort(), std::to_string(aListener.GetListenPort()));
   EXPECT_EQ(aRequester.GetPeerIPAddress(), "127.0.0.1");

   Socket::SetEnableReverseDNSLookup(0);
   EXPECT_EQ(aListener.GetPeerName(), "");
   Socket::SetEnableReverseDNSLookup(1);
}

// Every way in which an operation can refuse at once. The operation returns its own result.
struct RefusalCase
{
   const char* itsName;
   std::function<int(ConnectedSockets&)> itsOperation;
   int itsResult;
   TNResultCode itsCode;
   const char* itsLogged; // part of what the error log gets
};

int OpenTo(Socket& theSocket, const char* theHost, const char* thePort)
{
   return theSocket.Open(theHost, thePort);
}

int AcceptTwice(Socket& theSocket)
{
   Socket aFirst;
   Socket aSecond;
   theSocket.Close();
   EXPECT_TRUE(theSocket.Listen(0, 5));
   const std::string aPort = std::to_string(theSocket.GetListenPort());
   EXPECT_TRUE(aFirst.Open("127.0.0.1", aPort) && aSecond.Open("127.0.0.1", aPort) && theSocket.Accept(10));
   return theSocket.Accept(10);
}

unsigned char gByte;
const RefusalCase kRefusals[] = {
    {"nobody listens",
     [](ConnectedSockets& p) {
        EXPECT_TRUE(p.itsAcceptor.Listen(0, 1));
        const std::string aPort = std::to_string(p.itsAcceptor.GetListenPort());
        p.itsAcceptor.Close();
        return OpenTo(p.itsRequester, "127.0.0.1", aPort.c_str());
     },
     0, TN_CONNECTION_REFUSED, "Socket::Open(): Can't connect socket to port "},
    {"mistyped address", [](ConnectedSockets& p) { return OpenTo(p.itsRequester, "127.0.0.256", "104"); }, 0,
     TN_INVALID_ARGUMENT, "Socket::Open(): Can't resolve host \"127.0.0.256\""},
    {"host name with a line of its own", [](ConnectedSockets& p) { return OpenTo(p.itsRequester, "1\n2", "104"); }, 0,
     TN_INVALID_ARGUMENT, "Socket::Open(): Can't resolve host \"1.2\""},
    {"port above 65535", [](ConnectedSockets& p) { return OpenTo(p.itsRequester, "127.0.0.1", "65536"); }, 0,
     TN_INVALID_ARGUMENT, "Socket::Open(): Can't resolve port \"65536\""},
    {"port 0", [](ConnectedSockets& p) { return OpenTo(p.itsRequester, "127.0.0.1", "0"); }, 0, TN_INVALID_ARGUMENT,
     "Can't resolve port"},
    {"listening on no port", [](ConnectedSockets& p) { return p.itsAcceptor.Listen("-1", 1); }, 0,
     TN_SYSTEM_CALL_FAILED, "Socket::Listen(): invalid port"},
    {"listening where somebody listens",
     [](ConnectedSockets& p) {
        EXPECT_TRUE(p.itsAcceptor.Listen(0, 1, "0.0.0.0"));
        return p.itsRequester.Listen(p.itsAcceptor.GetListenPort(), 1);
     },
     0, TN_SYSTEM_CALL_FAILED, "Socket::Listen(): bind() failed (error "},
    {"accepting without listening", [](ConnectedSockets& p) { return p.itsAcceptor.Accept(10); }, 0, TN_NOT_CONNECTED,
     "Socket::Accept(): Not socket listened"},
    {"accepting while a connection is held", [](ConnectedSockets& p) { return AcceptTwice(p.itsAcceptor); }, 0,
     TN_INTERNAL_ERROR, "from previous accept() call still under management."},
    {"accepting at once when nobody is there",
     [](ConnectedSockets& p) {
        p.itsAcceptor.Close();
        return p.itsAcceptor.Listen(0, 1) && p.itsAcceptor.Accept(-1);
     },
     0, TN_TIMED_OUT, ""},
    {"accepting while aborted",
     [](ConnectedSockets& p) {
        p.itsAcceptor.Close();
        p.itsAcceptor.SetAbortRequestedFlag(1);
        return p.itsAcceptor.Listen(0, 1) && p.itsAcceptor.Accept(0);
     },
     0, TN_CANCELLED, ""},
    {"reading while all are aborted",
     [](ConnectedSockets& p) {
        Socket::SetGlobalAbortRequestedFlag(1);
        const int aCount = p.itsAcceptor.ReadBinary(&gByte, 1);
        Socket::SetGlobalAbortRequestedFlag(0);
        return aCount;
     },
     -1, TN_CANCELLED, ""},
    {"reading while a flag of the host's is set",
     [](ConnectedSockets& p) {
        p.itsAcceptor.SetSharedAbortFlag(std::make_shared<std::atomic<int>>(1));
        return p.itsAcceptor.ReadBinary(&gByte, 1);
     },
     -1, TN_CANCELLED, ""},
    {"reading with no time",
     [](ConnectedSockets& p) {
        p.itsAcceptor.SetTimeout(-1);
        return p.itsAcceptor.ReadBinary(&gByte, 1);
     },
     -1, TN_TRANSPORT_TIMED_OUT, ""},
    {"reading into nothing", [](ConnectedSockets& p) { return p.itsAcceptor.ReadBinary(nullptr, 1); }, -1,
     TN_INVALID_ARGUMENT, ""},
    {"reading nothing", [](ConnectedSockets& p) { return p.itsAcceptor.ReadBinary(&gByte, 0); }, -1,
     TN_INVALID_ARGUMENT, ""},
    {"sending from nowhere", [](ConnectedSockets& p) { return p.itsAcceptor.SendBinary(nullptr, 1); }, -1,
     TN_INVALID_ARGUMENT, ""},
    {"sending when closed",
     [](ConnectedSockets& p) {
        p.itsAcceptor.Close();
        return p.itsAcceptor.SendBinary(&gByte, 1);
     },
     -1, TN_NOT_CONNECTED, ""},
    {"counting when closed",
     [](ConnectedSockets& p) {
        unsigned int aCount = 0;
        p.itsAcceptor.Close();
        return p.itsAcceptor.BytesAvailable(aCount);
     },
     0, TN_NOT_CONNECTED, ""},
};

TEST(SocketTest, RefusalsAreNamedByTheirResultCodes)
{
   for (const RefusalCase& aCase : kRefusals)
   {
      SCOPED_TRACE(aCase.itsName);
      ConnectedSockets aPair;
      const CapturedErrorLog aLog;
      EXPECT_EQ(aCase.itsOperation(aPair), aCase.itsResult);
      const bool isAcceptors = aPair.itsAcceptor.GetResultCode() != TN_NO_ERROR;
      EXPECT_EQ((isAcceptors ? aPair.itsAcceptor : aPair.itsRequester).GetResultCode(), aCase.itsCode);
      EXPECT_NE(aLog.Text().find(aCase.itsLogged), std::string::npos) << aLog.Text();
   }
}

TEST(SocketTest, TheTraceShowsBytesAndTheEnd)
{
   ConnectedSockets aPair;
   const CapturedTrace aTrace("TNTraceSocketBytesRead,TNTraceSocketEOF,TNTraceSocketOpenClose");
   unsigned char aBytes[17] = {0x04, 0xAB};
   aPair.itsRequester.SendBinary(aBytes, sizeof aBytes);
   aPair.itsRequester.Close();
   while (aPair.itsAcceptor.ReadBinary(aBytes, sizeof aBytes) > 0)
   {}
   for (const char* aText : {"\n04 ab 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n00 \n", "): recv() returned EOF\n",
                             "Socket::CloseConnectionSocket(): closed connection socket ("})
   {
      EXPECT_NE(aTrace.Text().find(aText), std::string::npos) << aText << " is not in " << aTrace.Text();
   }
}

TEST(SocketTest, DefaultsReachTheSocketsThatAreMadeAfterwards)
{
   const Socket anOldOne;
   TNXInitializer::SetDefaultSocketTimeout(11);
   TNXInitializer::SetDefaultSocketAbortPollInterval(12);
   TNXInitializer::SetDefaultTCPReceiveBufferSize(13);
   TNXInitializer::SetDefaultTCPSendBufferSize(14);
   const Socket aNewOne;
   TNXInitializer::SetDefaultSocketTimeout(300);
   TNXInitializer::SetDefaultSocketAbortPollInterval(60);
   TNXInitializer::SetDefaultTCPReceiveBufferSize(64240);
   TNXInitializer::SetDefaultTCPSendBufferSize(64240);
   const auto aSettings = [](const Socket& theSocket) {
      return std::vector<int>{theSocket.GetTimeout(), theSocket.GetAbortPollInterval(),
                              theSocket.GetTCPReceiveBufferSize(), theSocket.GetTCPSendBufferSize()};
   };
   EXPECT_EQ(aSettings(anOldOne), (std::vector<int>{300, 60, 64240, 64240}));
   EXPECT_EQ(aSettings(aNewOne), (std::vector<int>{11, 12, 13, 14}));
}

// The only real waits: time-outs are whole seconds. Both pass at the same time.
TEST(SocketTest, TimeOutsHaveCodesOfTheirOwn)
{
   ConnectedSockets aPair;
   Socket aListener;
   ASSERT_TRUE(aListener.Listen(0, 1));
   std::jthread anAcceptor([&] { EXPECT_EQ(aListener.Accept(1), 0); });
   aPair.itsAcceptor.SetTimeout(1);
   EXPECT_EQ(aPair.itsAcceptor.ReadBinary(&gByte, 1), -1);
   anAcceptor.join();
   EXPECT_EQ(aPair.itsAcceptor.GetResultCode(), TN_TRANSPORT_TIMED_OUT);
   EXPECT_EQ(aListener.GetResultCode(), TN_TIMED_OUT);
}

// Reads, sends to a peer that does not read, and connects to a host that does not answer.
TEST(SocketTest, AnAbortRequestOfAnotherThreadEndsEveryWait)
{
   Socket aListener; // its queue is full: the system leaves the next connect without an answer
   ASSERT_TRUE(aListener.Listen(0, 0));
   const std::string aPort = std::to_string(aListener.GetListenPort());
   Socket aFirst;
   ASSERT_TRUE(aFirst.Open("127.0.0.1", aPort));
   const std::vector<unsigned char> aBytes(20'000'000);
   const std::function<int(Socket&)> anOperations[] = {
       [](Socket& theSocket) { return theSocket.ReadBinary(&gByte, 1) > 0; },
       [&](Socket& theSocket) { return theSocket.SendBinary(aBytes.data(), static_cast<int>(aBytes.size())) > 0; },
       [&](Socket& theSocket) { return theSocket.Open("127.0.0.1", aPort); }};
   for (const auto& anOperation : anOperations)
   {
      ConnectedSockets aPair;
      aPair.itsRequester.SetAbortPollMilliseconds(5);
      std::jthread anotherThread([&] {
         std::this_thread::sleep_for(std::chrono::milliseconds(20));
         aPair.itsRequester.SetAbortRequestedFlag(1);
      });
      EXPECT_EQ(anOperation(aPair.itsRequester), 0);
      EXPECT_EQ(aPair.itsRequester.GetResultCode(), TN_CANCELLED);
      anotherThread.join();
   }
}

TEST(SocketTest, AConnectionIsGivenAwayWithoutBeingClosed)
{
   ConnectedSockets aPair;
   const Socket::Handle aHandle = aPair.itsAcceptor.UnmanageConnection();
   EXPECT_FALSE(aPair.itsAcceptor.Connected());
   aPair.itsAcceptor.Close();
   aPair.itsRequester.SetTimeout(2);
   {
      Socket anotherOne;
      anotherOne.ManageConnection(aHandle);
      EXPECT_TRUE(anotherOne.Connected() && anotherOne.InputConnected() && anotherOne.OutputConnected());
      EXPECT_EQ(anotherOne.GetPeerIPAddress(), "127.0.0.1");
      EXPECT_EQ(anotherOne.GetTCPSendBufferSize(), 64240);
      EXPECT_EQ(anotherOne.SendBinary(&gByte, 1), 1);
      EXPECT_EQ(aPair.itsRequester.ReadBinary(&gByte, 1), 1);
   }
   EXPECT_EQ(aPair.itsRequester.ReadBinary(&gByte, 1), -1);
   EXPECT_EQ(aPair.itsRequester.GetResultCode(), TN_END_OF_FILE) << "whoever has a connection ends it";
}

TEST(SocketTest, DatagramsGoFromAClientToAServer)
{
   Socket aFinder; // of a port that is free
   ASSERT_TRUE(aFinder.Listen(0, 1));
   const std::string aPort = std::to_string(aFinder.GetListenPort());
   Socket aServer;
   Socket aClient;
   ASSERT_TRUE(aServer.BindUDPServer(aPort));
   ASSERT_TRUE(aClient.BindUDPClient("127.0.0.1", aPort));
   const unsigned char aSent[] = {1, 2, 3};
   EXPECT_EQ(aClient.SendBinary(aSent, 3), 3);
   Socket anotherServer;
   anotherServer.ManageUDPConnection(aServer.UnmanageConnection());
   unsigned char aReceived[10] = {};
   EXPECT_EQ(anotherServer.ReadBinary(aReceived, sizeof aReceived), 3);
   EXPECT_EQ(aReceived[2], 3);
}

TEST(SocketStreamsTest, AdaptASocketToTheGeneralStreams)
{
   ConnectedSockets aPair;
   SocketOutputStream anOutput(aPair.itsRequester);
   SocketInputStream anInput(aPair.itsAcceptor);
   const std::vector<unsigned char> aSent = CountingBytes(5);
   anOutput.Write(aSent.data(), 3);
   anOutput.Write(aSent.data() + 3, 2);
   unsigned char aReceived[9];
   EXPECT_EQ(anInput.Read(aReceived, 4), 4u);
   anOutput.Close();
   EXPECT_EQ(anInput.Read(aReceived + 4, 5), 1u);
   EXPECT_EQ(anInput.Read(aReceived + 5, 4), 0u);
   EXPECT_EQ(std::vector(aReceived, aReceived + 5), aSent);
   anInput.Reset();
   EXPECT_EQ(StreamErrorOf([&] { anInput.Read(aReceived, 1); }),
             (StreamError{"SocketInputStream::Read(uchar_t*, size_t): Socket IO Error", TN_NOT_CONNECTED, ENOTCONN}));
   EXPECT_EQ(StreamErrorOf([&] { anOutput.Write(aReceived, 1); }),
             (StreamError{"SocketOutputStream::Write(uchar_t*, size_t): Socket IO Error", TN_NOT_CONNECTED, ENOTCONN}));
}

} // namespace

// Associations over TCP on the loopback interface, beside plain TCP that moves the same bytes: what the protocol costs.
#include <array>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include <benchmark/benchmark.h>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/services/Verification.h"
#include "talvenor/ul/Socket.h"
#include "talvenor/ul/SocketDULStream.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{
const char kVerification[] = "1.2.840.10008.1.1";
const char kImplicit[] = "1.2.840.10008.1.2";

// The sizes in bytes of what a C-ECHO and an association with one context send.
constexpr int kEchoRequest = 80;
constexpr int kEchoResponse = 90;
constexpr int kAssociateRequest = 217;
constexpr int kAssociateAcceptance = 196;
constexpr int kRelease = 10;

// Serves every connection with theServe, one after the other, on a thread of its own.
class Server
{
public:
   template <class Action>
   explicit Server(Action theServe)
   {
      itsListener.SetAbortPollMilliseconds(20);
      if (!itsListener.Listen(0, 16, "127.0.0.1"))
      {
         throw std::runtime_error("cannot listen");
      }
      itsPort = std::to_string(itsListener.GetListenPort());
      itsThread = std::thread([this, theServe] {
         while (!itsIsDone)
         {
            if (itsListener.Accept(1))
            {
               theServe(itsListener.UnmanageConnection());
            }
         }
      });
   }
   ~Server()
   {
      itsIsDone = true;
      itsListener.SetAbortRequestedFlag(1);
      itsThread.join();
   }

   const RWCString& GetPort() const { return itsPort; }

private:
   Socket itsListener;
   RWCString itsPort;
   std::atomic<bool> itsIsDone = false;
   std::thread itsThread;
};

bool ReadAll(Socket& theSocket, int theCount)
{
   std::array<unsigned char, 256> aBuffer;
   while (theCount > 0)
   {
      const int aRead = theSocket.ReadBinary(aBuffer.data(), theCount);
      if (aRead <= 0)
      {
         return false;
      }
      theCount -= aRead;
   }
   return true;
}

void Send(Socket& theSocket, int theCount)
{
   static constexpr std::array<unsigned char, 256> kBytes{};
   theSocket.SendBinary(kBytes.data(), theCount);
}

struct Exchange
{
   int itsRequest;
   int itsResponse;
};
constexpr Exchange kConversation[] = {
    {kAssociateRequest, kAssociateAcceptance}, {kEchoRequest, kEchoResponse}, {kRelease, kRelease}};

void PlainPingPong(benchmark::State& theState)
{
   const Server aServer([](Socket::Handle theHandle) {
      Socket aSocket;
      aSocket.ManageConnection(theHandle);
      while (ReadAll(aSocket, kEchoRequest))
      {
         Send(aSocket, kEchoResponse);
      }
   });
   Socket aSocket;
   aSocket.Open("127.0.0.1", aServer.GetPort());
   for (auto _ : theState)
   {
      Send(aSocket, kEchoRequest);
      ReadAll(aSocket, kEchoResponse);
   }
   theState.SetItemsProcessed(theState.iterations());
}
BENCHMARK(PlainPingPong)->UseRealTime();

void PlainConversation(benchmark::State& theState)
{
   const Server aServer([](Socket::Handle theHandle) {
      Socket aSocket;
      aSocket.ManageConnection(theHandle);
      for (const Exchange& anExchange : kConversation)
      {
         if (ReadAll(aSocket, anExchange.itsRequest))
         {
            Send(aSocket, anExchange.itsResponse);
         }
      }
      ReadAll(aSocket, 1); // the end
   });
   for (auto _ : theState)
   {
      Socket aSocket;
      aSocket.Open("127.0.0.1", aServer.GetPort());
      for (const Exchange& anExchange : kConversation)
      {
         Send(aSocket, anExchange.itsRequest);
         ReadAll(aSocket, anExchange.itsResponse);
      }
   }
   theState.SetItemsProcessed(theState.iterations());
}
BENCHMARK(PlainConversation)->UseRealTime();

void ServeAssociation(Socket::Handle theHandle)
{
   auto aStream = std::make_unique<SocketDULStream>();
   aStream->ManageConnection(theHandle);
   PDU_Service aService(SocketDULStreamFactory::GetInstance());
   if (aService.WaitForAssociationRequest(aStream.release()))
   {
      DICOMCommandObject aCommand;
      while (aService.ReadCommand(aCommand) && Verification().Read(aService, aCommand))
      {}
      aService.WaitForTransportCloseOrTimeout();
   }
}

void Associate(PDU_Service& theService, const RWCString& thePort)
{
   theService.ClearProposedPresentationContexts();
   theService.AddPresentationContextProposal(kVerification, kImplicit);
   if (!theService.RequestAssociation(
           SocketDULStreamFactory::GetInstance().GetConnectedDULStream("127.0.0.1", thePort)))
   {
      throw std::runtime_error("not associated: " + TNResult::Describe(theService.GetResultCode()));
   }
}

void Echo(benchmark::State& theState)
{
   const Server aServer(ServeAssociation);
   PDU_Service aService(SocketDULStreamFactory::GetInstance());
   Associate(aService, aServer.GetPort());
   for (auto _ : theState)
   {
      if (!Verification().Write(aService))
      {
         throw std::runtime_error("no echo");
      }
   }
   theState.SetItemsProcessed(theState.iterations());
   aService.Close();
}
BENCHMARK(Echo)->UseRealTime();

void AssociateEchoRelease(benchmark::State& theState)
{
   const Server aServer(ServeAssociation);
   PDU_Service aService(SocketDULStreamFactory::GetInstance());
   for (auto _ : theState)
   {
      Associate(aService, aServer.GetPort());
      Verification().Write(aService);
      aService.Close();
   }
   theState.SetItemsProcessed(theState.iterations());
}
BENCHMARK(AssociateEchoRelease)->UseRealTime();
} // namespace

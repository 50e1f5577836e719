// Many associations at once in one process, both sides, over the loopback interface: what they share is safe to share.
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/services/Verification.h"
#include "talvenor/ul/Socket.h"
#include "talvenor/ul/SocketDULStream.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{
constexpr int kRequesters = 6;
constexpr int kAssociations = 10; // of each, one after the other
constexpr int kEchoes = 3;        // on each

void ServeAssociation(Socket::Handle theHandle, std::atomic<int>& theReleases)
{
   auto aStream = std::make_unique<SocketDULStream>();
   aStream->ManageConnection(theHandle);
   PDU_Service aService(SocketDULStreamFactory::GetInstance());
   if (aService.WaitForAssociationRequest(aStream.release()))
   {
      DICOMCommandObject aCommand;
      while (aService.ReadCommand(aCommand) && Verification().Read(aService, aCommand))
      {}
      theReleases += aService.GetResultCode() == TN_PEER_RELEASED;
   }
}

int Request(const RWCString& thePort)
{
   int anEchoes = 0;
   PDU_Service aService(SocketDULStreamFactory::GetInstance());
   aService.AddPresentationContextProposal("1.2.840.10008.1.1", "1.2.840.10008.1.2");
   aService.AddPresentationContextProposal("1.2.840.10008.5.1.4.1.1.2", "1.2.840.10008.1.2.4.50"); // is refused
   for (int i = 0; i < kAssociations; ++i)
   {
      if (aService.RequestAssociation(
              SocketDULStreamFactory::GetInstance().GetConnectedDULStream("127.0.0.1", thePort)))
      {
         for (int j = 0; j < kEchoes; ++j)
         {
            anEchoes += Verification().Write(aService) != 0;
         }
         aService.Close();
      }
   }
   return anEchoes;
}

TEST(ManyAssociations, ShareTheProcess)
{
   Socket aListener;
   aListener.SetAbortPollMilliseconds(20);
   ASSERT_TRUE(aListener.Listen(0, 64, "127.0.0.1"));
   const RWCString aPort = std::to_string(aListener.GetListenPort());
   std::atomic<int> aReleases = 0;
   std::thread aServer([&] {
      std::vector<std::thread> aThreads;
      while (aThreads.size() < kRequesters * kAssociations && aListener.Accept(30))
      {
         aThreads.emplace_back(ServeAssociation, aListener.UnmanageConnection(), std::ref(aReleases));
      }
      for (std::thread& aThread : aThreads)
      {
         aThread.join();
      }
   });
   std::atomic<int> anEchoes = 0;
   std::vector<std::thread> aRequesters;
   for (int i = 0; i < kRequesters; ++i)
   {
      aRequesters.emplace_back([&] { anEchoes += Request(aPort); });
   }
   for (std::thread& aThread : aRequesters)
   {
      aThread.join();
   }
   aServer.join();
   EXPECT_EQ(anEchoes, kRequesters * kAssociations * kEchoes);
   EXPECT_EQ(aReleases, kRequesters * kAssociations);
}
} // namespace

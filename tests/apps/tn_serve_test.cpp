// tn serve under the load of good and bad peers on the loopback interface.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/PDUBytes.h"
#include "support/RunTn.h"
#include "support/ServedNode.h"
#include "support/TemporaryDirectory.h"
#include "talvenor/ul/Socket.h"

using namespace PDUBytes;
using namespace std::string_literals;

namespace
{
const std::string kVerification = "1.2.840.10008.1.1";
const std::string kRequest = Request({{1, kVerification, {"1.2.840.10008.1.2"}}});

std::string Changed(std::string theBytes, std::size_t thePlace, char theByte)
{
   theBytes.at(thePlace) = theByte;
   return theBytes;
}

// A peer that says what it is told to.
class RawPeer
{
public:
   RawPeer(const ServedNode& theNode, const std::string& theBytes)
   {
      itsSocket.SetTimeout(5);
      itsSocket.Open("127.0.0.1", theNode.Port());
      Send(theBytes);
   }

   void Send(const std::string& theBytes)
   {
      itsSocket.SendBinary(reinterpret_cast<const unsigned char*>(theBytes.data()), static_cast<int>(theBytes.size()));
   }

   // What the node sends until it closes, or falls silent.
   std::string Answer()
   {
      std::string aBytes;
      unsigned char aBlock[1024];
      int aCount = 0;
      while ((aCount = itsSocket.ReadBinary(aBlock, sizeof aBlock)) > 0)
      {
         aBytes.append(aBlock, aBlock + aCount);
      }
      return Describe(aBytes) + (itsSocket.GetResultCode() == TN_END_OF_FILE ? " end" : " silence");
   }

private:
   Socket itsSocket;
};

TEST(TnServe, AnswersBadPeersByTheBookAndGoodOnesMeanwhile)
{
   ServedNode aNode({"--artim", "1"});
   const struct
   {
      const char* itsName;
      std::string itsBytes;
      const char* itsAnswer;
   } kCases[] = {
       {"no DICOM", "GET / HTTP/1.1\r\n\r\n", "ABORT(2,1) end"},
       {"type 99", PDU(99, "abcd"), "ABORT(2,1) end"},
       {"data first", PData(PDV(1, 3, "abcd")), "ABORT(2,2) end"},
       {"release first", ReleaseRequest(), "ABORT(2,2) end"},
       {"request of 4 GiB", PDU(1, "", 0xFFFFFFFF), "ABORT(2,6) end"},
       {"item longer than the request", PDU(1, kRequest.substr(6, 68) + Item(0x10, "1.2").substr(0, 4)),
        "ABORT(2,6) end"},
       {"half a request", kRequest.substr(0, 100), " end"}, // when its time is over
       {"nothing", "", " end"},
       {"abort first", Abort(0, 0), " end"},
       {"protocol version 2", Changed(kRequest, 7, '\2'), "RJ(1,2,2) end"},
       {"another application context", Changed(kRequest, 94, '2'), "RJ(1,1,2) end"},
       {"class that is not served", Request({{1, "1.2.3", {"1.2.840.10008.1.2"}}}), "AC end"},
       {"release", kRequest + ReleaseRequest(), "AC RELEASED end"},
       {"unknown command", kRequest + PData(PDV(1, 3, "\0\0\0\1\2\0\0\0\x77\x77"s)), "AC ABORT(0,0) end"},
       {"nothing but JPEG where nothing is stored", Request({{1, kVerification, {"1.2.840.10008.1.2.4.50"}}}),
        "AC end"},
       {"an ID twice",
        Request({{1, kVerification, {"1.2.840.10008.1.2"}}, {1, kVerification, {"1.2.840.10008.1.2.1"}}}) +
            PData(PDV(1, 2, "abcd")),
        "AC ABORT(2,6) end"},
       {"second request", kRequest + kRequest, "AC ABORT(2,2) end"},
       {"PDV of length 1", kRequest + PData("\0\0\0\1\1\3"s), "AC ABORT(2,6) end"},
   };
   for (const auto& aCase : kCases)
   {
      RawPeer aPeer(aNode, aCase.itsBytes);
      EXPECT_TRUE(aNode.Echoes()) << aCase.itsName;
      EXPECT_EQ(aPeer.Answer(), aCase.itsAnswer) << aCase.itsName;
   }
   EXPECT_TRUE(aNode.Echoes());
   EXPECT_EQ(aNode.Stop(), 0);
}

TEST(TnServe, ManyPeersAreServedUpToTheLimit)
{
   ServedNode aNode({"--max-associations", "20", "--artim", "10"});
   std::vector<std::unique_ptr<RawPeer>> aPeers;
   for (int i = 0; i < 19; ++i)
   {
      aPeers.push_back(std::make_unique<RawPeer>(aNode, kRequest));
   }
   EXPECT_TRUE(aNode.Echoes()) << "the twentieth";
   aPeers.push_back(std::make_unique<RawPeer>(aNode, kRequest));
   EXPECT_EQ(RawPeer(aNode, kRequest).Answer(), "RJ(2,3,2) end");
   aPeers.clear();
   for (int i = 0; i < 100 && !aNode.Echoes(); ++i)
   {
      std::this_thread::sleep_for(std::chrono::milliseconds(20)); // until the node has noticed
   }
   EXPECT_TRUE(aNode.Echoes());
}

TEST(TnServe, StopsAtOnceWhileAssociationsAreIdle)
{
   ServedNode aNode({});
   RawPeer aPeer(aNode, kRequest);
   EXPECT_TRUE(aNode.Echoes());
   const auto aStart = std::chrono::steady_clock::now();
   EXPECT_EQ(aNode.Stop(), 0);
   EXPECT_LT(std::chrono::steady_clock::now() - aStart, std::chrono::seconds(10)); // not the minutes of time-outs
   EXPECT_EQ(aPeer.Answer(), "AC end");
}

TEST(TnServe, APolicyNarrowsWhatIsAccepted)
{
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("policy"), "# who may come\nfriend FRIEND remoteae\n");
   ServedNode aNode({"--policy", aFolder.File("policy")});
   EXPECT_EQ(Tn("echo --aet FRIEND ANY@127.0.0.1:" + aNode.Port()).itsCode, 0);
   const Outcome aStranger = Tn("echo --aet STRANGER ANY@127.0.0.1:" + aNode.Port());
   EXPECT_EQ(aStranger.itsCode, 6);
   EXPECT_TRUE(Contains(aStranger.itsErrors, "alling")) << aStranger.itsErrors;
   EXPECT_EQ(Tn("serve --port 0 --policy " + aFolder.File("nothing")).itsCode, 2);
}
} // namespace

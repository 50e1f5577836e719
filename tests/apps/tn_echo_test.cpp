// tn echo against peers that answer well, badly and not at all.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/CommandBytes.h"
#include "support/PDUBytes.h"
#include "support/RunTn.h"
#include "support/ScriptedPeer.h"

namespace
{
using namespace CommandBytes;
using namespace PDUBytes;
using enum ScriptedPeer::AtTheEnd;

std::string Context(unsigned char theResult, const std::string& theSyntax = "1.2.840.10008.1.2")
{
   return Acceptance({{1, theResult, theSyntax}}, 16384, Item(0x55, "PEER_7"));
}

// A C-ECHO response (PS3.7 9.3.5.2) to that message.
std::string Echoed(unsigned int theMessageID, const std::string& theStatus, unsigned int theField = 0x8030)
{
   return PData(PDV(1, 3,
                    CommandSet(Element(0x0002, "1.2.840.10008.1.1\0"s) + US(0x0100, theField) +
                               US(0x0120, theMessageID) + US(0x0800, 0x0101) + theStatus)));
}

std::string Status(unsigned int theStatus)
{
   return US(0x0900, theStatus);
}

const std::string kAccepted = Context(0);
const std::string kEchoed = Echoed(1, Status(0));
const std::string kReleased = ReleaseResponse();

TEST(TnEcho, TellsWhatThePeerAnswered)
{
   using Script = std::vector<std::string>;
   const struct
   {
      const char* itsName;
      std::string itsOptions;
      Script itsAnswers;
      ScriptedPeer::AtTheEnd itsEnd;
      int itsCode;
      const char* itsText;     // in what is printed, here or there
      const char* itsReceived; // by the peer: types of PDUs
   } kCases[] = {
       {"answered", "", {kAccepted, kEchoed, kReleased}, kRead, 0, "echo 1: ", "145"},
       {"told about", "", {kAccepted, kEchoed, kReleased}, kRead, 0, "PEER_7 (1.2.3), Implicit VR", "145"},
       {"answered with the release missing",
        "--timeout 0.05",
        {kAccepted, kEchoed},
        kRead,
        0,
        "not released properly: no answer within 0.05 s",
        "145"},
       {"rejected for good",
        "",
        {Rejection('\1', '\1', '\7')},
        kClose,
        6,
        "for good by the peer's application: called AE title not recognized (result 1, source 1, reason 7)",
        "1"},
       {"what would help",
        "--aet ME",
        {Rejection('\1', '\1', '\3')},
        kClose,
        6,
        "asked as PEER by ME; the peer has to know",
        "1"},
       {"rejected for now", "", {Rejection('\2', '\3', '\2')}, kClose, 6, "for now by", "1"},
       {"rejected by nobody", "", {Rejection('\x09', '\x09', '\x09')}, kClose, 6, "a reason without a meaning", "1"},
       {"service refused",
        "",
        {Context(3)},
        kRead,
        7,
        "context 1, Verification SOP Class (1.2.840.10008.1.1) in Implicit VR Little Endian (1.2.840.10008.1.2) or "
        "Explicit VR Little Endian (1.2.840.10008.1.2.1): abstract syntax not supported",
        "1"},
       {"context left out", "", {Acceptance({})}, kRead, 7, "): not answered", "1"},
       {"result without a meaning", "", {Context(9)}, kRead, 7, "(result 9)", "1"},
       {"syntax not offered", "", {Context(0, "1.2.840.10008.1.2.4.50")}, kRead, 7, "which was not offered", "17"},
       {"context answered twice",
        "",
        {Acceptance({{1, 0, "1.2.840.10008.1.2"}, {1, 0, "1.2.840.10008.1.2.1"}})},
        kRead,
        8,
        "context 1 more than once",
        "17"},
       {"status of failure",
        "",
        {kAccepted, Echoed(1, Status(0x0122))},
        kRead,
        8,
        "status 0122H: Refused: SOP class not supported",
        "147"},
       {"no status", "", {kAccepted, Echoed(1, "")}, kRead, 8, "no status", "147"},
       {"status of one byte", "", {kAccepted, Echoed(1, Element(0x0900, "\0"s))}, kRead, 8, "no status", "147"},
       {"answer to another message",
        "",
        {kAccepted, Echoed(2, Status(0))},
        kRead,
        8,
        "to message 2, asked was message 1",
        "147"},
       {"the same answer twice",
        "--repeat 2 --interval 0",
        {kAccepted, kEchoed, kEchoed},
        kRead,
        8,
        "2 sent, 1 answered",
        "1447"},
       {"response of another service", "", {kAccepted, Echoed(1, Status(0), 0x8001)}, kRead, 8, "understood", "147"},
       {"abort instead of acceptance", "", {Abort(0, 0)}, kClose, 8, "application aborted", "1"},
       {"abort instead of an answer", "", {kAccepted, Abort(2, 6)}, kClose, 8, "invalid PDU parameter", "14"},
       {"release instead of an answer", "", {kAccepted, ReleaseRequest()}, kRead, 8, "released", "146"},
       {"closed instead of acceptance", "", {""}, kClose, 5, "closed the connection", "1"},
       {"closed instead of an answer", "", {kAccepted, ""}, kClose, 5, "closed the connection", "14"},
       {"no acceptance", "--timeout 0.05", {}, kRead, 9, "no answer within 0.05 s", "1"},
       {"no answer", "--timeout 0.05", {kAccepted}, kRead, 9, "no answer within 0.05 s", "14"},
       {"a server of another kind", "", {"HTTP/1.1 400 Bad Request\r\n\r\n"}, kRead, 8, "understood", "17"},
       {"JSON", "--json", {kAccepted, kEchoed, kReleased}, kRead, 0, R"("sent":1,"milliseconds":[)", "145"},
       {"JSON of a failure",
        "--json",
        {Rejection('\1', '\1', '\7')},
        kClose,
        6,
        R"("exitCode":6,"failure":"assoc)",
        "1"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      ScriptedPeer aPeer(aCase.itsAnswers, aCase.itsEnd);
      const Outcome anOutcome = Tn("echo " + aCase.itsOptions + " PEER@127.0.0.1:" + aPeer.Port());
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsOutput + anOutcome.itsErrors, aCase.itsText))
          << anOutcome.itsOutput << anOutcome.itsErrors;
      EXPECT_EQ(aPeer.Finish(), aCase.itsReceived);
   }
}

TEST(TnEcho, WaitsForAnAnswerAsAWholeNoLongerThanItMay)
{
   ScriptedPeer aPeer({kAccepted}, kRead, std::chrono::milliseconds(2)); // 300 ms for all of it
   const Outcome anOutcome = Tn("echo --timeout 0.05 PEER@127.0.0.1:" + aPeer.Port());
   EXPECT_EQ(anOutcome.itsCode, 9) << anOutcome.itsErrors;
}

TEST(TnEcho, TellsThatNobodyListens)
{
   std::string aPort;
   {
      ScriptedPeer aPeer({});
      aPort = aPeer.Port();
   }
   const Outcome anOutcome = Tn("echo PEER@127.0.0.1:" + aPort);
   EXPECT_EQ(anOutcome.itsCode, 5);
   EXPECT_EQ(anOutcome.itsErrors, "tn echo: PEER@127.0.0.1:" + aPort + ": no connection to 127.0.0.1 port " + aPort +
                                      ": Connection refused\n");
}

TEST(TnEcho, RefusesWrongUse)
{
   for (const char* anArguments :
        {"", "PEER@", "PEER@host:", "PEER@host:0", "PEER@host:65536", "PEER@host:12x", "@host:104", "PEER@[::1]:104",
         "SEVENTEEN_LETTERS@host", "'BACK\\SLASH@host'", "--aet '' host", "--repeat 0 host", "--timeout -1 host",
         "--trace Nothing host", "host other"})
   {
      EXPECT_EQ(Tn(std::string("echo ") + anArguments).itsCode, 2) << anArguments;
   }
}

TEST(TnEcho, ShowsMessagesInALog)
{
   const TemporaryDirectory aFolder;
   ScriptedPeer aPeer({kAccepted, kEchoed, kReleased});
   const Outcome anOutcome =
       Tn("echo --trace Dimsec --log '" + aFolder.File("log") + "' PEER@127.0.0.1:" + aPeer.Port());
   EXPECT_EQ(anOutcome.itsErrors, "");
   const std::string aLog = ReadFile(aFolder.File("log"));
   EXPECT_TRUE(Contains(aLog, "\nCEchoRQ::Write(): CEcho Request Command Written\n")) << aLog;
   EXPECT_TRUE(Contains(aLog, "\nCEchoRSP::Read(): CEchoRSP Response Command Read\n")) << aLog;
}
} // namespace

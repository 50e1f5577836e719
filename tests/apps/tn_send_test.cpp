// tn send to a node that stores, and to peers that answer badly or not at all.
#include <future>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/CommandBytes.h"
#include "support/DatasetBytes.h"
#include "support/FileBytes.h"
#include "support/PDUBytes.h"
#include "support/RunTn.h"
#include "support/ScriptedPeer.h"
#include "support/StoringNode.h"
#include "talvenor/file/Part10FileInputStream.h"

namespace
{
using namespace PDUBytes;

const std::string kImplicit = "1.2.840.10008.1.2";
const std::string kExplicit = "1.2.840.10008.1.2.1";
const std::string kBig = "1.2.840.10008.1.2.2";
const std::string kJPEG = "1.2.840.10008.1.2.4.50";
const std::string kJPEG2000 = "1.2.840.10008.1.2.4.90";
const std::vector<std::string> kNative = {kImplicit, kExplicit, kBig};

std::string DatasetOf(const std::string& thePath)
{
   return ReadFile(thePath).substr(Part10FileInputStream(thePath, 1, 1).GetHeaderSize());
}

// A file of that transfer syntax that is called theInstance.
std::string MakeFile(const std::string& theSyntax, const std::string& theInstance, const std::string& theRest)
{
   return FileHeader(theSyntax + std::string(theSyntax.size() % 2, '\0')) +
          ShortElement(Bytes("\x08\x00\x16\x00"), "UI", Bytes("1.2.3\0")) +
          ShortElement(Bytes("\x08\x00\x18\x00"), "UI", theInstance) + theRest;
}

std::string Text(const std::string& theValue)
{
   return ShortElement(Bytes("\x08\x00\x70\x00"), "LO", theValue);
}

TEST(TnSend, SendsFilesAsTheyAreOrEncodedAnew)
{
   const TemporaryDirectory aFolder;
   const std::string anOdd = aFolder.File("odd");
   const std::string anEven = aFolder.File("even");
   WriteFile(anOdd, MakeFile(kExplicit, "1.22.3", Text("odd")));
   WriteFile(anEven, MakeFile(kExplicit, "1.22.3", Text("odd ")));
   const struct
   {
      const char* itsName;
      std::string itsFile;
      std::vector<std::string> itsAccepted;
      std::string itsArrived;  // the transfer syntax; empty: not accepted
      std::string itsExpected; // the file whose dataset arrives; empty: that of the conversion
   } kCases[] = {
       {"explicit as it is", Sample("ct-explicit.dcm"), kNative, kExplicit, Sample("ct-explicit.dcm")},
       {"implicit as it is", Sample("sr-implicit.dcm"), kNative, kImplicit, Sample("sr-implicit.dcm")},
       {"big endian as it is", Sample("cr-big-endian.dcm"), kNative, kBig, Sample("cr-big-endian.dcm")},
       {"explicit to implicit", Sample("ct-explicit.dcm"), {kImplicit}, kImplicit, ""},
       {"implicit to explicit", Sample("sr-implicit.dcm"), {kExplicit}, kExplicit, ""},
       {"big endian to implicit", Sample("cr-big-endian.dcm"), {kImplicit, kJPEG}, kImplicit, ""},
       {"compressed as it is", Sample("us-jpeg.dcm"), {kJPEG}, kJPEG, Sample("us-jpeg.dcm")},
       {"decompressed", Sample("us-jpeg.dcm"), kNative, kExplicit, ""},
       {"compressed, not taken", Sample("us-jpeg.dcm"), {kJPEG2000}, "", ""},
       {"native, not taken", Sample("ct-explicit.dcm"), {kJPEG}, "", ""},
       {"odd lengths become even", anOdd, kNative, kExplicit, anEven},
   };
   for (const auto& aCase : kCases)
   {
      StoringNode aNode(aCase.itsAccepted);
      const Outcome anOutcome = Tn("send " + aNode.Address() + " '" + aCase.itsFile + "'");
      const auto anInstances = aNode.Finish();
      ASSERT_EQ(anInstances.size(), aCase.itsArrived.empty() ? 0u : 1u) << aCase.itsName << anOutcome.itsErrors;
      EXPECT_EQ(anOutcome.itsCode, aCase.itsArrived.empty() ? 7 : 0) << aCase.itsName << anOutcome.itsErrors;
      if (aCase.itsArrived.empty())
      {
         EXPECT_TRUE(Contains(anOutcome.itsErrors, aCase.itsFile + ": the peer does not take it: ")) << aCase.itsName;
         continue;
      }
      std::string anExpected = aCase.itsExpected;
      if (anExpected.empty())
      {
         anExpected = aFolder.File("converted");
         Tn("convert --to " + std::string(aCase.itsArrived == kImplicit ? "implicit" : "explicit") + " '" +
            aCase.itsFile + "' '" + anExpected + "'");
      }
      const StoringNode::Instance& anInstance = anInstances.begin()->second;
      EXPECT_EQ(anInstance.itsTransferSyntaxUID, aCase.itsArrived) << aCase.itsName;
      EXPECT_EQ(anInstance.itsBytes, DatasetOf(anExpected)) << aCase.itsName;
   }
}

TEST(TnSend, AsksOnceWhenNothingIsAccepted)
{
   StoringNode aNode({kJPEG});
   const Outcome anOutcome = Tn("send --retry 3 " + aNode.Address() + " '" + Sample("ct-explicit.dcm") + "' '" +
                                Sample("sr-implicit.dcm") + "'");
   EXPECT_EQ(anOutcome.itsCode, 7);
   EXPECT_EQ(LinesOf(anOutcome.itsErrors), 2u) << anOutcome.itsErrors;
   aNode.Finish();
   EXPECT_EQ(aNode.GetAssociationCount(), 1u);
}

// Files of different sizes, the first bigger than a PDU.
std::string MakeFiles(const TemporaryDirectory& theFolder, unsigned int theCount)
{
   for (unsigned int i = 0; i < theCount; ++i)
   {
      const std::string anInstance = "1.22." + std::to_string(100 + i); // of even length
      std::string aPixels = Bytes("\xE0\x7F\x10\x00OW\0\0") + std::string(4, '\0');
      const UINT32 aSize = i == 0 ? 300000 : i * 2;
      for (int aByte = 0; aByte < 4; ++aByte)
      {
         aPixels[8 + static_cast<std::size_t>(aByte)] = static_cast<char>(aSize >> 8 * aByte);
      }
      WriteFile(theFolder.File("file" + std::to_string(100 + i)),
                MakeFile(kExplicit, anInstance, aPixels + std::string(aSize, static_cast<char>(i))));
   }
   return "'" + theFolder.Path().string() + "'";
}

TEST(TnSend, NamesTwentyFilesWithTheSameFaultAndCountsTheRest)
{
   const TemporaryDirectory aFolder;
   for (int i = 0; i < 30; ++i)
   {
      WriteFile(aFolder.File("notes" + std::to_string(i)), "no DICOM file");
   }
   const TemporaryDirectory aReports;
   const Outcome anOutcome =
       Tn("send -r --report '" + aReports.File("all") + "' X@127.0.0.1:1 '" + aFolder.Path().string() + "'");
   EXPECT_EQ(LinesOf(anOutcome.itsErrors), 20u) << anOutcome.itsErrors;
   EXPECT_TRUE(Contains(anOutcome.itsErrors, "more files with this fault are only counted, --report names them\n"));
   EXPECT_EQ(LinesOf(ReadFile(aReports.File("all"))), 30u);
}

TEST(TnSend, LosesNothingWhateverThePeerAnswers)
{
   const TemporaryDirectory aFolder;
   const std::string aFiles = MakeFiles(aFolder, 3);
   const TemporaryDirectory aReports;
   const struct
   {
      const char* itsName;
      std::vector<int> itsAnswers;
      std::string itsOptions;
      int itsCode;
      std::size_t itsArrived;
      unsigned int itsAssociations;
      std::vector<std::string> itsReport; // what each of its lines ends with
   } kCases[] = {
       {"all well", {}, "", 0, 3, 1, {"sent\tstored (0000H)", "sent\tstored (0000H)", "sent\tstored (0000H)"}},
       {"warning",
        {0, 0xB007},
        "",
        0,
        3,
        1,
        {"sent\tstored (0000H)", "warning\tstored with a warning: the data set does not match its SOP class (B007H)",
         "(0000H)"}},
       {"one refused",
        {0, 0xA900},
        "",
        1,
        2,
        1,
        {"(0000H)", "failed\trefused: the data set does not match its SOP class (A900H)", "(0000H)"}},
       {"all refused",
        {0x0122, 0xC001, 0xA700},
        "",
        8,
        0,
        1,
        {"failed\trefused: SOP class not supported (0122H)", "(C001H)", "(A700H)"}},
       {"the first failure ends it",
        {0, 0xA700},
        "--fail-fast",
        1,
        1,
        1,
        {"(0000H)", "(A700H)", "not sent\ta file before it failed"}},
       {"out of resources for a while", {0xA700}, "--retry 1", 0, 3, 1, {"(0000H)", "(0000H)", "(0000H)"}},
       {"out of resources too long", {0xA700, 0, 0, 0xA701}, "--retry 1", 1, 2, 1, {"(0000H)", "(0000H)", "(A701H)"}},
       {"lost",
        {0, StoringNode::kClose},
        "",
        5,
        1,
        1,
        {"(0000H)", "failed\tthe peer closed the connection instead of answering",
         "not sent\tthere was no association any more"}},
       {"lost and found", {0, StoringNode::kClose}, "--retry 1", 0, 3, 2, {"(0000H)", "(0000H)", "(0000H)"}},
       {"lost with one file",
        {StoringNode::kClose, 0, StoringNode::kClose},
        "--retry 1",
        1,
        2,
        3,
        {"(0000H)", "failed\tthe peer closed", "(0000H)"}},
       {"silent",
        {0, StoringNode::kSilence},
        "--timeout 0.1",
        9,
        1,
        1,
        {"(0000H)", "failed\tno answer within 0.1 s", "not sent\tthere was"}},
       {"silent in the middle of a file",
        {StoringNode::kSilence},
        "--timeout 0.1",
        9,
        0,
        1,
        {"failed\tno answer within 0.1 s", "not sent\t", "not sent\t"}},
   };
   for (const auto& aCase : kCases)
   {
      StoringNode aNode(kNative, aCase.itsAnswers);
      const std::string aReport = aReports.File("report");
      const Outcome anOutcome =
          Tn("send -r " + aCase.itsOptions + " --report '" + aReport + "' " + aNode.Address() + " " + aFiles);
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << aCase.itsName << anOutcome.itsErrors;
      EXPECT_EQ(aNode.Finish().size(), aCase.itsArrived) << aCase.itsName;
      EXPECT_EQ(aNode.GetAssociationCount(), aCase.itsAssociations) << aCase.itsName;
      std::istringstream aLines(ReadFile(aReport));
      std::vector<std::string> aRest = aCase.itsReport;
      for (std::string aLine; std::getline(aLines, aLine);)
      {
         const auto aFound = std::find_if(aRest.begin(), aRest.end(),
                                          [&](const std::string& theText) { return Contains(aLine, theText); });
         ASSERT_NE(aFound, aRest.end()) << aCase.itsName << ": " << aLine;
         aRest.erase(aFound);
         EXPECT_TRUE(Contains(aLine, "/file10") && Contains(aLine, "\t1.22.10")) << aLine;
      }
      EXPECT_TRUE(aRest.empty()) << aCase.itsName << ": no line for " << aRest.front();
   }
}

// More than all the buffers on the way hold.
TEST(TnSend, APeerThatStopsInTheMiddleOfAFileHoldsNobodyUp)
{
   constexpr std::uint32_t kSize = 40000000;
   const TemporaryDirectory aFolder;
   DatasetBytes aPixels;
   aPixels.Stated(0x7FE00010, "OW", kSize);
   const std::string aFile = aFolder.File("big");
   WriteFile(aFile, MakeFile(kExplicit, "1.22.3", aPixels.Bytes()));
   std::filesystem::resize_file(aFile, std::filesystem::file_size(aFile) + kSize); // a hole
   const std::string anArguments = " '" + aFile + "' '" + Sample("ct-explicit.dcm") + "'";
   const std::string anAccepted = Acceptance({{1, 0, kExplicit}, {3, 0, kImplicit}});
   {
      StoringNode aNode(kNative, {StoringNode::kSilence});
      const Outcome anOutcome = Tn("send --timeout 0.3 " + aNode.Address() + anArguments);
      EXPECT_EQ(anOutcome.itsCode, 9) << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsErrors, "within 0.3 s")) << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsOutput + anOutcome.itsErrors, "0 sent, 1 failed, 1 not sent"));
   }
   ScriptedPeer aPeer({anAccepted}, ScriptedPeer::kClose);
   const Outcome anOutcome = Tn("send --timeout 5 PEER@127.0.0.1:" + aPeer.Port() + anArguments);
   EXPECT_EQ(anOutcome.itsCode, 5) << anOutcome.itsErrors;
   EXPECT_TRUE(Contains(anOutcome.itsOutput + anOutcome.itsErrors, "0 sent, 1 failed, 1 not sent"))
       << anOutcome.itsErrors;
}

TEST(TnSend, SharesFilesBetweenAssociations)
{
   const TemporaryDirectory aFolder;
   const std::string aFiles = MakeFiles(aFolder, 40);
   StoringNode aNode(kNative, {0, 0, StoringNode::kClose, 0xA700, 0, StoringNode::kClose});
   const Outcome anOutcome = Tn("send -r --json --parallel 4 --retry 3 " + aNode.Address() + " " + aFiles);
   EXPECT_EQ(anOutcome.itsCode, 0) << anOutcome.itsErrors;
   EXPECT_TRUE(Contains(anOutcome.itsOutput, "\"sent\":40,\"warnings\":0,\"failed\":0,")) << anOutcome.itsOutput;
   const auto anInstances = aNode.Finish();
   EXPECT_EQ(anInstances.size(), 40u);
   for (unsigned int i = 0; i < 40; ++i)
   {
      const std::string aName = std::to_string(100 + i);
      EXPECT_EQ(anInstances.at("1.22." + aName).itsBytes, DatasetOf(aFolder.File("file" + aName)));
   }
}

TEST(TnSend, TellsWhatAPeerDoesWrong)
{
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("file");
   WriteFile(aFile, MakeFile(kExplicit, "1.22.3", Text("text")));
   const std::string anAccepted = Acceptance({{1, 0, kExplicit}, {3, 0, kImplicit}});
   const auto anAnswer = [](unsigned int theID, const std::string& theStatus) {
      using namespace CommandBytes;
      return PData(PDV(1, 3,
                       CommandSet(Element(0x0002, "1.2.3\0"s) + US(0x0100, 0x8001) + US(0x0120, theID) +
                                  US(0x0800, 0x0101) + theStatus)));
   };
   const std::string aSuccess = CommandBytes::US(0x0900, 0);
   const struct
   {
      const char* itsName;
      std::vector<std::string> itsAnswers;
      int itsCode;
      const char* itsText;
      const char* itsReceived; // types of PDUs
   } kCases[] = {
       {"as it should be", {anAccepted, anAnswer(1, aSuccess), ReleaseResponse()}, 0, "1 sent; ", "145"},
       {"rejected", {Rejection('\1', '\1', '\7')}, 6, "called AE title not recognized", "1"},
       {"answer to another message",
        {anAccepted, anAnswer(7, aSuccess)},
        8,
        "the answer is to message 7, sent was message 1",
        "147"},
       {"answer without status", {anAccepted, anAnswer(1, "")}, 8, "the answer has no status", "147"},
       {"aborted", {anAccepted, Abort('\0', '\0')}, 8, "the peer's application aborted", "14"},
       {"released instead", {anAccepted, ReleaseRequest()}, 8, "released the association instead", "146"},
       {"a syntax that was not offered", {Acceptance({{1, 0, kJPEG}})}, 7, "which was not offered", "17"},
   };
   for (const auto& aCase : kCases)
   {
      ScriptedPeer aPeer(aCase.itsAnswers);
      const Outcome anOutcome = Tn("send --timeout 2 PEER@127.0.0.1:" + aPeer.Port() + " '" + aFile + "'");
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << aCase.itsName << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsErrors + anOutcome.itsOutput, aCase.itsText))
          << aCase.itsName << anOutcome.itsErrors;
      EXPECT_EQ(aPeer.Finish(), aCase.itsReceived) << aCase.itsName;
   }
}

// Everything is said of a file before the peer is called, which is never here.
TEST(TnSend, NamesWhatItLeavesOut)
{
   const TemporaryDirectory aFolder;
   const auto aMake = [&](const char* theName, const std::string& theBytes) {
      WriteFile(aFolder.File(theName), theBytes);
   };
   const std::string aWhole = MakeFile(kExplicit, "1.22.3", Text("text"));
   aMake("text.txt", "This is not an image, but long enough to hold one.");
   aMake("zeros", std::string(400, '\0'));
   aMake("cut", aWhole.substr(0, aWhole.size() - 1));
   aMake("header", FileHeader(kExplicit));
   std::filesystem::create_directory(aFolder.Path() / "empty");
   const struct
   {
      const char* itsArguments;
      int itsCode;
      const char* itsText;
   } kCases[] = {
       {"text.txt", 1, "text.txt: not a DICOM file"},
       {"zeros", 1, "zeros: not a DICOM file"},
       {"cut", 3, "cut: the file ends inside (0008,0070), of whose 4 bytes 3 are there"},
       {"header", 3, "header: it has no dataset"},
       {"missing", 3, "missing: it cannot be opened: No such file or directory"},
       {"empty", 3, "empty: it is a folder; -r sends the files below it"},
       {"-r empty", 1, "empty: there are no files in this folder"},
       {"cut text.txt", 1, "0 sent, 1 failed, 1 skipped"},
       {"--json --report - cut", 2, "both write to standard output"},
       {"--report empty cut", 4, "the report empty cannot be written"},
   };
   for (const auto& aCase : kCases)
   {
      const Outcome anOutcome = Tn("send PEER@127.0.0.1:1 " + std::string(aCase.itsArguments), "/dev/null",
                                   "cd '" + aFolder.Path().string() + "'; ");
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << aCase.itsArguments << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsErrors + anOutcome.itsOutput, aCase.itsText))
          << aCase.itsArguments << anOutcome.itsErrors << anOutcome.itsOutput;
   }
   const Outcome aPlan =
       Tn("send --dry-run PEER@127.0.0.1:1 '" + Sample("us-jpeg.dcm") + "' '" + Sample("us-jpeg.dcm") + "'");
   EXPECT_EQ(aPlan.itsCode, 0) << aPlan.itsErrors;
   EXPECT_TRUE(Contains(aPlan.itsErrors, "us-jpeg.dcm: it was named before and is sent once")) << aPlan.itsErrors;
   EXPECT_TRUE(Contains(aPlan.itsOutput, "association 1 with PEER@127.0.0.1:1: 1 file, ")) << aPlan.itsOutput;
}

TEST(TnSend, EndsWithASummaryWhenItIsInterrupted)
{
   const TemporaryDirectory aFolder;
   const std::string aFiles = MakeFiles(aFolder, 3);
   StoringNode aNode(kNative, {0, StoringNode::kSilence});
   const TemporaryDirectory aReports;
   const std::string aReport = aReports.File("report");
   // The shell's child gets the signal once the first file has been acknowledged.
   const Outcome anOutcome =
       Tn("--version", "/dev/null",
          "'" TN_PROGRAM "' send -r --report '" + aReport + "' " + aNode.Address() + " " + aFiles + " > '" +
              aReports.File("output") + "' 2>&1 & child=$!; until [ -s '" + aReport +
              "' ]; do sleep 0.01; done; kill -INT $child; wait $child; echo $? > '" + aReports.File("code") + "'; ");
   EXPECT_EQ(anOutcome.itsCode, 0);
   EXPECT_EQ(ReadFile(aReports.File("code")), "10\n");
   EXPECT_TRUE(Contains(ReadFile(aReports.File("output")), "1 sent, 1 failed, 1 not sent"))
       << ReadFile(aReports.File("output"));
   EXPECT_EQ(LinesOf(ReadFile(aReport)), 3u);
}
} // namespace

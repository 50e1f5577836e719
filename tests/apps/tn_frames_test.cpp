// tn frames on samples, damaged ones, and codestreams on their own.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/DatasetBytes.h"
#include "support/RunTn.h"
#include "support/TemporaryDirectory.h"

using namespace std::string_literals;

namespace
{
const std::string kOne = "\xFF\xD8\xFF\xD9"s;                 // the shortest images there are
const std::string kTwo = "\xFF\xD8\xFF\xFE\0\4ab\xFF\xD9\0"s; // a comment in it; padded
const std::string kOffsets = "\0\0\0\0\x0C\0\0\0"s;           // 12: 8 bytes of item header and 4 of the frame

std::string File(const std::string& theSyntax, int theFrames, const std::string& theTable,
                 const std::vector<std::string>& theFragments)
{
   DatasetBytes aBytes;
   aBytes.Element(0x00280008, "IS", std::to_string(theFrames) + (theFrames < 10 ? " " : ""));
   aBytes.Stated(0x7FE00010, "OB", DatasetBytes::kUndefined).Item(static_cast<UINT32>(theTable.size()), theTable);
   for (const std::string& aFragment : theFragments)
   {
      aBytes.Item(static_cast<UINT32>(aFragment.size()), aFragment);
   }
   aBytes.SequenceEnd();
   return DatasetBytes::Header(theSyntax) + aBytes.Bytes();
}

const char kJPEG[] = "1.2.840.10008.1.2.4.50";
const char kJPEGLS[] = "1.2.840.10008.1.2.4.80";
const char kRLE[] = "1.2.840.10008.1.2.5";

// The numbers in the lines, one blank between them.
std::string Rows(const std::string& theOutput)
{
   std::string aRows;
   for (std::size_t aLine = theOutput.find('\n') + 1; aLine < theOutput.size();)
   {
      const std::size_t anEnd = theOutput.find('\n', aLine);
      for (std::size_t i = aLine; i <= anEnd; ++i)
      {
         const bool isGap = theOutput[i] == ' ' && (aRows.empty() || aRows.back() == ' ' || aRows.back() == '\n');
         aRows += isGap ? "" : std::string(1, theOutput[i]);
      }
      aLine = anEnd + 1;
   }
   return aRows;
}

TEST(TnFrames, ListsFramesByCodestreamTableOrFragment)
{
   const struct
   {
      const char* itsName;
      std::string itsFile;
      const char* itsOptions;
      int itsCode;
      const char* itsRows; // frame, offset, length, fragments
   } kCases[] = {
       {"by codestream", File(kJPEG, 2, "", {kOne, kTwo}), "", 0, "1 0 4 1\n2 12 10 2\n"},
       {"across fragments", File(kJPEG, 2, "", {kOne.substr(0, 2), kOne.substr(2) + kTwo}), "", 0,
        "1 0 4 1-2\n2 10 10 2\n"},
       {"by table", File(kJPEG, 2, kOffsets, {kOne, kTwo}), "", 0, "1 0 4 1\n2 12 11 2\n"},
       {"table left aside", File(kJPEG, 2, kOffsets, {kOne, kTwo}), "--scan", 0, "1 0 4 1\n2 12 10 2\n"},
       {"table of the wrong size", File(kJPEG, 3, kOffsets, {kOne, kTwo, kOne}), "", 1,
        "1 0 4 1\n2 12 10 2\n3 31 4 3\n"},
       {"table that lies", File(kJPEG, 2, "\0\0\0\0\x0D\0\0\0"s, {kOne, kTwo}), "", 3, ""},
       {"fewer frames than told", File(kJPEG, 5, "", {kOne, kTwo}), "", 1, "1 0 4 1\n2 12 10 2\n"},
       {"a codestream nobody knows", File(kJPEGLS, 2, kOffsets, {"abcd", "ef", "gh"}), "", 0, "1 0 4 1\n2 12 4 2-3\n"},
       {"one fragment each", File(kJPEGLS, 2, "", {"abcd", "ef"}), "", 0, "1 0 4 1\n2 12 2 2\n"},
       {"cannot be told apart", File(kJPEGLS, 2, "", {"abcd", "ef", "gh"}), "", 3, ""},
       {"RLE", File(kRLE, 2, "", {"abcd", "ef"}), "", 0, "1 0 4 1\n2 12 2 2\n"},
       {"single RLE frame in parts", File(kRLE, 1, "", {"abcd", "ef"}), "", 0, "1 0 6 1-2\n"},
       {"no end", File(kJPEG, 2, "", {kOne, kTwo.substr(0, 8)}), "", 3, "1 0 4 1\n"},
       {"no frames", File(kJPEG, 2, "", {}), "", 1, ""},
       {"two thousand million frames", File(kJPEG, 2147483647, "", {kOne}), "", 1, "1 0 4 1\n"},
       {"two tables", File(kJPEG, 2, kOffsets, {kOne, kTwo}), "--offset-table", 0, "1 0 0\n2 12 12\n"},
       {"no table", File(kJPEG, 2, "", {kOne, kTwo}), "--offset-table", 0, "1 - 0\n2 - 12\n"},
       {"a wrong entry", File(kJPEG, 2, "\0\0\0\0\x0D\0\0\0"s, {kOne, kTwo}), "--offset-table", 1,
        "1 0 0\n2 13 12 differs\n"},
   };
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("frames.dcm");
   for (const auto& aCase : kCases)
   {
      WriteFile(aFile, aCase.itsFile);
      const Outcome anOutcome = Tn("frames "s + aCase.itsOptions + " " + aFile);
      EXPECT_EQ(Rows(anOutcome.itsOutput), aCase.itsRows) << aCase.itsName;
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << aCase.itsName << ": " << anOutcome.itsErrors;
      EXPECT_EQ(LinesOf(anOutcome.itsErrors), aCase.itsCode == 0 ? 0U : 1U) << aCase.itsName << anOutcome.itsErrors;
   }
}

TEST(TnFrames, TellsOfFramesAsJSON)
{
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("frames.dcm");
   WriteFile(aFile, File(kJPEG, 2, "", {kOne.substr(0, 2), kOne.substr(2) + kTwo}));
   EXPECT_EQ(Tn("frames --json " + aFile).itsOutput,
             R"({"frame":1,"offset":0,"length":4,"firstFragment":1,"fragments":2})"
             "\n"
             R"({"frame":2,"offset":10,"length":10,"firstFragment":2,"fragments":1})"
             "\n");
   WriteFile(aFile, File(kJPEG, 2, "\0\0\0\0\x0D\0\0\0"s, {kOne, kTwo}));
   const Outcome aTable = Tn("frames --json --offset-table " + aFile);
   EXPECT_EQ(aTable.itsCode, 1) << aTable.itsErrors;
   EXPECT_EQ(aTable.itsOutput, R"({"frame":1,"inTheData":0,"built":0})"
                               "\n"
                               R"({"frame":2,"inTheData":13,"built":12})"
                               "\n");
}

TEST(TnFrames, TakesAFrameOut)
{
   const struct
   {
      const char* itsName;
      std::string itsFile;
      int itsFrame;
      std::string itsBytes; // empty where there is none
   } kCases[] = {
       {"second frame", File(kJPEG, 2, "", {kOne, kTwo}), 2, kTwo.substr(0, 10)},
       {"by table", File(kJPEG, 2, kOffsets, {kOne, kTwo}), 2, kTwo.substr(0, 10)},
       {"by fragments", File(kJPEGLS, 2, kOffsets, {"abcd", "ef", "gh"}), 2, "efgh"},
       {"none", File(kJPEG, 2, "", {kOne}), 2, ""},
       {"beyond", File(kJPEG, 2, "", {kOne, kTwo}), 3, ""},
   };
   for (const auto& aCase : kCases)
   {
      const TemporaryDirectory aFolder;
      WriteFile(aFolder.File("frames.dcm"), aCase.itsFile);
      const Outcome anOutcome = Tn("frames --extract " + std::to_string(aCase.itsFrame) + " -o " +
                                   aFolder.File("frame") + " " + aFolder.File("frames.dcm"));
      EXPECT_EQ(anOutcome.itsCode, aCase.itsBytes.empty() ? 3 : 0) << aCase.itsName << anOutcome.itsErrors;
      EXPECT_EQ(aFolder.FileCount(), aCase.itsBytes.empty() ? 1U : 2U) << aCase.itsName;
      if (!aCase.itsBytes.empty())
      {
         EXPECT_EQ(ReadFile(aFolder.File("frame")), aCase.itsBytes) << aCase.itsName;
      }
   }
}

TEST(TnFrames, NativeFramesAreAsLargeAsTheHeaderSays)
{
   const Outcome anOutcome = Tn("frames " + Sample("ct-explicit.dcm"));
   EXPECT_EQ(anOutcome.itsCode, 0);
   const std::size_t aSize = Tn("frames --extract 1 -o - " + Sample("ct-explicit.dcm")).itsOutput.size();
   EXPECT_EQ(Rows(anOutcome.itsOutput), "1 0 " + std::to_string(aSize) + " -\n");
   EXPECT_EQ(Tn("frames --extract 2 -o - " + Sample("ct-explicit.dcm")).itsCode, 3);
   const Outcome anUnwritable = Tn("frames --extract 1 -o /nowhere/frame " + Sample("ct-explicit.dcm"));
   EXPECT_EQ(anUnwritable.itsCode, 4);
   EXPECT_TRUE(Contains(anUnwritable.itsErrors, "/nowhere/frame: cannot be created")) << anUnwritable.itsErrors;
   const std::string aWhole = ReadFile(Sample("ct-explicit.dcm"));
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("cut"), aWhole.substr(0, aWhole.size() - 1));
   EXPECT_EQ(Tn("frames " + aFolder.File("cut")).itsCode, 3) << "what is not there was listed";
}

TEST(TnFrames, ShowsCodestreamsOnTheirOwn)
{
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("two.jpg"), kOne + kTwo);
   const Outcome aList = Tn("frames " + aFolder.File("two.jpg"));
   EXPECT_EQ(Rows(aList.itsOutput), "1 0 4\n2 4 10\n") << aList.itsErrors;
   EXPECT_EQ(Tn("frames --json " + aFolder.File("two.jpg")).itsOutput,
             "{\"image\":1,\"offset\":0,\"length\":4}\n{\"image\":2,\"offset\":4,\"length\":10}\n");
   const Outcome aMarkers = Tn("frames --markers " + aFolder.File("two.jpg"));
   EXPECT_TRUE(Contains(aMarkers.itsOutput, "COM")) << aMarkers.itsOutput;
   const Outcome aTable = Tn("frames --offset-table " + aFolder.File("two.jpg"));
   EXPECT_EQ(aTable.itsCode, 3);
}
} // namespace

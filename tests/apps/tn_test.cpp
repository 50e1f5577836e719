// Runs the built program on the files of data/samples, whole and damaged, and looks at what a user or a script sees:
// exit code, standard output, standard error.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <zlib.h>

#include "support/RunTn.h"
#include "support/TemporaryDirectory.h"

using namespace std::string_literals;

namespace
{
// A row of tn dump --elements with a value in memory.
std::string Row(const std::string& thePath, const std::string& theTag, const std::string& theVR,
                const std::string& theValue)
{
   char aChecksum[9];
   std::snprintf(aChecksum, sizeof aChecksum, "%08lx",
                 crc32(0, reinterpret_cast<const Bytef*>(theValue.data()), static_cast<uInt>(theValue.size())));
   return thePath + '\t' + theTag + '\t' + theVR + '\t' + std::to_string(theValue.size()) + '\t' + aChecksum + '\n';
}

std::string SequenceRow(const std::string& thePath, const std::string& theTag)
{
   return thePath + '\t' + theTag + "\tSQ\tundefined\t-\n";
}

const std::string kRoot = "2.25.339282991848464000405290";
} // namespace

// Every element of the file as the script that makes it states it; text is padded to even length with a blank, UIDs
// with a NUL (PS3.5 6.2).
TEST(TnDump, ListsEveryElementOfAnEncapsulatedImage)
{
   const std::string aClass = "1.2.840.10008.5.1.4.1.1.3.1\0"s;
   const std::string anInstance = kRoot + ".9.4.1.1\0"s;
   std::string anExpected =
       Row("/", "0002,0001", "OB", "\0\1"s) + Row("/", "0002,0002", "UI", aClass) +
       Row("/", "0002,0003", "UI", anInstance) + Row("/", "0002,0010", "UI", "1.2.840.10008.1.2.4.50") +
       Row("/", "0002,0012", "UI", kRoot + ".1\0"s) + Row("/", "0002,0013", "SH", "TALVENOR_1_0") +
       Row("/", "0008,0008", "CS", "ORIGINAL\\PRIMARY") + Row("/", "0008,0016", "UI", aClass) +
       Row("/", "0008,0018", "UI", anInstance) + Row("/", "0008,0020", "DA", "20260301") +
       Row("/", "0008,0030", "TM", "140000") + Row("/", "0008,0050", "SH", "A-1004") +
       Row("/", "0008,0060", "CS", "US") + Row("/", "0008,0070", "LO", "Talvenor") + Row("/", "0008,0090", "PN", "") +
       Row("/", "0010,0010", "PN", "Niemi^Helmi ") + Row("/", "0010,0020", "LO", "TN-0004 ") +
       Row("/", "0010,0030", "DA", "") + Row("/", "0010,0040", "CS", "F ") + Row("/", "0018,1063", "DS", "33.3") +
       Row("/", "0020,000d", "UI", kRoot + ".9.4\0"s) + Row("/", "0020,000e", "UI", kRoot + ".9.4.1\0"s) +
       Row("/", "0020,0010", "SH", "1 ") + Row("/", "0020,0011", "IS", "1 ") + Row("/", "0020,0013", "IS", "1 ") +
       Row("/", "0028,0002", "US", "\1\0"s) + Row("/", "0028,0004", "CS", "MONOCHROME2 ") +
       Row("/", "0028,0008", "IS", "2 ") + Row("/", "0028,0009", "AT", "\x18\0\x63\x10"s) +
       Row("/", "0028,0010", "US", "\x10\0"s) + Row("/", "0028,0011", "US", "\x10\0"s) +
       Row("/", "0028,0100", "US", "\x08\0"s) + Row("/", "0028,0101", "US", "\x08\0"s) +
       Row("/", "0028,0102", "US", "\x07\0"s) + Row("/", "0028,0103", "US", "\0\0"s) +
       Row("/", "0028,2110", "CS", "01");
   // The fragments joined: they stand at the end, each behind the header of its item, in front of a delimiter.
   const std::string aFile = ReadFile(Sample("us-jpeg.dcm"));
   const std::size_t aSecond = aFile.size() - 8 - 172;
   const std::string aFragments = aFile.substr(aSecond - 8 - 158, 158) + aFile.substr(aSecond, 172);
   const std::string aLine = Row("/", "7fe0,0010", "OB", aFragments);
   anExpected += "/\t7fe0,0010\tOB\tundefined\tbot=8;frags=2;lens=158,172;crc=" + aLine.substr(aLine.size() - 9);

   const Outcome anOutcome = Tn("dump --elements " + Sample("us-jpeg.dcm"));
   EXPECT_EQ(anOutcome.itsCode, 0);
   EXPECT_EQ(anOutcome.itsOutput, anExpected);
   EXPECT_EQ(anOutcome.itsErrors, "");
}

struct ElementsCase
{
   const char* itsName;
   const char* itsFile;
   std::string itsExpected; // somewhere in the listing
};

TEST(TnDump, ListsNestedPrivateAndBigEndianElementsWithTheirPaths)
{
   const std::vector<ElementsCase> aCases = {
       {"sequence in a sequence, defined lengths", "ct-explicit.dcm",
        SequenceRow("/", "0040,0275") + Row("/0040,0275[0]", "0040,0007", "LO", "CT of the thorax") +
            SequenceRow("/0040,0275[0]", "0040,0008") + Row("/0040,0275[0]/0040,0008[0]", "0008,0100", "SH", "CT-THX") +
            Row("/0040,0275[0]/0040,0008[0]", "0008,0102", "SH", "99TALVENOR") +
            Row("/0040,0275[0]/0040,0008[0]", "0008,0104", "LO", "CT of the thorax, plain ") +
            Row("/0040,0275[0]", "0040,1001", "SH", "R-2001")},
       {"private elements", "ct-explicit.dcm",
        Row("/", "0031,0010", "LO", "TALVENOR SAMPLE ") + Row("/", "0031,1001", "LO", "made by a script") +
            Row("/", "0031,1002", "FD", "\0\0\0\0\0\0\xE0\x3F"s)},
       {"implicit VR, second item, undefined lengths", "sr-implicit.dcm",
        Row("/0040,a730[1]/0040,a730[1]", "0040,a010", "CS", "CONTAINS") +
            Row("/0040,a730[1]/0040,a730[1]", "0040,a040", "CS", "TEXT") +
            SequenceRow("/0040,a730[1]/0040,a730[1]", "0040,a043") +
            Row("/0040,a730[1]/0040,a730[1]/0040,a043[0]", "0008,0100", "SH", "121071") +
            Row("/0040,a730[1]/0040,a730[1]/0040,a043[0]", "0008,0102", "SH", "DCM ") +
            Row("/0040,a730[1]/0040,a730[1]/0040,a043[0]", "0008,0104", "LO", "Finding ") +
            Row("/0040,a730[1]/0040,a730[1]", "0040,a160", "UT", "The heart is of normal size.") +
            Row("/0040,a730[2]", "0040,a010", "CS", "CONTAINS")},
       {"empty sequence between elements", "sr-implicit.dcm",
        Row("/", "0008,0090", "PN", "") + SequenceRow("/", "0008,1111") +
            Row("/", "0010,0010", "PN", "M\xC3\xA4ki^Tyyne ")},
       {"big-endian values as they stand in the file", "cr-big-endian.dcm",
        Row("/", "0028,0009", "AT", "\0\x18\x10\x63"s) + Row("/", "0028,0010", "US", "\0\x08"s)},
   };
   for (const ElementsCase& aCase : aCases)
   {
      const Outcome anOutcome = Tn("dump --elements " + Sample(aCase.itsFile));
      EXPECT_EQ(anOutcome.itsCode, 0) << aCase.itsName;
      EXPECT_TRUE(Contains(anOutcome.itsOutput, aCase.itsExpected)) << aCase.itsName << "\n" << anOutcome.itsOutput;
   }
}

TEST(TnDump, ListsTheSameElementsFromStandardInput)
{
   for (const char* const aFile : {"ct-explicit.dcm", "sr-implicit.dcm", "cr-big-endian.dcm", "us-jpeg.dcm"})
   {
      const Outcome aFromFile = Tn("dump --elements " + Sample(aFile));
      const Outcome aFromInput = Tn("dump --elements -", Sample(aFile));
      EXPECT_EQ(aFromInput.itsCode, 0) << aFile;
      EXPECT_EQ(aFromInput.itsOutput, aFromFile.itsOutput) << aFile;
      EXPECT_GT(LinesOf(aFromFile.itsOutput), 20u) << aFile;
   }
}

struct TextCase
{
   const char* itsName;
   std::string itsArguments;
   std::vector<std::string> itsPresent;
   std::vector<std::string> itsAbsent;
};

TEST(TnDump, PrintsWhatTheOptionsAskFor)
{
   const std::string aCT = Sample("ct-explicit.dcm");
   const TextCase aCases[] = {
       {"names and values",
        "dump " + aCT,
        {"(0002, 0010) 20/UI \"Transfer Syntax UID\": \"1.2.840.10008.1.2.1\" (Explicit VR Little Endian)",
         "(0010, 0010) 12/PN \"Patient's Name\": \"Lehto^Veikko\"", "(0019, 1002) 4/SL \"Detector Channel\": 912",
         "(0031, 1002) 8/FD \"\": 0.5", "(7fe0, 0010) 512/OW \"Pixel Data\""},
        {"# "}},
       {"JSON",
        "dump --json --until 0031,0000 " + aCT + " " + Sample("us-jpeg.dcm"),
        {R"(,"meta":{"FileMetaInformationVersion":{"vr":"OB","length":2},"MediaStorageSOPClassUID":)",
         R"("dataset":{"ImageType":["ORIGINAL","PRIMARY","AXIAL"],"SOPClassUID":)",
         R"("ReferencedImageSequence":[{"ReferencedSOPClassUID":"1.2.840.10008.5.1.4.1.1.2",)", "}]",
         "(0019,1002)\":\"912\"", "}}\n{\"file\":"},
        {"SpecificCharacterSet", "PixelData"}},
       {"JSON of bulk data", "dump --json " + aCT, {R"("PixelData":{"vr":"OW","length":512}}})"}, {}},
       {"known only", "dump --known-only " + aCT, {"(0019, 1002)", "(7fe0, 0010)"}, {"(0031, 10"}},
       {"meta information", "dump --meta " + aCT, {"(0002, 0013)"}, {"(0008, 0005)"}},
       {"meta information as elements", "dump --meta --elements " + aCT, {"/\t0002,0013\t"}, {"/\t0008,0005\t"}},
       {"until a tag that is there",
        "dump --until 0028,0010 " + aCT,
        {"(0028, 0004)"},
        {"(0028, 0010)", "(0028, 0011)"}},
       {"until a tag that is not", "dump --until 0028,0000 " + aCT, {"(0020, 0037)"}, {"(0028, ", "(0031, "}},
       {"until a low element of a group",
        "dump --until 0018,0060 " + aCT,
        {"(0018, 0050)"},
        {"(0018, 0060)", "(0019, 0010)", "(0020, 0010)"}},
       {"until, as elements",
        "dump --elements --until 0018,0060 " + aCT,
        {"/\t0018,0050\t"},
        {"/\t0018,0060\t", "/\t0020,0010\t"}},
       {"several files under their names",
        "dump --meta " + aCT + " " + Sample("us-jpeg.dcm"),
        {"# " + aCT + "\n", "# " + Sample("us-jpeg.dcm") + "\n", "1.2.840.10008.1.2.4.50"},
        {}},
       {"version", "--version", {"tn " TN_VERSION "\n"}, {}},
       {"help", "--help", {"dump"}, {}},
       {"help of a command, with an example",
        "dump --help",
        {"--elements", "--until", "--known-only", "--meta", "--data", "Example"},
        {}},
   };
   for (const TextCase& aCase : aCases)
   {
      const Outcome anOutcome = Tn(aCase.itsArguments);
      EXPECT_EQ(anOutcome.itsCode, 0) << aCase.itsName;
      EXPECT_EQ(anOutcome.itsErrors, "") << aCase.itsName;
      for (const std::string& aText : aCase.itsPresent)
      {
         EXPECT_TRUE(Contains(anOutcome.itsOutput, aText)) << aCase.itsName << " lacks " << aText;
      }
      for (const std::string& aText : aCase.itsAbsent)
      {
         EXPECT_FALSE(Contains(anOutcome.itsOutput, aText)) << aCase.itsName << " has " << aText;
      }
   }
}

TEST(TnDump, DictionariesComeFromTheFolderNamed)
{
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("uid.dic"), ReadFile(TALVENOR_SOURCE_DIR "/data/uid.dic"));
   std::string anAttributes = ReadFile(TALVENOR_SOURCE_DIR "/data/dicom.dic");
   const std::string aName = "\"Patient's Name\"";
   ASSERT_TRUE(Contains(anAttributes, aName));
   anAttributes.replace(anAttributes.find(aName), aName.size(), "\"Name of the Patient\"");
   WriteFile(aFolder.File("dicom.dic"), anAttributes);
   const std::string anOption = "--data '" + aFolder.Path().string() + "' ";
   const Outcome anOutcome = Tn("dump " + anOption + Sample("ct-explicit.dcm"));
   EXPECT_EQ(anOutcome.itsCode, 0) << anOutcome.itsErrors;
   EXPECT_TRUE(Contains(anOutcome.itsOutput, "\"Name of the Patient\": \"Lehto^Veikko\""));
   EXPECT_TRUE(Contains(anOutcome.itsOutput, "(0019, 1002) 4/SL \"\": 912")) << "no private dictionaries there";

   const TemporaryDirectory anEmptyFolder;
   const Outcome aFailure = Tn("dump --data '" + anEmptyFolder.Path().string() + "' " + Sample("ct-explicit.dcm"));
   EXPECT_EQ(aFailure.itsCode, 3);
   EXPECT_EQ(aFailure.itsOutput, "");
   EXPECT_TRUE(Contains(aFailure.itsErrors, anEmptyFolder.File("dicom.dic"))) << aFailure.itsErrors;
}

TEST(TnDump, WrongUseIsToldAndNothingIsPrinted)
{
   for (const char* const anArguments :
        {"", "nosuchcommand", "dump", "dump --nosuchoption x", "dump --until patient x", "dump --until 00100010 x",
         "dump --until 0010,0010,0010 x", "dump --elements --known-only x"})
   {
      const Outcome anOutcome = Tn(anArguments);
      EXPECT_EQ(anOutcome.itsCode, 2) << anArguments;
      EXPECT_EQ(anOutcome.itsOutput, "") << anArguments;
      EXPECT_NE(anOutcome.itsErrors, "") << anArguments;
   }
}

TEST(TnDump, AFileThatFailsIsOneLineAndTheRestStillPrints)
{
   const TemporaryDirectory aFolder;
   const std::string aText = aFolder.File("letter.txt");
   WriteFile(aText, "Dear colleague, the images are enclosed.\n");
   const std::string aZeros = aFolder.File("zeros");
   WriteFile(aZeros, std::string(4096, '\0'));
   const std::string anEmpty = aFolder.File("empty");
   WriteFile(anEmpty, "");
   for (const std::string& aBad : {aText, aZeros, anEmpty, aFolder.File("absent"), aFolder.Path().string()})
   {
      const Outcome anOutcome = Tn("dump " + aBad + " " + Sample("ct-explicit.dcm"));
      EXPECT_EQ(anOutcome.itsCode, 3) << aBad;
      EXPECT_EQ(LinesOf(anOutcome.itsErrors), 1u) << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsErrors, "tn dump: " + aBad + ": ")) << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsOutput, "Lehto^Veikko")) << aBad;
   }
}

// Files that end too early. The end is found from the other side: as many bytes as given are missing.
struct CutCase
{
   const char* itsName;
   const char* itsFile;
   size_t itsMissing;
   const char* itsLastTag;  // of the elements that are whole, in the listing
   const char* itsReadText; // in the dump
};

const CutCase kCutCases[] = {
    {"without the delimiter of the outermost sequence", "sr-implicit.dcm", 8, "0040,a160", "Normal chest."},
    {"inside that delimiter", "sr-implicit.dcm", 3, "0040,a160", "Normal chest."},
    {"without the delimiter of the last item", "sr-implicit.dcm", 16, "0040,a160", "Normal chest."},
    {"inside the last value of an item", "sr-implicit.dcm", 20, "0008,0104", "Conclusion"},
    {"between two items", "sr-implicit.dcm", 150, "0040,a160", "The heart is of normal size."},
    {"inside an item of defined length", "ct-explicit.dcm", 524 + 10, "0008,0104", "CT of the thorax, plain"},
    {"inside pixel data", "ct-explicit.dcm", 1, "0040,1001", "R-2001"},
    {"at the start of pixel data", "ct-explicit.dcm", 512, "0040,1001", "R-2001"},
    {"inside big-endian pixel data", "cr-big-endian.dcm", 100, "0028,0107", "16000"},
    {"without the delimiter of the fragments", "us-jpeg.dcm", 8, "0028,2110", "Lossy Image Compression"},
    {"inside the last fragment", "us-jpeg.dcm", 8 + 30, "0028,2110", "Lossy Image Compression"},
    {"between two fragments", "us-jpeg.dcm", 8 + 180, "0028,2110", "Lossy Image Compression"},
    {"inside the offset table", "us-jpeg.dcm", 8 + 180 + 166 + 4, "0028,2110", "Lossy Image Compression"},
};

TEST(TnDump, AFileThatEndsTooEarlyIsToldAfterWhatThereWas)
{
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("cut.dcm");
   for (const CutCase& aCase : kCutCases)
   {
      const std::string aWhole = ReadFile(Sample(aCase.itsFile));
      ASSERT_GT(aWhole.size(), aCase.itsMissing) << aCase.itsName;
      WriteFile(aFile, aWhole.substr(0, aWhole.size() - aCase.itsMissing));

      const Outcome aDump = Tn("dump " + aFile);
      EXPECT_EQ(aDump.itsCode, 3) << aCase.itsName;
      EXPECT_EQ(LinesOf(aDump.itsErrors), 1u) << aCase.itsName << "\n" << aDump.itsErrors;
      EXPECT_TRUE(Contains(aDump.itsOutput, aCase.itsReadText)) << aCase.itsName << "\n" << aDump.itsOutput;

      const Outcome aList = Tn("dump --elements " + aFile);
      EXPECT_EQ(aList.itsCode, 3) << aCase.itsName;
      EXPECT_EQ(LinesOf(aList.itsErrors), 1u) << aCase.itsName << "\n" << aList.itsErrors;
      const std::string aLastLine = aList.itsOutput.substr(aList.itsOutput.rfind('\n', aList.itsOutput.size() - 2) + 1);
      EXPECT_TRUE(Contains(aLastLine, aCase.itsLastTag)) << aCase.itsName << "\n" << aLastLine;
   }
}

// Where a top-level element ends nobody can tell a cut file from a whole one; a cut before the pixels is no concern of
// a reader that stops there. What has no "DICM" is taken for a dataset without meta information; these are none.
TEST(TnDump, AFileThatIsNoDatasetIsRefused)
{
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("other.dcm");
   const std::string anImage = ReadFile(Sample("ct-explicit.dcm"));
   const std::pair<const char*, std::string> kCases[] = {
       {"a preamble alone", anImage.substr(0, 128)},
       {"a file that ends before its meta information", anImage.substr(0, 138)},
       {"zeros", std::string(4096, '\0')},
       {"another format", "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n<html></html>"},
   };
   for (const auto& [aName, aContent] : kCases)
   {
      WriteFile(aFile, aContent);
      for (const char* anOption : {"dump ", "dump --elements "})
      {
         const Outcome anOutcome = Tn(anOption + aFile);
         EXPECT_EQ(anOutcome.itsCode, 3) << anOption << aName;
         EXPECT_EQ(LinesOf(anOutcome.itsErrors), 1u) << anOption << aName << "\n" << anOutcome.itsErrors;
      }
   }
}

TEST(TnDump, WhatIsCutBehindTheLastElementWantedIsNoFault)
{
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("cut.dcm");
   const std::string aWhole = ReadFile(Sample("ct-explicit.dcm"));
   WriteFile(aFile, aWhole.substr(0, aWhole.size() - 100));
   for (const char* const anOptions : {"--until 7fe0,0010 ", "--meta ", "--elements --until 7fe0,0010 "})
   {
      const Outcome anOutcome = Tn("dump " + std::string(anOptions) + aFile);
      EXPECT_EQ(anOutcome.itsCode, 0) << anOptions << anOutcome.itsErrors;
   }
   WriteFile(aFile, aWhole.substr(0, aWhole.size() - 524)); // pixel data with its header of 12 bytes
   EXPECT_EQ(Tn("dump " + aFile).itsCode, 0);
}

// A listing of elements by path and tag: VR, length and value of each. Left out are group lengths, padding and
// delimiters, which readers may make and drop as they like, and tags that occur twice in their dataset.
using Cells = std::vector<std::string>;
using Listing = std::map<std::string, Cells>;

Listing ParseListing(const std::string& theText)
{
   Listing aListing;
   std::set<std::string> aTwice;
   std::istringstream aText(theText);
   for (std::string aLine; std::getline(aText, aLine);)
   {
      Cells aCells;
      std::istringstream aCellsOfLine(aLine);
      for (std::string aCell; std::getline(aCellsOfLine, aCell, '\t');)
      {
         aCells.push_back(aCell);
      }
      if (aCells.size() < 5 || aCells[0] == "path" || aCells[1].starts_with("fffe") || aCells[1].ends_with(",0000") ||
          aCells[1] == "fffc,fffc")
      {
         continue;
      }
      const std::string aKey = aCells[0] + " " + aCells[1];
      if (!aListing.emplace(aKey, aCells).second)
      {
         aTwice.insert(aKey);
      }
   }
   for (const std::string& aKey : aTwice)
   {
      aListing.erase(aKey);
   }
   return aListing;
}

std::string InLowerCase(std::string theText)
{
   std::transform(theText.begin(), theText.end(), theText.begin(),
                  [](unsigned char theByte) { return std::tolower(theByte); });
   return theText;
}

// What cannot be compared: values that the file cuts short, those of odd length, which readers pad or not, and elements
// that one reader takes for a sequence and the other, without a dictionary that knows them, for bytes.
bool IsComparable(const Cells& theOurs, const Cells& theTheirs)
{
   const std::string& aLength = theTheirs[3];
   const std::string& aValue = theTheirs[4];
   const bool isOdd = aLength != "undefined" && (aLength.back() - '0') % 2 != 0;
   const bool isSequence = theOurs[4] == "-" || aValue == "-";
   return !isSequence && !isOdd && !aValue.starts_with("short:") && !aValue.starts_with("unparsed:");
}

// Larger files than the clone holds, where TALVENOR_SAMPLES names a folder of them: oracle/NAME.elements.tsv lists the
// elements of the file NAME as another reader sees them.
TEST(TnDump, ListsWhatAnotherReaderSeesInALargerCollection)
{
   namespace fs = std::filesystem;
   const char* const aFolder = std::getenv("TALVENOR_SAMPLES");
   if (aFolder == nullptr || !fs::is_directory(fs::path(aFolder) / "oracle"))
   {
      GTEST_SKIP() << "TALVENOR_SAMPLES names no folder of samples with an oracle";
   }
   const std::string anEnding = ".elements.tsv";
   size_t aCount = 0;
   for (const fs::directory_entry& anEntry : fs::directory_iterator(fs::path(aFolder) / "oracle"))
   {
      std::string aName = anEntry.path().filename().string();
      if (!aName.ends_with(anEnding))
      {
         continue;
      }
      aName.resize(aName.size() - anEnding.size());
      const Outcome anOutcome = Tn("dump --elements '" + (fs::path(aFolder) / aName).string() + "'");
      if (anOutcome.itsCode != 0)
      {
         EXPECT_EQ(anOutcome.itsCode, 3) << aName;
         EXPECT_EQ(LinesOf(anOutcome.itsErrors), 1u) << aName << "\n" << anOutcome.itsErrors;
         continue;
      }
      ++aCount;
      const Listing anOurs = ParseListing(anOutcome.itsOutput);
      for (const auto& [aKey, aCells] : ParseListing(InLowerCase(ReadFile(anEntry.path().string()))))
      {
         const auto aRow = anOurs.find(aKey);
         if (aRow != anOurs.end() && IsComparable(aRow->second, aCells))
         {
            EXPECT_EQ(aRow->second[3], aCells[3]) << aName << " " << aKey;
            EXPECT_EQ(aRow->second[4], aCells[4]) << aName << " " << aKey;
         }
         EXPECT_TRUE(aRow != anOurs.end() || Contains(anOutcome.itsOutput, aCells[0] + '\t' + aCells[1] + '\t'))
             << aName << " lacks " << aKey;
      }
   }
   EXPECT_GT(aCount, 0u) << "every file was refused";
}

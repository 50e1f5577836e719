// tn convert on samples, hostile targets and whole folders.
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/DatasetBytes.h"
#include "support/RunTn.h"
#include "support/TemporaryDirectory.h"

using namespace std::string_literals;

namespace
{
// What is in the dataset; the meta information has to change. The types of private elements are left out: implicit VR
// forgets those that no dictionary knows.
std::string ElementsOf(const std::string& theFile)
{
   const std::string aRows = Tn("dump --elements " + theFile).itsOutput;
   const std::size_t aDataset = aRows.find("/\t0008,");
   static const std::regex kPrivate("(\t[0-9a-f]{3}[13579bdf],[0-9a-f]{4}\t)..");
   return aDataset == std::string::npos ? "(nothing)" : std::regex_replace(aRows.substr(aDataset), kPrivate, "$1??");
}

// The last frame claims arithmetic coding.
std::string UndecodablePicture()
{
   std::string aPicture = ReadFile(Sample("us-jpeg.dcm"));
   return aPicture.replace(aPicture.rfind("\xFF\xC0"), 2, "\xFF\xC9");
}

TEST(TnConvert, EverySampleComesBackAsItWas)
{
   const struct
   {
      std::string itsSample;
      std::string itsSyntax;
      std::vector<std::string> itsWays;
   } kCases[] = {
       {Sample("ct-explicit.dcm"), "explicit", {"same", "implicit", "big-endian"}},
       {Sample("sr-implicit.dcm"), "implicit", {"same", "explicit", "big-endian"}},
       {Sample("cr-big-endian.dcm"), "big-endian", {"same", "implicit", "explicit"}},
       {Sample("us-jpeg.dcm"), "same", {"same"}},
   };
   const TemporaryDirectory aFolder;
   for (const auto& aCase : kCases)
   {
      for (const std::string& aWay : aCase.itsWays)
      {
         const Outcome aThere = Tn("convert --to " + aWay + " " + aCase.itsSample + " " + aFolder.File("there"));
         ASSERT_EQ(aThere.itsCode, 0) << aCase.itsSample << " " << aWay << ": " << aThere.itsErrors;
         ASSERT_EQ(
             Tn("convert --to " + aCase.itsSyntax + " " + aFolder.File("there") + " " + aFolder.File("back")).itsCode,
             0);
         EXPECT_EQ(ElementsOf(aFolder.File("back")), ElementsOf(aCase.itsSample)) << aCase.itsSample << " by " << aWay;
      }
   }
}

TEST(TnConvert, WritesAllOrNothing)
{
   DatasetBytes aCut;
   aCut.Element(0x00080016, "UI", "1.2 ").Element(0x00080018, "UI", "1.2.3 ");
   aCut.Stated(0x7FE00010, "OW", 1000, std::string(400, 'x'));
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("cut"), aCut.File());
   WriteFile(aFolder.File("text"), "no DICOM file at all, but a text of some length");
   WriteFile(aFolder.File("jpeg"), UndecodablePicture());
   const std::string aPipe = aFolder.File("pipe");
   ASSERT_EQ(::mkfifo(aPipe.c_str(), 0600), 0);
   const std::string aGood = Sample("ct-explicit.dcm");
   const struct
   {
      std::string itsArguments;
      int itsCode;
      const char* itsText;
      const char* itsPreparation = "";
   } kCases[] = {
       {aFolder.File("cut") + " " + aFolder.File("out"), 3, "EOF before end of input stream (600 bytes remaining)"},
       {aFolder.File("text") + " " + aFolder.File("out"), 3, "not a DICOM file"},
       {aFolder.File("nothing") + " " + aFolder.File("out"), 3, "No such file"},
       {aPipe + " " + aFolder.File("out"), 3, "no regular file; - reads standard input"},
       {"-r " + aFolder.File("nothing") + " " + aFolder.File("out"), 3, "nothing: cannot be read"},
       {aGood + " " + aFolder.File("no/folder/out"), 4, "no/folder/out: cannot be created"},
       {aGood + " " + aPipe, 4, "pipe: it is no regular file"}, // renaming would replace it, and a device as well
       {aGood + " -", 4, "standard output"},
       {"--to implicit " + aFolder.File("jpeg") + " " + aFolder.File("out"), 3, "frame 2 of 2"},
       {"--to deflated " + aGood + " " + aFolder.File("out"), 2, "deflated"},
       // Room for a part of it only: 1024 bytes.
       {"--to explicit " + aGood + " " + aFolder.File("out"), 4, "File too large", "ulimit -f 2; "},
   };
   for (const auto& aCase : kCases)
   {
      const Outcome anOutcome = Tn("convert " + aCase.itsArguments, "/dev/null", aCase.itsPreparation);
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << aCase.itsArguments << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsErrors, aCase.itsText)) << anOutcome.itsErrors;
      EXPECT_EQ(aFolder.FileCount(), 4U) << aCase.itsArguments << ": something was left behind";
   }
}

TEST(TnConvert, AFileCanBeConvertedInPlace)
{
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("image");
   WriteFile(aFile, ReadFile(Sample("ct-explicit.dcm")));
   std::filesystem::permissions(aFile, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
   EXPECT_EQ(Tn("convert --to implicit " + aFile + " " + aFile).itsCode, 0);
   EXPECT_EQ(ElementsOf(aFile), ElementsOf(Sample("ct-explicit.dcm")));
   EXPECT_EQ(std::filesystem::status(aFile).permissions(),
             std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
   EXPECT_EQ(aFolder.FileCount(), 1U);

   const std::string aLink = aFolder.File("link");
   std::filesystem::create_symlink("image", aLink);
   EXPECT_EQ(Tn("convert --to explicit " + aLink + " " + aLink).itsCode, 0);
   EXPECT_TRUE(std::filesystem::is_symlink(aLink));
   EXPECT_EQ(ReadFile(aFile), ReadFile(aLink));
   EXPECT_TRUE(Contains(Tn("dump --meta " + aFile).itsOutput, "1.2.840.10008.1.2.1\""));
}

TEST(TnConvert, ADatasetWithoutMetaInformationGetsOne)
{
   DatasetBytes aBytes(Encoding::Implicit);
   aBytes.Element(0x00080005, "CS", "ISO_IR 100").Element(0x00080016, "UI", "1.2\0"s);
   aBytes.Element(0x00080018, "UI", "1.2.33").Element(0x00100010, "PN", "A^B ");
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("raw"), aBytes.Bytes());
   const Outcome anOutcome = Tn("convert --to explicit " + aFolder.File("raw") + " " + aFolder.File("file"));
   EXPECT_EQ(anOutcome.itsCode, 0) << anOutcome.itsErrors;
   EXPECT_EQ(ElementsOf(aFolder.File("file")), ElementsOf(aFolder.File("raw")));
   EXPECT_TRUE(Contains(Tn("dump --meta " + aFolder.File("file")).itsOutput, "\"1.2.33\""));
}

TEST(TnConvert, FoldersKeepTheirTreeAndFailuresAreListed)
{
   const TemporaryDirectory aFolder;
   std::filesystem::create_directories(aFolder.File("in/a/b"));
   std::filesystem::copy_file(Sample("ct-explicit.dcm"), aFolder.File("in/a/ct"));
   WriteFile(aFolder.File("in/a/b/us"), UndecodablePicture());
   WriteFile(aFolder.File("in/readme"), "read me, but not as DICOM");
   WriteFile(aFolder.File("in/empty"), "");
   const Outcome anOutcome = Tn("convert -r --to implicit " + aFolder.File("in") + " " + aFolder.File("out"));
   EXPECT_EQ(anOutcome.itsCode, 1);
   EXPECT_EQ(anOutcome.itsOutput, "1 converted, 1 failed, 2 not DICOM files\n");
   EXPECT_EQ(LinesOf(anOutcome.itsErrors), 3U) << anOutcome.itsErrors;
   EXPECT_TRUE(std::filesystem::exists(aFolder.File("out/a/ct")));
   EXPECT_FALSE(std::filesystem::exists(aFolder.File("out/a/b/us")));
}

TEST(TnConvert, TellsHowManyElementsCouldNotStay)
{
   DatasetBytes aBytes;
   aBytes.Element(0x00080016, "UI", "1.2\0"s).Element(0x00080018, "UI", "1.2.33");
   aBytes.Element(0x00091001, "LO", "no creator");
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("in"), aBytes.File());
   const Outcome anOutcome = Tn("convert " + aFolder.File("in") + " " + aFolder.File("out"));
   EXPECT_EQ(anOutcome.itsCode, 0);
   EXPECT_TRUE(Contains(anOutcome.itsErrors, "without 1 element ")) << anOutcome.itsErrors;
}
} // namespace

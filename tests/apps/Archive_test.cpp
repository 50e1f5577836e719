#include "apps/tn/archive/Archive.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "apps/tn/archive/StoreRefusal.h"
#include "support/DatasetBytes.h"
#include "support/FileBytes.h"
#include "support/ServedNode.h"
#include "talvenor/transfer/InputTransferSyntax.h"

namespace
{
namespace fs = std::filesystem;

const std::string kPaletteClass = "1.2.840.10008.5.1.4.39.1"; // has no study

std::string Padded(std::string theUID)
{
   return theUID + std::string(theUID.size() % 2, '\0');
}

// A DICOM file; without study one of a palette.
std::string File(const std::string& theInstance, const std::string& theText, const std::string& theStudy = "1.2",
                 const std::string& theSeries = "1.2.3", Encoding theEncoding = Encoding::Explicit)
{
   DatasetBytes aBytes(theEncoding);
   aBytes.Element(0x00080016, "UI", Padded(theStudy.empty() ? kPaletteClass : "1.2.840.10008.5.1.4.1.1.7"))
       .Element(0x00080018, "UI", Padded(theInstance))
       .Element(0x00100010, "PN", theText)
       .Element(0x00100020, "LO", "4711");
   if (!theStudy.empty())
   {
      aBytes.Element(0x0020000D, "UI", Padded(theStudy)).Element(0x0020000E, "UI", Padded(theSeries));
   }
   return FileHeader(Padded(TransferSyntaxOf(theEncoding))) + aBytes.Bytes();
}

// 0 when it is new, 1 when it was there, otherwise the status of the refusal.
int Keep(Archive& theArchive, const std::string& theFile)
{
   SpoolBuffer aBuffer;
   SpoolFile aFile(theArchive.GetSpoolFolder(), aBuffer);
   aFile.Write(reinterpret_cast<const unsigned char*>(theFile.data()), theFile.size());
   aFile.Finish();
   const auto aStream = OpenBytes(theFile);
   IndexedInstance anInstance;
   anInstance.itsTransferSyntax = aStream->GetTransferSyntaxUID();
   anInstance.itsSize = theFile.size();
   const std::unique_ptr<InputTransferSyntax> aDecoder = aStream->CreateDecoder();
   anInstance.itsKeys.ReadWhole(*aDecoder);
   try
   {
      return theArchive.Keep(aFile, aStream->GetHeaderSize(), std::move(anInstance)) ? 0 : 1;
   }
   catch (const StoreRefusal& aRefusal)
   {
      return aRefusal.GetStatus();
   }
}

class ArchiveTest : public testing::Test
{
protected:
   std::string Path(const std::string& theName = "") const { return itsFolder.File("archive/" + theName); }
   Archive::Settings Settings() const
   {
      Archive::Settings aSettings;
      aSettings.itsFolder = itsFolder.File("archive");
      return aSettings;
   }
   std::set<std::string> Indexed() const
   {
      std::set<std::string> aPaths;
      IndexDatabase(Path("index.sqlite")).ForEach([&](const std::string&, const std::string& thePath) {
         aPaths.insert(thePath);
      });
      return aPaths;
   }
   // Files, without the index.
   std::set<std::string> Files() const
   {
      std::set<std::string> aPaths;
      for (const fs::directory_entry& anEntry : fs::recursive_directory_iterator(Path()))
      {
         const std::string aPath = fs::relative(anEntry.path(), Path()).string();
         if (!anEntry.is_directory() && !aPath.starts_with("index.sqlite") && aPath != "lock")
         {
            aPaths.insert(aPath);
         }
      }
      return aPaths;
   }
   // All that the index says, without the numbers of rows.
   std::vector<std::string> Contents() const
   {
      const std::vector<std::string> kNames = {"patient", "study", "series", "instance"};
      std::string aQuery = "SELECT instance.path || char(9) || instance.transfer_syntax || char(9) || instance.size";
      for (const std::string& aName : kNames)
      {
         aQuery += " || char(9) || ifnull(" + aName + ".SpecificCharacterSet, '-')";
      }
      for (std::size_t i = Key::kCharacterSet + 1; i < InstanceKeys::kCount; ++i)
      {
         const KeyColumn& aColumn = InstanceKeys::GetColumns()[i];
         aQuery += " || char(9) || ifnull(" + kNames[static_cast<std::size_t>(aColumn.itsLevel)] + "." +
                   aColumn.itsName + ", '-')";
      }
      const SQLiteDatabase aDatabase(Path("index.sqlite"), 1);
      SQLiteStatement aStatement(aDatabase,
                                 aQuery + " FROM instance LEFT JOIN series ON series = series.row LEFT JOIN study "
                                          "ON study = study.row LEFT JOIN patient ON patient = patient.row "
                                          "ORDER BY instance.path");
      std::vector<std::string> aLines;
      while (aStatement.Step())
      {
         aLines.push_back(aStatement.GetText(0));
      }
      return aLines;
   }

   TemporaryDirectory itsFolder;
};

TEST_F(ArchiveTest, AnInstanceIsNewThenKnownThenInDispute)
{
   using Mode = Archive::Synchronising;
   const std::string aFirst = File("1.5", "FIRST ");
   const struct
   {
      const char* itsName;
      std::string itsFile;
      int itsWhenRefused;
      int itsWhenReplaced;
      const char* itsPathThen; // of the instance where it is replaced
   } kSteps[] = {
       {"new", aFirst, 0, 0, "1.2/1.2.3/1.5.dcm"},
       {"the same", aFirst, 1, 1, "1.2/1.2.3/1.5.dcm"},
       {"other bytes", File("1.5", "SECOND"), 0x0111, 0, "1.2/1.2.3/1.5.dcm"},
       {"longer", File("1.5", "SECOND^NAME "), 0x0111, 0, "1.2/1.2.3/1.5.dcm"},
       {"another series", File("1.5", "FIRST ", "1.2", "1.2.4"), 0x0111, 0, "1.2/1.2.4/1.5.dcm"},
       {"another study", File("1.5", "FIRST ", "1.3", "1.2.4"), 0x0111, 0, "1.3/1.2.4/1.5.dcm"},
       {"another syntax", File("1.5", "FIRST ", "1.3", "1.2.4", Encoding::BigEndian), 0x0111, 0, "1.3/1.2.4/1.5.dcm"},
       {"no study", File("1.5", "FIRST ", ""), 0x0111, 0, "no-study/1.2.840.10008.5.1.4.39.1/1.5.dcm"},
       {"no study again", File("1.5", "FIRST ", ""), 0x0111, 1, "no-study/1.2.840.10008.5.1.4.39.1/1.5.dcm"},
   };
   for (const Mode aMode : {Mode::kNone, Mode::kFile, Mode::kGroup})
   {
      for (const auto aDuplicates : {Archive::Duplicates::kRefuse, Archive::Duplicates::kReplace})
      {
         const bool replaces = aDuplicates == Archive::Duplicates::kReplace;
         Archive::Settings aSettings = Settings();
         aSettings.itsSynchronising = aMode;
         aSettings.itsDuplicates = aDuplicates;
         std::string anExpected;
         std::string aPath;
         for (const auto& aStep : kSteps)
         {
            const std::string aName = aStep.itsName + std::string(replaces ? ", replacing" : ", refusing");
            {
               Archive anArchive(aSettings); // every second step finds the index as the one before closed it
               const int aStatus = replaces ? aStep.itsWhenReplaced : aStep.itsWhenRefused;
               EXPECT_EQ(Keep(anArchive, aStep.itsFile), aStatus) << aName;
               anExpected = aStatus == 0 ? aStep.itsFile : anExpected;
               aPath = aStatus == 0 ? aStep.itsPathThen : aPath;
               EXPECT_EQ(anArchive.GetIndex().Find("1.5"), aPath) << aName;
            }
            EXPECT_EQ(Files(), std::set<std::string>{aPath}) << aName;
            EXPECT_EQ(Indexed(), std::set<std::string>{aPath}) << aName;
            EXPECT_EQ(ReadFile(Path(aPath)), anExpected) << aName;
            EXPECT_TRUE(IndexDatabase(Path("index.sqlite")).AgreesWithFiles()) << aName;
         }
         fs::remove_all(Path());
      }
   }
}

// Each in turn is found when an archive is opened that holds 1.5 and 1.6.
TEST_F(ArchiveTest, OpeningFindsWhatHasHappenedToTheFolder)
{
   const std::string aPlace = "1.2/1.2.3/";
   const auto aWrite = [&](const std::string& theName, const std::string& theText) {
      return [this, theName, theText] { WriteFile(Path(theName), theText); };
   };
   const auto aSpoil = [&](std::streamoff theStart, std::size_t theCount) {
      return [this, theStart, theCount] {
         std::fstream aFile(Path("index.sqlite"), std::ios::in | std::ios::out | std::ios::binary);
         aFile.seekp(theStart);
         aFile << std::string(theCount, 'x');
      };
   };
   const auto anExecute = [&](const char* theText) {
      return [this, theText] { SQLiteDatabase(Path("index.sqlite"), 1).Execute(theText); };
   };
   struct Case
   {
      const char* itsName;
      std::function<void()> itsEvent;
      std::set<std::string> itsIndexed;
      std::set<std::string> itsOthers; // files
      bool itsWasClosed = false;       // in order
   };
   const std::set<std::string> kBoth = {aPlace + "1.5.dcm", aPlace + "1.6.dcm"};
   const Case kCases[] = {
       {"nothing", [] {}, kBoth, {}},
       {"a file is gone", [&] { fs::remove(Path(aPlace + "1.5.dcm")); }, {aPlace + "1.6.dcm"}, {}},
       {"the whole study is gone", [&] { fs::remove_all(Path("1.2")); }, {}, {}},
       {"an unfinished file", aWrite("incoming/7-7", "half of it"), kBoth, {}},
       {"a file that is no instance", aWrite(aPlace + "1.7.dcm", "text"), kBoth, {"damaged/1.2,1.2.3,1.7.dcm"}},
       {"a file of another name", aWrite(aPlace + "notes.txt", "text"), kBoth, {"damaged/1.2,1.2.3,notes.txt"}},
       {"a file elsewhere", aWrite("notes.txt", "text"), kBoth, {"notes.txt"}},
       {"an instance in a place not its own",
        aWrite("1.2/1.9.dcm", File("1.9", "NAME", "1.2", "1.2.3")),
        kBoth,
        {"1.2/1.9.dcm"}},
       {"an instance that is not in the index",
        aWrite(aPlace + "1.7.dcm", File("1.7", "NAME")),
        {aPlace + "1.5.dcm", aPlace + "1.6.dcm", aPlace + "1.7.dcm"},
        {}},
       {"a folder with the name of an instance", [&] { fs::create_directory(Path(aPlace + "1.7.dcm")); }, kBoth, {}},
       {"a link in place of a series",
        [&] {
           fs::create_directory(itsFolder.File("elsewhere"));
           WriteFile(itsFolder.File("elsewhere/1.7.dcm"), File("1.7", "NAME", "1.2", "1.2.4"));
           fs::create_directory_symlink(itsFolder.File("elsewhere"), Path("1.2/1.2.4"));
        },
        kBoth,
        {}},
       {"the index is gone", [&] { fs::remove(Path("index.sqlite")); }, kBoth, {}, true},
       {"the index is empty", [&] { fs::resize_file(Path("index.sqlite"), 0); }, kBoth, {}, true},
       {"the index is cut", [&] { fs::resize_file(Path("index.sqlite"), 5000); }, kBoth, {}, true},
       {"the index has another head", aSpoil(0, 100), kBoth, {}, true},
       {"the index has no schema", aSpoil(100, 1000), kBoth, {}, true},
       {"the index is damaged behind its head", aSpoil(4096, 100000), kBoth, {}},
       {"the index is of an older version", anExecute("PRAGMA user_version = 99"), kBoth, {}, true},
   };
   for (const Case& aCase : kCases)
   {
      fs::remove_all(Path());
      fs::remove_all(itsFolder.File("elsewhere"));
      {
         Archive anArchive(Settings());
         ASSERT_EQ(Keep(anArchive, File("1.5", "NAME")), 0);
         ASSERT_EQ(Keep(anArchive, File("1.6", "NAME")), 0);
      }
      if (!aCase.itsWasClosed)
      {
         IndexDatabase(Path("index.sqlite")).SetAgreesWithFiles(false);
      }
      aCase.itsEvent();
      try
      {
         Archive anArchive(Settings());
         const int anExpected = aCase.itsIndexed.contains(aPlace + "1.5.dcm") ? 1 : 0;
         EXPECT_EQ(Keep(anArchive, File("1.5", "NAME")), anExpected) << aCase.itsName;
         anArchive.GetIndex().Flush();
         std::set<std::string> anIndexed = aCase.itsIndexed;
         anIndexed.insert(aPlace + "1.5.dcm");
         EXPECT_EQ(Indexed(), anIndexed) << aCase.itsName;
         std::set<std::string> aFiles = anIndexed;
         aFiles.insert(aCase.itsOthers.begin(), aCase.itsOthers.end());
         EXPECT_EQ(Files(), aFiles) << aCase.itsName;
      }
      catch (const std::exception& anError)
      {
         ADD_FAILURE() << aCase.itsName << ": " << anError.what();
      }
   }
}

// Each in turn is left when there is an end while 1.5, which is in the index as OLD, is being replaced.
TEST_F(ArchiveTest, WhatWasBeingReplacedIsInTheIndexAsItsFileIs)
{
   const std::string aHere = "1.2/1.2.3/1.5.dcm";
   const std::string aThere = "1.3/1.3.1/1.5.dcm";
   const struct
   {
      const char* itsName;
      std::string itsNewPath;
      std::string itsNewFile; // empty: it has not got there
      std::string itsPath;    // what is found then
      const char* itsPatient;
      std::string itsOther = {};
      bool itsWasClosed = false;
   } kCases[] = {
       {"before", aHere, "", aHere, "OLD"},
       {"behind", aHere, File("1.5", "NEW "), aHere, "NEW"},
       {"behind, the index was closed in order", aHere, File("1.5", "NEW "), aHere, "NEW", "", true},
       {"elsewhere, before", aThere, "", aHere, "OLD"},
       {"elsewhere, behind", aThere, File("1.5", "NEW ", "1.3", "1.3.1"), aThere, "NEW", "damaged/1.2,1.2.3,1.5.dcm"},
       {"elsewhere, a broken file", aThere, "text", aHere, "OLD", "damaged/1.3,1.3.1,1.5.dcm"},
   };
   for (const auto& aCase : kCases)
   {
      fs::remove_all(Path());
      {
         Archive anArchive(Settings());
         ASSERT_EQ(Keep(anArchive, File("1.5", "OLD ")), 0);
      }
      {
         IndexDatabase anIndex(Path("index.sqlite"));
         anIndex.BeginReplacement("1.5", aCase.itsNewPath);
         anIndex.SetAgreesWithFiles(aCase.itsWasClosed);
      }
      if (!aCase.itsNewFile.empty())
      {
         fs::create_directories(fs::path(Path(aCase.itsNewPath)).parent_path());
         WriteFile(Path(aCase.itsNewPath), aCase.itsNewFile);
      }
      Archive(Settings()).GetIndex().Flush();
      std::set<std::string> aFiles = {aCase.itsPath};
      if (!aCase.itsOther.empty())
      {
         aFiles.insert(aCase.itsOther);
      }
      EXPECT_EQ(Files(), aFiles) << aCase.itsName;
      const std::vector<std::string> aRows = Contents();
      ASSERT_EQ(aRows.size(), 1u) << aCase.itsName;
      EXPECT_TRUE(aRows[0].starts_with(aCase.itsPath + "\t")) << aCase.itsName << ": " << aRows[0];
      EXPECT_NE(aRows[0].find(aCase.itsPatient), std::string::npos) << aCase.itsName << ": " << aRows[0];
      EXPECT_TRUE(IndexDatabase(Path("index.sqlite")).AgreesWithFiles()) << aCase.itsName;
   }
}

// While it is open. What is stored next says whether it matters.
TEST_F(ArchiveTest, AFileThatIsTakenAwayIsTakenAgain)
{
   Archive anArchive(Settings());
   EXPECT_EQ(Keep(anArchive, File("1.5", "NAME")), 0);
   fs::remove(Path("1.2/1.2.3/1.5.dcm"));
   EXPECT_EQ(Keep(anArchive, File("1.5", "OTHER ")), 0);
   fs::remove_all(Path("1.2"));
   EXPECT_EQ(Keep(anArchive, File("1.5", "OTHER ", "1.3", "1.3.1")), 0);
   EXPECT_EQ(Files(), std::set<std::string>{"1.3/1.3.1/1.5.dcm"});
   EXPECT_EQ(Indexed(), std::set<std::string>{"1.3/1.3.1/1.5.dcm"});
   // Somebody puts a file there: an equal one is taken as it is, another one is not written over.
   WriteFile(Path("1.3/1.3.1/1.6.dcm"), File("1.6", "NAME", "1.3", "1.3.1"));
   EXPECT_EQ(Keep(anArchive, File("1.6", "OTHER ", "1.3", "1.3.1")), 0x0111);
   EXPECT_EQ(Keep(anArchive, File("1.6", "NAME", "1.3", "1.3.1")), 0);
   EXPECT_EQ(Indexed().size(), 2u);
}

TEST_F(ArchiveTest, NoLinkLeadsOutOfItAndTwoProcessesDoNotShareIt)
{
   fs::create_directories(itsFolder.File("elsewhere"));
   Archive anArchive(Settings());
   fs::create_directory_symlink(itsFolder.File("elsewhere"), Path("1.2"));
   EXPECT_EQ(Keep(anArchive, File("1.5", "NAME")), 0xA700);
   fs::remove(Path("1.2"));
   fs::create_directory(Path("1.2"));
   fs::create_directory_symlink(itsFolder.File("elsewhere"), Path("1.2/1.2.3"));
   EXPECT_EQ(Keep(anArchive, File("1.5", "NAME")), 0xA700);
   EXPECT_TRUE(fs::is_empty(itsFolder.File("elsewhere")));
   EXPECT_TRUE(fs::is_empty(Path("incoming")));
   fs::remove(Path("1.2/1.2.3"));
   EXPECT_EQ(Keep(anArchive, File("1.5", "NAME")), 0);
   EXPECT_THROW(Archive second(Settings()), std::runtime_error);
}

TEST_F(ArchiveTest, TheIndexMadeFromTheFilesIsTheOneThatWasWritten)
{
   {
      ServedNode aNode({"--store", Path()});
      EXPECT_EQ(Tn("send -r ANY@127.0.0.1:" + aNode.Port() + " '" TALVENOR_SOURCE_DIR "/data/samples'").itsCode, 0);
      EXPECT_EQ(aNode.Stop(), 0);
   }
   const std::vector<std::string> aWritten = Contents();
   ASSERT_EQ(aWritten.size(), 4u);
   EXPECT_EQ(Tn("index '" + Path() + "'").itsOutput, "4 instances indexed\n");
   EXPECT_EQ(Contents(), aWritten);
   fs::remove(Path("index.sqlite"));
   EXPECT_EQ(ServedNode({"--store", Path()}).Stop(), 0); // repairs
   EXPECT_EQ(Contents(), aWritten);
}
} // namespace

// tn dicomdir on folders and directories that the tests put together.
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/DatasetBytes.h"
#include "support/RunTn.h"
#include "support/TemporaryDirectory.h"

using namespace std::string_literals;

namespace
{
const std::string kStorage = "1.2.840.10008.5.1.4.1.1.";
const std::string kCT = kStorage + "2";

std::string Even(std::string theText, char thePad)
{
   theText.append(theText.size() % 2, thePad);
   return theText;
}

// A file of an instance, complete or not; its UIDs end with the texts given. Elements are to be given in order.
class InstanceFile
{
public:
   InstanceFile(const std::string& theClass, const std::string& theInstance, Encoding theEncoding = Encoding::Explicit)
       : itsDataset(theEncoding)
   {
      itsMeta.Element(0x00020002, "UI", Even(theClass, '\0'))
          .Element(0x00020003, "UI", Even("1.2.9." + theInstance, '\0'))
          .Element(0x00020010, "UI", Even(TransferSyntaxOf(theEncoding), '\0'));
   }

   InstanceFile& Text(UINT32 theTag, const char* theType, const std::string& theText)
   {
      itsDataset.Element(theTag, theType, Even(theText, theType == "UI"s ? '\0' : ' '));
      return *this;
   }

   // What every record wants to know, from the patient to the series.
   InstanceFile& Usual(const std::string& thePatient, const std::string& theStudy, const std::string& theSeries,
                       const std::string& theNumber = "1")
   {
      Text(0x00080020, "DA", "20260102").Text(0x00080030, "TM", "101112").Text(0x00080060, "CS", "CT");
      Text(0x00100010, "PN", "Name^Of" + thePatient).Text(0x00100020, "LO", thePatient);
      Text(0x0020000D, "UI", "1.2.3." + theStudy).Text(0x0020000E, "UI", "1.2.4." + theSeries);
      Text(0x00200010, "SH", "S" + theStudy).Text(0x00200011, "IS", theSeries);
      return Text(0x00200013, "IS", theNumber);
   }

   // What makes it an image, behind the keys.
   InstanceFile& Image()
   {
      itsDataset.Stated(0x00280010, "US", 2).Number(1, 2);
      return *this;
   }

   void Save(const TemporaryDirectory& theFolder, const std::string& thePath) const
   {
      const std::filesystem::path aPath = theFolder.Path() / thePath;
      std::filesystem::create_directories(aPath.parent_path());
      WriteFile(aPath.string(), DatasetBytes::Header(itsMeta.Bytes(), 0) + itsDataset.Bytes());
   }

private:
   DatasetBytes itsMeta;
   DatasetBytes itsDataset;
};

Outcome Create(const TemporaryDirectory& theFolder, const std::string& theOptions = "")
{
   return Tn("dicomdir create '" + theFolder.Path().string() + "' " + theOptions);
}

Outcome List(const std::string& thePath, const std::string& theOptions = "")
{
   return Tn("dicomdir list '" + thePath + "' " + theOptions);
}
} // namespace

TEST(TnDicomdirCreate, ArrangesTheFilesOfAFolder)
{
   const TemporaryDirectory aFolder;
   InstanceFile(kCT, "1").Usual("P1", "1", "2", "10").Image().Save(aFolder, "A/IM1");
   InstanceFile(kCT, "2", Encoding::Implicit).Usual("P1", "1", "2", "9").Image().Save(aFolder, "A/IM2");
   InstanceFile(kCT, "3", Encoding::BigEndian).Usual("P1", "1", "1").Image().Save(aFolder, "B/C/D/IM3");
   InstanceFile(kCT, "4").Usual("P2", "1", "2").Image().Save(aFolder, "IM4");
   InstanceFile(kStorage + "104.1", "5", Encoding::Compressed).Usual("P1", "2", "3").Save(aFolder, "PDF");
   InstanceFile("1.2.840.10008.5.1.4.39.1", "6").Text(0x00700080, "CS", "HOT").Save(aFolder, "PAL");
   const Outcome aCreated = Create(aFolder, "--id SET_1");
   EXPECT_EQ(aCreated.itsCode, 0) << aCreated.itsErrors;
   EXPECT_EQ(aCreated.itsOutput, aFolder.File("DICOMDIR") + ": 2 patients, 3 studies, 4 series, 6 instances\n");

   const Outcome aListed = List(aFolder.Path().string());
   EXPECT_EQ(aListed.itsErrors, "");
   EXPECT_EQ(aListed.itsCode, 0);
   EXPECT_EQ(aListed.itsOutput, "PATIENT  Name^OfP1  [P1]\n"
                                "  STUDY  20260102  [S1]\n"
                                "    SERIES  CT  1\n"
                                "      IMAGE  1  B/C/D/IM3\n"
                                "    SERIES  CT  2\n"
                                "      IMAGE  9  A/IM2\n"
                                "      IMAGE  10  A/IM1\n"
                                "  STUDY  20260102  [S2]\n"
                                "    SERIES  CT  3\n"
                                "      ENCAP DOC  1  PDF\n"
                                "PATIENT  Name^OfP2  [P2]\n"
                                "  STUDY  20260102  [S1]\n"
                                "    SERIES  CT  2\n"
                                "      IMAGE  1  IM4\n"
                                "PALETTE  PAL\n");

   // A second run replaces the directory, which is no instance of its own.
   const Outcome aRepeated = Create(aFolder);
   EXPECT_EQ(aRepeated.itsCode, 0);
   EXPECT_EQ(aRepeated.itsErrors, aCreated.itsErrors);
   EXPECT_EQ(aFolder.FileCount(), 6u) << "nothing temporary stays";
}

TEST(TnDicomdirCreate, ChoosesTheTypeOfRecordByTheClass)
{
   const struct
   {
      std::string itsClass; // behind the root of storage classes
      const char* itsType;
   } kCases[] = {
       {"1", "IMAGE"},     {"9.1.1", "WAVEFORM"},       {"66", "RAW DATA"},      {"66.1", "REGISTRATION"},
       {"66.4", "IMAGE"},  {"78.6", "SR DOCUMENT"},     {"78.7", "MEASUREMENT"}, {"88.33", "SR DOCUMENT"},
       {"481.1", "IMAGE"}, {"88.59", "KEY OBJECT DOC"}, {"481.5", "RT PLAN"},    {"481.12", "RADIOTHERAPY"},
   };
   const TemporaryDirectory aFolder;
   int aNumber = 0;
   std::string anExpected;
   for (const auto& aCase : kCases)
   {
      const std::string aName = std::to_string(100 + aNumber++);
      InstanceFile(kStorage + aCase.itsClass, aName).Usual("P", "1", "1", aName).Image().Save(aFolder, aName);
      anExpected += "      "s + aCase.itsType + "  " + aName + "  " + aName + "\n";
   }
   EXPECT_EQ(Create(aFolder).itsCode, 0);
   EXPECT_EQ(List(aFolder.Path().string()).itsOutput,
             "PATIENT  Name^OfP  [P]\n  STUDY  20260102  [S1]\n    SERIES  CT  1\n" + anExpected);
}

TEST(TnDicomdirCreate, TellsWhatItSkipsLeavesOutAndMakesUp)
{
   const TemporaryDirectory aFolder;
   InstanceFile(kCT, "1").Usual("P1", "1", "1").Image().Save(aFolder, "A1");
   WriteFile(aFolder.File("README"), "This is no image, but a text that is longer than a preamble with its magic. "
                                     "It goes on for some more words, up to a hundred and fifty characters.");
   WriteFile(aFolder.File("EMPTY"), "");
   InstanceFile(kCT, "1").Usual("P1", "1", "1").Image().Save(aFolder, "B1");
   InstanceFile(kCT, "2").Usual("P1", "1", "1").Image().Save(aFolder, "lower.dcm");
   InstanceFile(kCT, "3").Usual("P1", "1", "1").Image().Save(aFolder, "1/2/3/4/5/6/7/8/9");
   InstanceFile(kCT, "4").Usual("P1", "1", "1").Save(aFolder, "NOTHING");
   InstanceFile(kCT, "5").Text(0x0020000D, "UI", "1.2").Image().Save(aFolder, "NOSERIES");
   InstanceFile(kCT, "6")
       .Text(0x00080022, "DA", "2025.12.31")
       .Text(0x0020000D, "UI", "1.2")
       .Text(0x0020000E, "UI", "1.3")
       .Image()
       .Save(aFolder, "Z");
   const struct
   {
      const char* itsName;
      const char* itsOptions;
      const char* itsErrors;
      const char* itsCounts;
   } kCases[] = {
       {"conformant", "",
        "tn dicomdir: left out 1/2/3/4/5/6/7/8/9: its path has 9 components, more than 8\n"
        "tn dicomdir: left out B1: its instance is in the directory already, as A1\n"
        "tn dicomdir: skipped EMPTY: not a DICOM file\n"
        "tn dicomdir: left out NOSERIES: it has no series instance UID (0020,000E)\n"
        "tn dicomdir: left out NOTHING: it has no image, and no type of record is known for its SOP class "
        "1.2.840.10008.5.1.4.1.1.2\n"
        "tn dicomdir: skipped README: not a DICOM file (without file meta information)\n"
        "tn dicomdir: note on Z: it has no Patient ID; the directory has \"NOID-2\"\n"
        "tn dicomdir: note on Z: it has no Study Date; the directory has \"20251231\"\n"
        "tn dicomdir: note on Z: it has no Study Time; the directory has \"000000\"\n"
        "tn dicomdir: note on Z: it has no Study ID; the directory has \"1\"\n"
        "tn dicomdir: note on Z: it has no Modality; the directory has \"OT\"\n"
        "tn dicomdir: note on Z: it has no Series Number; the directory has \"1\"\n"
        "tn dicomdir: note on Z: it has no Instance Number; the directory has \"1\"\n"
        "tn dicomdir: left out lower.dcm: \"lower.dcm\" is not 1 to 8 characters of A-Z, 0-9 and _, as on media (see "
        "--any-names)\n",
        ": 2 patients, 2 studies, 2 series, 2 instances\n"},
       {"any names", "--any-names", nullptr, ": 2 patients, 2 studies, 2 series, 3 instances\n"},
   };
   for (const auto& aCase : kCases)
   {
      const Outcome anOutcome = Create(aFolder, aCase.itsOptions);
      EXPECT_EQ(anOutcome.itsCode, 1) << aCase.itsName;
      EXPECT_EQ(anOutcome.itsOutput, aFolder.File("DICOMDIR") + aCase.itsCounts) << aCase.itsName;
      if (aCase.itsErrors != nullptr)
      {
         EXPECT_EQ(anOutcome.itsErrors, aCase.itsErrors) << aCase.itsName;
      }
   }
}

// One file must not keep the others from their directory.
TEST(TnDicomdirCreate, LeavesOutValuesThatADirectoryCannotHold)
{
   const TemporaryDirectory aFolder;
   InstanceFile(kCT, "1").Usual("P1", "1", "1").Image().Save(aFolder, "A");
   InstanceFile(kCT, "2", Encoding::Implicit)
       .Text(0x00100010, "PN", std::string(40000, 'x'))
       .Text(0x00100020, "LO", "P2")
       .Text(0x0020000D, "UI", "1.2")
       .Text(0x0020000E, "UI", "1.3")
       .Image()
       .Save(aFolder, "B");
   const Outcome anOutcome = Create(aFolder);
   EXPECT_EQ(anOutcome.itsCode, 0) << anOutcome.itsErrors;
   EXPECT_TRUE(Contains(List(aFolder.Path().string()).itsOutput, "\nPATIENT  [P2]\n"));
}

TEST(TnDicomdirCreate, WritesNothingWhereThereIsNothingToWriteOrNoPlace)
{
   const TemporaryDirectory aFolder;
   EXPECT_EQ(Create(aFolder).itsCode, 3);
   EXPECT_EQ(Tn("dicomdir create /nowhere/at/all").itsCode, 3);
   InstanceFile(kCT, "1").Usual("P1", "1", "1").Image().Save(aFolder, "A1");
   EXPECT_EQ(Create(aFolder, "--id lower").itsCode, 2);
   EXPECT_EQ(Create(aFolder, "-o /nowhere/DICOMDIR").itsCode, 4);
   EXPECT_EQ(aFolder.FileCount(), 1u);
   EXPECT_EQ(Create(aFolder, "-o '" + aFolder.File("OTHER") + "'").itsCode, 0);
   EXPECT_EQ(aFolder.FileCount(), 2u);
}

TEST(TnDicomdirCreate, KeepsTextAsItIsWithItsCharacterSet)
{
   const TemporaryDirectory aFolder;
   InstanceFile(kCT, "1")
       .Text(0x00080005, "CS", "ISO_IR 192")
       .Text(0x00100010, "PN", "Ä^É")
       .Text(0x00100020, "LO", "P")
       .Text(0x0020000D, "UI", "1.2")
       .Text(0x0020000E, "UI", "1.3")
       .Image()
       .Save(aFolder, "A");
   EXPECT_EQ(Create(aFolder).itsCode, 0);
   const std::string aBytes = ReadFile(aFolder.File("DICOMDIR"));
   DatasetBytes anExpected;
   anExpected.Element(0x00041430, "CS", "PATIENT ")
       .Element(0x00080005, "CS", "ISO_IR 192")
       .Element(0x00100010, "PN", Even("Ä^É", ' '));
   EXPECT_TRUE(Contains(aBytes, anExpected.Bytes()));
}

namespace
{
// A record by the numbers of those that it leads to; kNone for none, and kPlace + x for the offset x itself.
constexpr int kNone = -1;
constexpr int kPlace = 100'000'000;

struct RecordSpec
{
   int itsNext = kNone;
   int itsLower = kNone;
   std::string itsFileID = "A\\B ";
};

class DirectoryBytes
{
public:
   explicit DirectoryBytes(const std::vector<RecordSpec>& theRecords, int theFirst = 0, int theLast = 0)
       : itsRecords(theRecords)
   {
      Compose(theFirst, theLast); // once for the places,
      Compose(theFirst, theLast); // once with them
   }

   const std::string& Bytes() const { return itsBytes; }
   std::string Place(std::size_t theRecord) const { return std::to_string(itsPlaces[theRecord]); }

private:
   void Compose(int theFirst, int theLast)
   {
      std::vector<std::size_t> aPlaces;
      DatasetBytes aSet;
      const std::size_t aStart = aSet.File().size();
      Offset(aSet, 0x00041200, theFirst);
      Offset(aSet, 0x00041202, theLast);
      aSet.Sequence(0x00041220);
      for (const RecordSpec& aRecord : itsRecords)
      {
         aPlaces.push_back(aStart + aSet.Size());
         aSet.Item();
         Offset(aSet, 0x00041400, aRecord.itsNext);
         Offset(aSet, 0x00041420, aRecord.itsLower);
         aSet.Element(0x00041430, "CS", "IMAGE ").Element(0x00041500, "CS", aRecord.itsFileID).ItemEnd();
      }
      aSet.SequenceEnd();
      itsPlaces = std::move(aPlaces);
      itsBytes = aSet.File();
   }

   void Offset(DatasetBytes& theSet, UINT32 theTag, int theTarget) const
   {
      const auto aRecord = static_cast<std::size_t>(theTarget);
      const std::size_t anOffset = theTarget == kNone           ? 0
                                   : theTarget >= kPlace        ? aRecord - kPlace
                                   : aRecord < itsPlaces.size() ? itsPlaces[aRecord]
                                                                : 0;
      theSet.Stated(theTag, "UL", 4).Number(static_cast<UINT32>(anOffset), 4);
   }

   std::vector<RecordSpec> itsRecords;
   std::vector<std::size_t> itsPlaces;
   std::string itsBytes;
};

Outcome ListBytes(const std::string& theBytes, const std::string& theOptions = "")
{
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("DICOMDIR"), theBytes);
   return List(aFolder.File("DICOMDIR"), theOptions);
}
} // namespace

TEST(TnDicomdirList, ListsEachRecordOnceWhateverTheOffsetsSay)
{
   const struct
   {
      const char* itsName;
      std::vector<RecordSpec> itsRecords;
      int itsLast;         // stated as the last of the root
      std::size_t itsFrom; // the record whose offset is wrong
      std::string itsFault;
   } kCases[] = {
       {"ring of one", {{0}}, 0, 0, ": its next record is said to be at offset "},
       {"ring of two", {{1}, {0}}, 1, 1, ": its next record is said to be at offset "},
       {"child to parent", {{kNone, 1}, {0}}, 0, 1, ": its next record is said to be at offset "},
       {"below itself", {{kNone, 0}}, 0, 0, ": its first record below is said to be at offset "},
       {"shared child", {{1, 2}, {kNone, 2}, {}}, 1, 1, ": its first record below is said to be at offset "},
       {"beyond", {{kPlace + 99'999'999}}, 0, 0, ": its next record is said to be at offset 99999999, where none is"},
       {"in the meta information", {{kPlace + 140}}, 0, 0, "at offset 140, where none is"},
   };
   for (const auto& aCase : kCases)
   {
      const DirectoryBytes aDirectory(aCase.itsRecords, 0, aCase.itsLast);
      const Outcome anOutcome = ListBytes(aDirectory.Bytes());
      EXPECT_EQ(anOutcome.itsCode, 1) << aCase.itsName;
      EXPECT_EQ(LinesOf(anOutcome.itsOutput), aCase.itsRecords.size()) << aCase.itsName << "\n" << anOutcome.itsOutput;
      EXPECT_EQ(LinesOf(anOutcome.itsErrors), 1u) << aCase.itsName << "\n" << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsErrors, "record " + aDirectory.Place(aCase.itsFrom))) << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsErrors, aCase.itsFault)) << aCase.itsName << "\n" << anOutcome.itsErrors;
   }
   const Outcome anInside = ListBytes(DirectoryBytes(std::vector<RecordSpec>{{kPlace + 8}, {}}).Bytes(), "--offsets");
   EXPECT_EQ(anInside.itsCode, 1);
   EXPECT_TRUE(Contains(anInside.itsErrors, "no offset leads to 1 of its 2 records")) << anInside.itsErrors;
   EXPECT_TRUE(Contains(anInside.itsOutput, "# No offset leads to:\n")) << anInside.itsOutput;
}

TEST(TnDicomdirList, WalksChainsOfTwentyThousandRecordsInLinearTime)
{
   constexpr int kMany = 20000;
   std::vector<RecordSpec> aChain(kMany);
   std::vector<RecordSpec> aDepth(kMany);
   std::vector<RecordSpec> aFan(2001);
   for (int i = 0; i + 1 < kMany; ++i)
   {
      aChain[static_cast<std::size_t>(i)].itsNext = i + 1;
      aDepth[static_cast<std::size_t>(i)].itsLower = i + 1;
   }
   for (int i = 0; i < 2000; ++i)
   {
      aFan[static_cast<std::size_t>(i)] = {i < 1999 ? i + 1 : kNone, 2000};
   }
   const struct
   {
      const char* itsName;
      const std::vector<RecordSpec>& itsRecords;
      int itsLast;
      std::size_t itsFaults; // lines: 20, and one that counts the others
   } kCases[] = {{"chain", aChain, kMany - 1, 0}, {"depth", aDepth, 0, 0}, {"fan", aFan, 1999, 21}};
   for (const auto& aCase : kCases)
   {
      const std::string aBytes = DirectoryBytes(aCase.itsRecords, 0, aCase.itsLast).Bytes();
      const auto aStart = std::chrono::steady_clock::now();
      const Outcome anOutcome = ListBytes(aBytes);
      EXPECT_LT(std::chrono::steady_clock::now() - aStart, std::chrono::seconds(5)) << aCase.itsName;
      EXPECT_EQ(LinesOf(anOutcome.itsOutput), aCase.itsRecords.size()) << aCase.itsName;
      EXPECT_EQ(LinesOf(anOutcome.itsErrors), aCase.itsFaults) << aCase.itsName;
      EXPECT_LT(anOutcome.itsOutput.size(), 100 * aCase.itsRecords.size()) << aCase.itsName;
   }
}

TEST(TnDicomdirList, FlagsFilesOutsideTheMedium)
{
   std::string aLong = "A";
   for (int i = 0; i < 2000; ++i)
   {
      aLong += "\\A";
   }
   const struct
   {
      const char* itsName;
      std::string itsFileID;
      bool itsIsFlagged;
   } kCases[] = {
       {"conformant", "DIR\\FILE", false},
       {"lower case", "dir\\file.dcm", false},
       {"upwards", "..\\..\\X", true},
       {"within", "A\\..\\..\\X", true},
       {"absolute", "\\etc\\x", true},
       {"slash", "/etc/x", true},
       {"empty part", "A\\\\B", true},
       {"drive", "C:\\A", true},
       {"NUL", "A\0B"s, true},
       {"padded with NUL", "A\\B\0"s, false},
       {"2001 parts", Even(aLong, ' '), true},
       {"dot", ".", true},
   };
   for (const auto& aCase : kCases)
   {
      const DirectoryBytes aDirectory(std::vector<RecordSpec>{{kNone, kNone, Even(aCase.itsFileID, ' ')}});
      const Outcome anOutcome = ListBytes(aDirectory.Bytes());
      EXPECT_EQ(anOutcome.itsCode, aCase.itsIsFlagged ? 1 : 0) << aCase.itsName << anOutcome.itsErrors;
      EXPECT_EQ(LinesOf(anOutcome.itsOutput), 1u) << aCase.itsName;
      EXPECT_EQ(Contains(anOutcome.itsErrors, "record " + aDirectory.Place(0) + ": "), aCase.itsIsFlagged)
          << aCase.itsName << anOutcome.itsErrors;
   }
}

TEST(TnDicomdirList, ShowsOffsetsAndRefusesWhatIsNoDirectory)
{
   const DirectoryBytes aDirectory(std::vector<RecordSpec>{{1}, {}}, 0, 1);
   const auto aLine = [&](std::size_t theRecord) {
      const std::string aPlace = aDirectory.Place(theRecord);
      return std::string(10 - aPlace.size(), ' ') + aPlace + "  IMAGE  A/B\n";
   };
   EXPECT_EQ(ListBytes(aDirectory.Bytes(), "--offsets").itsOutput, aLine(0) + aLine(1));
   const std::string aJson = ListBytes(aDirectory.Bytes(), "--json").itsOutput;
   EXPECT_EQ(LinesOf(aJson), 2U);
   EXPECT_TRUE(aJson.starts_with("{\"offset\":" + aDirectory.Place(0) + ",\"depth\":0,")) << aJson;
   EXPECT_TRUE(Contains(aJson, R"("DirectoryRecordType":"IMAGE","ReferencedFileID":["A","B"])")) << aJson;
   const Outcome aCut = ListBytes(aDirectory.Bytes().substr(0, aDirectory.Bytes().size() - 8));
   EXPECT_EQ(aCut.itsCode, 3);
   EXPECT_EQ(LinesOf(aCut.itsOutput), 2u);
   EXPECT_EQ(List(Sample("ct-explicit.dcm")).itsCode, 3);
   EXPECT_EQ(List("/nowhere").itsCode, 3);
}

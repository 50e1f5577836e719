// DICOMObject::LoadFromFile, the loader behind it, and the dump of a file.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>

#include "support/CapturedErrorLog.h"
#include "support/Elements.h"
#include "support/FakeClock.h"
#include "support/FileBytes.h"
#include "support/TemporaryFile.h"
#include "talvenor/dataset/DICOMCluster.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dictionary/MPrivateDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/transfer/InputTransferSyntax.h"

namespace
{
// 32 bits, little endian.
std::string Long(std::size_t theNumber)
{
   return {static_cast<char>(theNumber), static_cast<char>(theNumber >> 8), static_cast<char>(theNumber >> 16),
           static_cast<char>(theNumber >> 24)};
}

const std::string kInstance = ShortElement(Bytes("\x08\x00\x18\x00"), "UI", "1.22.3");
const std::string kModality = ShortElement(Bytes("\x08\x00\x60\x00"), "CS", "CT");
const std::string kName = ShortElement(Bytes("\x10\x00\x10\x00"), "PN", "A^BC");
const std::string kRows = ShortElement(Bytes("\x28\x00\x10\x00"), "US", Bytes("\x04\x00"));

struct Loaded
{
   int itsReturn = -1;
   UINT32 itsSize = 12345;
   TNResultCode itsResult = TN_INTERNAL_ERROR;
   int itsSystemError = -1;
};

Loaded Load(DICOMObject& theObject, const RWCString& thePath, UINT16 theStopGroup = 0, UINT16 theStopElement = 0,
            int theKnownTagsOnly = 0, DICOMCluster* theCluster = nullptr)
{
   Loaded aResult;
   aResult.itsReturn = theObject.LoadFromFile(thePath, aResult.itsSize, aResult.itsResult, aResult.itsSystemError,
                                              theStopGroup, theStopElement, theKnownTagsOnly, theCluster);
   return aResult;
}

TEST(LoadFromFile, FillsTheDatasetAndTheOutArguments)
{
   const std::string aFile = FileHeader(kExplicitLittle) + kInstance + kModality + kName + kRows;
   const TemporaryFile aPath(aFile);
   const CapturedErrorLog aLog;
   DICOMDataObject anObject;
   anObject.Push(TextElement(0x00080005, "of an earlier load"));
   const Loaded aResult = Load(anObject, aPath.Name());
   EXPECT_EQ(aResult.itsReturn, 1);
   EXPECT_EQ(aResult.itsSize, aFile.size());
   EXPECT_EQ(aResult.itsResult, TN_NO_ERROR);
   EXPECT_EQ(aResult.itsSystemError, 0);
   EXPECT_EQ(TagsOf(anObject), (std::vector<UINT32>{0x00080018, 0x00080060, 0x00100010, 0x00280010}));
   EXPECT_EQ(aLog.Text(), "");

   DICOMDataObject aShort;
   EXPECT_EQ(aShort.LoadFromFile(aPath.Name()), 1);
   EXPECT_TRUE(aShort.ValueEquals(anObject));
}

TEST(LoadFromFile, MissingFileGetsTimeToAppearAndLeavesTheDatasetAlone)
{
   const FakeClock aClock;
   const CapturedErrorLog aLog;
   const TemporaryFile aMissing;
   DICOMDataObject anObject;
   anObject.Push(TextElement(0x00080060, "CT"));
   const Loaded aResult = Load(anObject, aMissing.Name());
   EXPECT_EQ(aResult.itsReturn, 0);
   EXPECT_EQ(aResult.itsResult, TN_OPEN_FAILED);
   EXPECT_EQ(aResult.itsSystemError, ENOENT);
   EXPECT_EQ(aClock.Slept(), 8u * 300u); // a pause after each of eight attempts
   EXPECT_EQ(TextOf(anObject, 0x00080060), "CT");
}

TEST(LoadFromFile, FailuresAreLoggedAndKeepWhatHadBeenRead)
{
   const std::string aHeader = FileHeader(kExplicitLittle);
   const std::string aNoSyntax = kPreambleAndMagic + kGroupLength + kVersion + kSOPClass;
   const struct
   {
      const char* itsName;
      std::string itsFile;
      TNResultCode itsResult;
      const char* itsLogText;
      std::vector<UINT32> itsTags = {};
   } kCases[] = {
       {"empty", "", TN_PARSE_TO_OBJECT_FAILED, "): Empty file: "},
       {"no transfer syntax", aNoSyntax, TN_PARSE_TO_OBJECT_FAILED,
        "Part10InputStream::Open(): Invalid Part10 header: Missing TransferSyntaxUID: "},
       {"transfer syntax with a line of its own", FileHeader("1.2\n9.33") + kModality, TN_TRANSFER_SYNTAX_UNSUPPORTED,
        "Unknown transfer syntax type: 1.2.9.33: "},
       {"cut in a value", aHeader + kInstance + kName.substr(0, 10), TN_END_OF_FILE, "", {0x00080018}},
       {"cut in a header", aHeader + kInstance + kName.substr(0, 5), TN_END_OF_FILE, "", {0x00080018}},
   };
   for (const auto& aCase : kCases)
   {
      const TemporaryFile aPath(aCase.itsFile);
      const CapturedErrorLog aLog;
      DICOMDataObject anObject;
      anObject.Push(TextElement(0x00100020, "of an earlier load"));
      const Loaded aResult = Load(anObject, aPath.Name());
      EXPECT_EQ(aResult.itsReturn, 0) << aCase.itsName;
      EXPECT_EQ(aResult.itsResult, aCase.itsResult) << aCase.itsName;
      EXPECT_EQ(TagsOf(anObject), aCase.itsTags) << aCase.itsName;
      const std::string aPrefix = "DICOMObject::LoadFromFile(\"" + RWCString(aPath.Name()) + "\"): ";
      const std::string aLine = aLog.Text().substr(std::min(aLog.Text().find(aPrefix), aLog.Text().size()));
      EXPECT_NE(aLine.find(aCase.itsLogText), std::string::npos) << aCase.itsName << ": " << aLog.Text();
      EXPECT_NE(aLine.find(TNResult::Describe(aCase.itsResult)), std::string::npos) << aCase.itsName << aLine;
   }
}

TEST(LoadFromFile, NeedsOnlyTheTransferSyntaxAndKeepsItsByteOrder)
{
   const TemporaryFile aPath(kPreambleAndMagic + kGroupLength + TransferSyntaxElement(kExplicitBig) +
                             Bytes("\x00\x28\x00\x10US\x00\x02\x01\x02") +
                             Bytes("\x00\x28\x12\x01OW\x00\x00\x00\x00\x00\x04\x01\x02\x03\x04"));
   DICOMDataObject anObject;
   ASSERT_EQ(Load(anObject, aPath.Name()).itsReturn, 1);
   EXPECT_EQ(anObject.GetEndian(), TNEndian::BigEndian);
   EXPECT_EQ(anObject.GetUINT16(0x0028, 0x0010), 0x0102);
   UINT16 aWords[2] = {};
   EXPECT_EQ(anObject.GetWords(0x0028, 0x1201, aWords, sizeof aWords), 1);
   EXPECT_EQ(aWords[1], 0x0304);
}

TEST(LoadFromFile, StopsAtTheLimit)
{
   const TemporaryFile aPath(FileHeader(kExplicitLittle) + kInstance + kModality + kName + kRows);
   const struct
   {
      UINT16 itsGroup, itsElement;
      std::size_t itsCount;
   } kCases[] = {{0x0008, 0x0060, 1}, {0x0010, 0, 2}, {0x0009, 0x0010, 2}, {0x7FE0, 0x0010, 4}};
   for (const auto& aCase : kCases)
   {
      DICOMDataObject anObject;
      EXPECT_EQ(Load(anObject, aPath.Name(), aCase.itsGroup, aCase.itsElement).itsReturn, 1);
      EXPECT_EQ(anObject.Entries(), aCase.itsCount) << std::hex << aCase.itsGroup << ',' << aCase.itsElement;
   }
}

TEST(LoadFromFile, DatasetJoinsTheCluster)
{
   const TemporaryFile aPath(FileHeader(kExplicitLittle) + kInstance + kModality + kName +
                             ShortElement(Bytes("\x20\x00\x0D\x00"), "UI", "1.2.50") +
                             ShortElement(Bytes("\x20\x00\x0E\x00"), "UI", "1.2.60"));
   DICOMCluster aCluster;
   DICOMDataObject aFirst, aSecond;
   EXPECT_EQ(Load(aFirst, aPath.Name(), 0, 0, 0, &aCluster).itsReturn, 1);
   EXPECT_EQ(Load(aSecond, aPath.Name(), 0, 0, 0, &aCluster).itsReturn, 1);
   EXPECT_NE(aFirst.GetVR(0x0010, 0x0010), nullptr);
   EXPECT_EQ(aFirst.GetVR(0x0010, 0x0010), aSecond.GetVR(0x0010, 0x0010)); // one for both
   EXPECT_NE(aFirst.GetVR(0x0008, 0x0018), aSecond.GetVR(0x0008, 0x0018)); // of each its own
   EXPECT_EQ(TagsOf(aSecond).size(), 5u);
}

TEST(LoadFromFile, DumperPrintsAFileOrSaysWhyNot)
{
   const FakeClock aClock;
   std::ostringstream anOutput;
   LogStream aLog(anOutput);
   DICOMObjectDumper aDumper(aLog);
   const TemporaryFile aPath(FileHeader(kExplicitLittle) + kModality);
   aDumper.Dump(RWCString(aPath.Name()));
   const std::string aLoaded = "DICOMObjectDumper: Loaded DICOM Object from file \"" + RWCString(aPath.Name()) + "\"\n";
   EXPECT_EQ(anOutput.str().rfind(aLoaded, 0), 0u) << anOutput.str();
   EXPECT_NE(anOutput.str().find("Start of DICOM Data Object"), std::string::npos);
   EXPECT_NE(anOutput.str().find("(0008, 0060) 2/CS"), std::string::npos);

   const TemporaryFile aMissing;
   anOutput.str("");
   aDumper.Dump(RWCString(aMissing.Name()));
   EXPECT_EQ(anOutput.str(), "DICOMObjectDumper: Error loading file \"" + RWCString(aMissing.Name()) +
                                 "\": " + TNResult::Describe(TN_OPEN_FAILED) + " (system error 2)\n");
}

TEST(LoadFromFile, ADumpThatWaitsForItsFileLetsOthersWriteToTheLog)
{
   std::ostringstream anOutput;
   TNTrace aTrace;
   aTrace.On(anOutput);
   bool wasFree = false;
   std::future<void> anAttempt; // of another thread, while the dump sleeps
   FakeClock aClock;
   aClock.OnceSlept(0, [&] {
      anAttempt = std::async(std::launch::async, [&] { const LogLock aLock(aTrace); });
      wasFree = anAttempt.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
   });
   const TemporaryFile aMissing;
   aTrace.Dump(std::string(aMissing.Name()));
   EXPECT_TRUE(wasFree);
   EXPECT_EQ(anOutput.str().rfind("DICOMObjectDumper: Error loading file \"", 0), 0u) << anOutput.str();
}

// The default catalog knows KNOWN for the time of a test.
class KnownTags : public testing::Test
{
protected:
   KnownTags()
   {
      std::istringstream aStream("PrivateCreator = KNOWN\n0009,0001,LO,a thing,Thing,1,1\n");
      Catalog().Add(new MPrivateDataDictionary(aStream));
   }
   ~KnownTags() override { delete Catalog().Remove("KNOWN"); }

   static PrivateDataDictionaryCatalog& Catalog()
   {
      return PrivateDataDictionaryCatalog::GetDefaultPrivateDataDictionaryCatalog();
   }

   std::vector<UINT32> Kept(const std::string& theElements, const std::string& theSyntax = kExplicitLittle,
                            int theKnownTagsOnly = 1)
   {
      const TemporaryFile aPath(FileHeader(theSyntax) + theElements);
      DICOMDataObject anObject;
      const Loaded aResult = Load(anObject, aPath.Name(), 0, 0, theKnownTagsOnly);
      EXPECT_EQ(aResult.itsReturn, 1) << aResult.itsResult;
      return TagsOf(anObject);
   }

   static std::string Private(const std::string& theElement, const std::string& theValue)
   {
      return ShortElement(Bytes("\x09\x00") + theElement, "LO", theValue);
   }
};

TEST_F(KnownTags, KeepWhatBelongsToAKnownCreator)
{
   const std::string aFirst = Bytes("\x10\x00"), aValue = Bytes("\x01\x10"), anOtherValue = Bytes("\x01\x11");
   const struct
   {
      const char* itsName;
      std::string itsElements;
      std::vector<UINT32> itsKept;
   } kCases[] = {
       {"known", Private(aFirst, "KNOWN ") + Private(aValue, "xx"), {0x00090010, 0x00091001}},
       {"blanks around", Private(aFirst, "  KNOWN ") + Private(aValue, "xx"), {0x00090010, 0x00091001}},
       {"unknown", Private(aFirst, "OTHER ") + Private(aValue, "xx"), {}},
       {"another block", Private(aFirst, "KNOWN ") + Private(anOtherValue, "xx"), {0x00090010}},
       {"no creator", Private(aValue, "xx"), {}},
       {"265 characters and known", Private(aFirst, std::string(260, ' ') + "KNOWN"), {0x00090010}},
       {"266 characters", Private(aFirst, std::string(261, ' ') + "KNOWN"), {}},
       {"other small letters", Private(aFirst, "known "), {}},
       {"below the creators", Private(Bytes("\x01\x00"), "xx"), {}},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(Kept(aCase.itsElements + kName).size(), aCase.itsKept.size() + 1) << aCase.itsName;
      EXPECT_EQ(Kept(aCase.itsElements), aCase.itsKept) << aCase.itsName;
   }
   EXPECT_EQ(Kept(kModality + Private(aFirst, "OTHER ") + Private(aValue, "xx"), kExplicitLittle, 0).size(), 3u);
}

TEST_F(KnownTags, DropSequencesToTheirEnd)
{
   // (0009,1005) SQ with items of defined and undefined length, and in them a sequence and pixel data of both kinds.
   const std::string kItem = Bytes("\xFE\xFF\x00\xE0"), kUndefined = Bytes("\xFF\xFF\xFF\xFF");
   const std::string kItemEnd = Bytes("\xFE\xFF\x0D\xE0\0\0\0\0"), kSequenceEnd = Bytes("\xFE\xFF\xDD\xE0\0\0\0\0");
   const std::string kPixels = Bytes("\xE0\x7F\x10\x00OW\0\0\x04\0\0\0abcd");
   const std::string kFragments =
       Bytes("\xE0\x7F\x10\x00OB\0\0\xFF\xFF\xFF\xFF") + kItem + Long(0) + kItem + Long(4) + "abcd" + kSequenceEnd;
   const std::string kSequence = Bytes("\x09\x00\x05\x10SQ\0\0"), kInner = Bytes("\x08\x00\x40\x11SQ\0\0");
   const struct
   {
      const char* itsName;
      std::string itsContent; // of an item
   } kCases[] = {
       {"empty", ""},
       {"a sequence", kInner + kUndefined + kItem + Long(10) + kModality + kSequenceEnd + kName},
       {"native pixels", kModality + kPixels},
       {"encapsulated pixels", kModality + kFragments},
   };
   for (const auto& aCase : kCases)
   {
      const std::string aDefinedItem = kItem + Long(aCase.itsContent.size()) + aCase.itsContent;
      const std::string anOpenItem = kItem + kUndefined + aCase.itsContent + kItemEnd;
      const std::string anItems = aDefinedItem + anOpenItem + aDefinedItem;
      const std::string aDefined = kSequence + Long(anItems.size()) + anItems;
      const std::string anOpen = kSequence + kUndefined + anItems + kSequenceEnd;
      for (const std::string& aSequence : {aDefined, anOpen})
      {
         EXPECT_EQ(Kept(aSequence + kName, kBaselineJPEG), (std::vector<UINT32>{0x00100010})) << aCase.itsName;
         EXPECT_EQ(Kept(aSequence + kName, kBaselineJPEG, 0).size(), 2u) << aCase.itsName;
      }
   }
}

TEST_F(KnownTags, TableOfBlocksStartsOverWhenItIsFull)
{
   // 250 creators in groups 0009 and 000B, then a value in the first and in the second block.
   const auto aCreator = [](int theGroup, int theBlock) {
      return ShortElement(std::string{static_cast<char>(theGroup), 0, static_cast<char>(theBlock), 0}, "LO", "KNOWN ");
   };
   std::string aCreators;
   for (int i = 0; i < 249; ++i) // a group has 240 blocks
   {
      aCreators += aCreator(i < 240 ? 0x09 : 0x0B, 0x10 + i % 240);
   }
   const std::string kValues = Private(Bytes("\x01\x10"), "xx") + Private(Bytes("\x01\x11"), "xx");
   EXPECT_EQ(Kept(aCreators + kValues).size(), 251u);
   const std::vector<UINT32> aKept = Kept(aCreators + aCreator(0x0B, 0x30) + kValues);
   EXPECT_EQ(aKept.size(), 251u);
   EXPECT_EQ(std::count(aKept.begin(), aKept.end(), 0x00091001u), 0) << "its place was taken";
   EXPECT_EQ(std::count(aKept.begin(), aKept.end(), 0x00091101u), 1);
}

} // namespace

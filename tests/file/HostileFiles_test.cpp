// Files that are broken or meant to break their reader. Each ends in a StreamIOException, or loads as far as it goes
// and says that it was cut; none takes memory for a length that it only states, or recurses as deep as it likes.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/DatasetBytes.h"
#include "support/DefaultDictionary.h"
#include "support/FileBytes.h"
#include "support/FileLoading.h"
#include "support/Repeated.h"
#include "support/Sanitized.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dataset/VR.h"

namespace
{
constexpr UINT32 kUndefined = DatasetBytes::kUndefined;
constexpr UINT32 kModality = 0x00080060;  // CS
constexpr UINT32 kSeries = 0x00081115;    // SQ
constexpr UINT32 kInstances = 0x00081199; // SQ
constexpr UINT32 kName = 0x00100010;      // PN
constexpr UINT32 kIcon = 0x00880200;      // SQ
constexpr UINT32 kPixels = 0x7FE00010;
constexpr UINT32 kUnknown = 0x00081FFE; // in no dictionary

constexpr Encoding kNative[] = {Encoding::Implicit, Encoding::Explicit, Encoding::BigEndian};

struct Row
{
   std::string itsName;
   std::string itsFile;
   TNResultCode itsCode;
   bool itsIsCut = false;
};

void CheckRows(const std::vector<Row>& theRows)
{
   for (const Row& aRow : theRows)
   {
      SCOPED_TRACE(aRow.itsName);
      const LoadOutcome anOutcome = Load(aRow.itsFile);
      EXPECT_EQ(anOutcome.itsCode, aRow.itsCode) << anOutcome;
      EXPECT_EQ(anOutcome.itsIsCut, aRow.itsIsCut) << anOutcome;
   }
}

DatasetBytes Explicit()
{
   return DatasetBytes(Encoding::Explicit);
}

DatasetBytes Fragments()
{
   return DatasetBytes(Encoding::Compressed).Stated(kPixels, "OB", kUndefined);
}

// A small dictionary, so that implicit VR has types.
class HostileFiles : public testing::Test
{
   DefaultDictionary itsDictionary{"0008,0060,CS,\"Modality\",Modality,1,1\n"
                                   "0008,1115,SQ,\"Referenced Series Sequence\",ReferencedSeriesSequence,1,1\n"
                                   "0008,1199,SQ,\"Referenced SOP Sequence\",ReferencedSOPSequence,1,1\n"
                                   "0010,0010,PN,\"Patient's Name\",PatientName,1,1\n"
                                   "0088,0200,SQ,\"Icon Image Sequence\",IconImageSequence,1,1\n"};
};

// A file with the content theDepth times in an item of a sequence.
std::string Nested(Encoding theEncoding, unsigned int theDepth, bool isDefined, const std::string& theContent = "")
{
   DatasetBytes aFile(theEncoding);
   if (!isDefined)
   {
      const std::string anOpening = DatasetBytes(theEncoding).Sequence(kSeries).Item().Bytes();
      const std::string aClosing = DatasetBytes(theEncoding).ItemEnd().SequenceEnd().Bytes();
      return aFile.Raw(Repeated(anOpening, theDepth) + theContent + Repeated(aClosing, theDepth)).File();
   }
   const std::size_t aStep = DatasetBytes(theEncoding).Sequence(kSeries).Item().Size();
   for (std::size_t aLength = theContent.size() + theDepth * aStep; aLength > theContent.size();)
   {
      aLength -= aStep;
      aFile.Sequence(kSeries, static_cast<UINT32>(aLength + 8)).Item(static_cast<UINT32>(aLength));
   }
   return aFile.Raw(theContent).File();
}

// Whatever lies about a length.
std::vector<Row> LyingLengths()
{
   std::vector<Row> aRows;
   for (const char* const aType : {"CS", "US", "FD", "XX"})
   {
      aRows.push_back({aType, Explicit().Stated(kModality, aType, 0xFFFE, "AB").File(), TN_END_OF_FILE});
   }
   for (const char* const aType : {"OW", "UT", "UN", "SQ"})
   {
      aRows.push_back({aType, Explicit().Stated(kUnknown, aType, 0xFFFFFFFE, "AB").File(), TN_END_OF_FILE});
   }
   for (const UINT32 aLength : {3u, 0xFFFFu, 0x7FFFFFFEu, 0x80000000u, 0x80000001u, 0xFFFFFFFCu, 0xFFFFFFFEu})
   {
      const std::string aName = std::to_string(aLength) + " bytes of ";
      aRows.push_back({aName + "OB", Explicit().Stated(kUnknown, "OB", aLength, "AB").File(), TN_END_OF_FILE});
      aRows.push_back({aName + "pixels", Explicit().Stated(kPixels, "OB", aLength, "AB").File(), TN_END_OF_FILE});
      aRows.push_back({aName + "implicit text",
                       DatasetBytes(Encoding::Implicit).Stated(kModality, "", aLength, "AB").File(), TN_END_OF_FILE});
   }
   for (const UINT32 aLength : {0x40000000u, 0xFFFFFFFEu, kUndefined})
   {
      const std::string aName = std::to_string(aLength) + " bytes of ";
      aRows.push_back({aName + "offset table", Fragments().Item(aLength, "AB").File(), TN_END_OF_FILE});
      aRows.push_back({aName + "fragment", Fragments().Item(0).Item(aLength, "AB").File(), TN_END_OF_FILE});
   }
   for (const Encoding anEncoding : kNative)
   {
      const std::string aLiar = DatasetBytes(anEncoding).Stated(kUnknown, "OB", 0x7FFFFFFE, "AB").Bytes();
      const RWCString aName = TransferSyntaxOf(anEncoding);
      aRows.push_back({aName + " in open items", Nested(anEncoding, 16, false, aLiar), TN_END_OF_FILE});
      aRows.push_back({aName + " in items of a length", Nested(anEncoding, 2, true, aLiar), TN_END_OF_FILE});
   }
   return aRows;
}

TEST_F(HostileFiles, MetaInformation)
{
   const std::string aSyntax = Explicit().Element(0x00020010, "UI", "1.2.840.10008.1.2.1 ").Bytes();
   const std::string aDataset = Explicit().Element(kModality, "CS", "CT").Bytes();
   const std::string aBigEndian = kPreambleAndMagic + DatasetBytes(Encoding::BigEndian)
                                                          .Element(0x00020000, "UL", std::string(4, '\0'))
                                                          .Element(0x00020010, "UI", "1.2.840.10008.1.2.2 ")
                                                          .Bytes();
   const auto aFileIn = [&](const std::string& theUID) { return DatasetBytes::Header(theUID) + aDataset; };
   const std::string aFile = aFileIn("1.2.840.10008.1.2.1");
   CheckRows({
       {"last element ends behind the file",
        DatasetBytes::Header(aSyntax + Explicit().Stated(0x00020016, "AE", 0xFFFE, "A").Bytes(), 0), TN_END_OF_FILE},
       {"no VR", DatasetBytes::Header(aSyntax + std::string("\2\0\x16\0\0\0\xFF\xFF\xFF\xFF\xFF\x7F", 12), 0),
        TN_END_OF_FILE},
       {"big endian", aBigEndian + std::string(2000, '\0'), TN_PARSE_TO_OBJECT_FAILED},
       {"big endian, short", aBigEndian, TN_END_OF_FILE},
       {"empty transfer syntax", aFileIn(""), TN_TRANSFER_SYNTAX_UNSUPPORTED},
       {"NUL within the transfer syntax", aFileIn(std::string("1.2.840\0.10008", 14)), TN_TRANSFER_SYNTAX_UNSUPPORTED},
       {"300 characters of transfer syntax", aFileIn(std::string(300, '1')), TN_TRANSFER_SYNTAX_UNSUPPORTED},
       {"a sequence that never ends", DatasetBytes::Header(aSyntax + Explicit().Sequence(0x00020020).Item().Bytes(), 0),
        TN_NO_ERROR},
       // Nothing marks the end of a dataset: the second preamble is one of untyped empty elements of group 0000.
       {"two files glued", aFile + aFile, TN_NO_ERROR},
       {"4 KiB of FF", std::string(4096, '\xFF'), TN_INVALID_DELIMITER},
       {"a web page", "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n" + std::string(200, '<'), TN_END_OF_FILE},
   });
   EXPECT_EQ(Load(std::string(4096, '\0')).itsEntries, 0u) << "4 KiB of zeros";
}

TEST_F(HostileFiles, ALengthThatLiesIsAnEndOfFileAndTakesNoMemory)
{
   const std::vector<Row> aRows = LyingLengths();
   CheckRows(aRows);
   if (kIsSanitized)
   {
      GTEST_SKIP() << "a sanitizer needs more address space than the limit leaves";
   }
   const pid_t aChild = fork();
   ASSERT_GE(aChild, 0);
   if (aChild == 0)
   {
      // Address space, so that memory counts even when it is never touched: 8 MiB beside what is mapped already.
      long aPages = 0;
      FILE* const aStatistics = std::fopen("/proc/self/statm", "r");
      const bool isKnown = aStatistics != nullptr && std::fscanf(aStatistics, "%ld", &aPages) == 1;
      const rlim_t aSpace = static_cast<rlim_t>(aPages * sysconf(_SC_PAGESIZE)) + 8 * 1024 * 1024;
      const rlimit aLimit = {aSpace, aSpace};
      if (!isKnown || setrlimit(RLIMIT_AS, &aLimit) != 0)
      {
         _exit(100);
      }
      for (std::size_t i = 0; i < aRows.size(); ++i)
      {
         try
         {
            DICOMDataObject anObject;
            if (LoadFromMemory(aRows[i].itsFile, anObject).itsCode != TN_END_OF_FILE)
            {
               _exit(101);
            }
         }
         catch (...)
         {
            _exit(static_cast<int>(i + 1));
         }
      }
      _exit(0);
   }
   int aStatus = 0;
   ASSERT_EQ(waitpid(aChild, &aStatus, 0), aChild);
   ASSERT_TRUE(WIFEXITED(aStatus)) << aStatus;
   EXPECT_EQ(WEXITSTATUS(aStatus), 0) << "the number of the row that took too much, from 1";
}

TEST_F(HostileFiles, NothingReachesBeyondWhatIsAroundIt)
{
   const std::string aModality = Explicit().Element(kModality, "CS", "CT").Bytes(); // 10 bytes
   const std::string aTail = Explicit().Element(kName, "LO", std::string(5000, 'x')).Bytes();
   const auto anIcon = [](UINT32 theLength) {
      return Explicit().Sequence(kIcon).Item(theLength).Stated(kPixels, "OB", kUndefined).Item(0).Item(4, "ABCD");
   };
   std::vector<Row> aRows = {
       {"an item whose end wraps around 32 bits", Explicit().Sequence(kSeries).Item(0xFFFFFFF8, aModality).File(),
        TN_NO_ERROR, true},
       {"the same in a sequence of defined length",
        Explicit().Sequence(kSeries, 18).Item(0xFFFFFFF8, aModality).Raw(aTail).File(), TN_NO_ERROR, true},
       {"spare bytes at the end of a sequence",
        Explicit().Sequence(kSeries, 25).Item(10, aModality).Raw("1234567").Raw(aTail).File(), TN_END_OF_FILE},
       {"a sequence too short for an item", Explicit().Sequence(kSeries, 7).Raw(aTail).File(), TN_END_OF_FILE},
       {"an item ends in a fragment's bytes", anIcon(30).SequenceEnd().Raw(aTail).File(), TN_END_OF_FILE},
       {"an item ends in front of the end of the fragments", anIcon(32).SequenceEnd().Raw(aTail).File(),
        TN_INVALID_DELIMITER},
   };
   for (const UINT32 anExcess : {1u, 4000u})
   {
      const std::string aName = "longer than its item by " + std::to_string(anExcess) + ": ";
      aRows.push_back(
          {aName + "a sequence",
           Explicit().Sequence(kSeries).Item(12).Sequence(kInstances, anExcess).SequenceEnd().Raw(aTail).File(),
           TN_NO_ERROR, true});
      aRows.push_back({aName + "pixels",
                       Explicit().Sequence(kIcon).Item(14).Stated(kPixels, "OB", 2 + anExcess, "CT").Raw(aTail).File(),
                       TN_END_OF_FILE});
   }
   CheckRows(aRows);
}

// At the limit a dataset can also be copied, compared, printed and taken down.
TEST_F(HostileFiles, DepthHasALimit)
{
   for (const Encoding anEncoding : kNative)
   {
      for (const bool isDefined : {false, true})
      {
         DICOMDataObject anObject;
         const LoadOutcome anOutcome = LoadFromMemory(Nested(anEncoding, 256, isDefined), anObject);
         EXPECT_FALSE(anOutcome.IsTold()) << anOutcome;
         const DICOMDataObject aCopy(anObject);
         EXPECT_TRUE(aCopy.ValueEquals(anObject));
         std::ostringstream anOutput;
         DICOMObjectDumper aDumper;
         aDumper.SetStream(anOutput);
         aDumper.Dump(aCopy);
         EXPECT_NE(anOutput.str(), "");
         for (const unsigned int aDepth : {257u, 100000u})
         {
            DICOMDataObject aPart;
            EXPECT_EQ(LoadFromMemory(Nested(anEncoding, aDepth, isDefined), aPart).itsCode, TN_INVALID_ELEMENT_HEADER)
                << aDepth;
         }
      }
   }
}

// Were any of this quadratic, it would not end within minutes.
TEST_F(HostileFiles, ManySmallThingsTakeLittleTimeAndMemory)
{
   constexpr UINT32 kMany = kIsSanitized ? 50000 : 1000000;
   constexpr UINT32 kSome = 20000;
   constexpr std::size_t kBytesAByte = 40;
   const std::string anEmpty = Explicit().Element(kModality, "CS", "").Bytes();
   const std::string aCreator = Explicit().Element(0x00110010, "LO", "AB").Bytes();
   const std::string aSequence = Explicit().Sequence(kInstances, 0).Bytes();
   const std::string aFilledSequence = Explicit().Sequence(kInstances, 8).Item(0).Bytes();
   const std::string anOpening = Explicit().Sequence(kSeries).Bytes();
   DatasetBytes aDescending = Explicit();
   for (UINT32 i = kMany / 2; i != 0; --i)
   {
      aDescending.Element(0x00100000 + (i / 0xF000 << 17 | (i % 0xF000 + 1)), "LO", "");
   }
   struct
   {
      const char* itsName;
      std::string itsDataset;
      UINT32 itsEntries = 1;
   } const kCases[] = {
       {"empty items", anOpening + Repeated(Explicit().Item(0).Bytes(), kMany)},
       {"empty items in a length",
        Explicit().Sequence(kSeries, 8 * kMany / 10).Bytes() + Repeated(Explicit().Item(0).Bytes(), kMany / 10)},
       {"items with an empty element", anOpening + Repeated(Explicit().Item(8, anEmpty).Bytes(), kSome)},
       {"items with a private creator", anOpening + Repeated(Explicit().Item(10, aCreator).Bytes(), kSome)},
       {"items with an empty sequence", anOpening + Repeated(Explicit().Item(12, aSequence).Bytes(), kSome)},
       {"items in items", anOpening + Repeated(Explicit().Item(20, aFilledSequence).Bytes(), kSome)},
       {"empty fragments", Fragments().Bytes() + Repeated(Explicit().Item(0).Bytes(), kMany)},
       {"an element again and again", Repeated(anEmpty, kMany / 2)},
       {"elements in descending order", aDescending.Bytes(), kMany / 2},
   };
   for (const auto& aCase : kCases)
   {
      const std::string aFile = DatasetBytes(Encoding::Compressed).Raw(aCase.itsDataset).SequenceEnd().File();
      const auto anInUse = [] {
         const struct mallinfo2 anInformation = mallinfo2();
         return anInformation.uordblks + anInformation.hblkhd;
      };
      const std::size_t aBefore = anInUse();
      DICOMDataObject anObject;
      const LoadOutcome anOutcome = LoadFromMemory(aFile, anObject);
      EXPECT_FALSE(anOutcome.IsTold()) << aCase.itsName << ": " << anOutcome;
      EXPECT_EQ(anOutcome.itsEntries, aCase.itsEntries) << aCase.itsName;
      if (!kIsSanitized) // which has its own allocator
      {
         EXPECT_LE((anInUse() - aBefore) / aFile.size(), kBytesAByte) << aCase.itsName;
      }
   }
}

TEST_F(HostileFiles, DelimitersItemsAndUndefinedLengths)
{
   const std::string aName = Explicit().Element(kName, "PN", "A^B ").Bytes();
   const DatasetBytes anItem = DatasetBytes(Encoding::Implicit).Item().Element(kModality, "", "CT").ItemEnd();
   const std::string anExplicitItem = Explicit().Item().Element(kModality, "CS", "CT").ItemEnd().Bytes();
   const auto aSequence = [] { return Explicit().Sequence(kSeries); };
   const auto aUN = [](UINT32 theLength) { return Explicit().Stated(kUnknown, "UN", theLength); };
   const auto anEnd = [](UINT32 theTag, UINT32 theLength) { return Explicit().Stated(theTag, "", theLength).Bytes(); };
   CheckRows({
       {"an item closed by the sequence delimiter, and more", aSequence().Item().SequenceEnd().Raw(aName).File(),
        TN_INVALID_DELIMITER},
       {"a sequence closed by an item delimiter", aSequence().ItemEnd().Raw(aName).File(), TN_NO_ERROR},
       {"delimiters with a length",
        aSequence()
            .Item()
            .Raw(anEnd(DatasetBytes::kItemEnd, 4) + anEnd(DatasetBytes::kSequenceEnd, kUndefined) + aName)
            .File(),
        TN_NO_ERROR},
       {"a sequence for an item", aSequence().Sequence(kInstances).SequenceEnd().File(), TN_INVALID_DELIMITER},
       {"an item in the other byte order",
        aSequence().Raw(DatasetBytes(Encoding::BigEndian).Item(0).Bytes()).SequenceEnd().File(), TN_INVALID_DELIMITER},
       {"items in items", aSequence().Item().Item().File(), TN_PARSE_TO_OBJECT_FAILED},
       {"an unknown delimiter in a sequence", aSequence().Raw(anEnd(0xFFFEE001, 0)).File(), TN_INVALID_DELIMITER},
       {"an unknown delimiter in an item", aSequence().Item().Raw(anEnd(0xFFFE0000, 0)).File(), TN_INVALID_DELIMITER},
       {"LO of 65535", Explicit().Stated(kUnknown, "LO", 0xFFFF).SequenceEnd().File(), TN_END_OF_FILE},
       {"UN with implicit items", aUN(static_cast<UINT32>(anItem.Size())).Raw(anItem.Bytes()).File(), TN_NO_ERROR},
       {"UN with explicit items", aUN(kUndefined).Raw(anExplicitItem).SequenceEnd().File(), TN_END_OF_FILE},
       {"UN cut behind an item", aUN(kUndefined).Raw(anItem.Bytes()).File(), TN_NO_ERROR, true},
       {"fragments and junk", Fragments().Item(0).Item(4, "ABCD").SequenceEnd().Raw("12345").File(), TN_END_OF_FILE},
       {"no fragments at all", Fragments().SequenceEnd().File(), TN_NO_ERROR},
   });
}

TEST_F(HostileFiles, RaggedValuesAreKeptAndNeverReadPast)
{
   struct
   {
      const char* itsType;
      unsigned int itsLength;
   } const kCases[] = {{"CS", 3}, {"OB", 3}, {"UN", 5}, {"UL", 6}, {"UL", 3}, {"US", 3}, {"US", 1},
                       {"FD", 7}, {"FL", 3}, {"AT", 6}, {"AT", 3}, {"SL", 1}, {"SS", 5}};
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(std::string(aCase.itsType) + " of " + std::to_string(aCase.itsLength));
      DICOMDataObject anObject;
      const LoadOutcome anOutcome =
          LoadFromMemory(Explicit()
                             .Element(kUnknown, aCase.itsType, std::string(aCase.itsLength, '\1'))
                             .Element(kName, "PN", "A ")
                             .File(),
                         anObject);
      EXPECT_FALSE(anOutcome.IsTold()) << anOutcome;
      EXPECT_EQ(anOutcome.itsEntries, 2u);
      ASSERT_NE(anObject.GetVR(0x0008, 0x1FFE), nullptr);
      EXPECT_EQ(anObject.GetVR(0x0008, 0x1FFE)->GetLength(), aCase.itsLength);
      UINT32 aLong;
      DOUBLE aDouble;
      RWCString aText;
      anObject.GetUINT32(0x0008, 0x1FFE, aLong);
      anObject.GetDOUBLE(0x0008, 0x1FFE, aDouble);
      anObject.GetString(0x0008, 0x1FFE, aText);
      std::ostringstream anOutput;
      DICOMObjectDumper aDumper;
      aDumper.SetStream(anOutput);
      aDumper.Dump(anObject);
      EXPECT_NE(anOutput.str().find("(0008, 1ffe)"), std::string::npos) << anOutput.str();
   }
}

DatasetBytes SmallDataset(Encoding theEncoding)
{
   const std::string aModality = DatasetBytes(theEncoding).Element(kModality, "CS", "CT").Bytes();
   const auto aLength = static_cast<UINT32>(aModality.size());
   return DatasetBytes(theEncoding)
       .Whole()
       .Element(0x00080005, "CS", "ISO_IR 100")
       .Whole()
       .Sequence(kSeries) // undefined: an item of each kind
       .Item()
       .Raw(aModality)
       .ItemEnd()
       .Item(aLength, aModality)
       .SequenceEnd()
       .Whole()
       .Sequence(kInstances, 3 * 8 + 2 * aLength) // defined: an item of each kind
       .Item(aLength, aModality)
       .Item()
       .Raw(aModality)
       .ItemEnd()
       .Whole()
       .Element(kName, "PN", "A^B ")
       .Whole()
       .Element(0x00100020, "LO", "")
       .Whole();
}

void CheckCuts(const DatasetBytes& theDataset)
{
   const std::string aFile = theDataset.File();
   const std::size_t aHeader = aFile.size() - theDataset.Size();
   ASSERT_FALSE(Load(aFile).IsTold());
   for (std::size_t aSize = 0; aSize < aFile.size(); ++aSize)
   {
      const LoadOutcome anOutcome = Load(aFile.substr(0, aSize));
      const auto& aWhole = theDataset.WholeAt();
      const bool isWhole = aSize >= aHeader && std::count(aWhole.begin(), aWhole.end(), aSize - aHeader) != 0;
      EXPECT_EQ(anOutcome.IsTold() || anOutcome.IsNothing(), !isWhole)
          << aSize << " bytes (dataset from " << aHeader << "): " << anOutcome;
   }
}
TEST_F(HostileFiles, AFileCutAnywhereIsTold)
{
   for (const Encoding anEncoding : kNative)
   {
      SCOPED_TRACE(TransferSyntaxOf(anEncoding));
      CheckCuts(
          SmallDataset(anEncoding).Stated(kPixels, anEncoding == Encoding::Implicit ? "" : "OW", 6, "ABCDEF").Whole());
   }
   CheckCuts(SmallDataset(Encoding::Compressed)
                 .Stated(kPixels, "OB", kUndefined)
                 .Item(4, std::string(4, '\0'))
                 .Item(6, "ABCDEF")
                 .Item(0)
                 .SequenceEnd()
                 .Whole());
}
} // namespace

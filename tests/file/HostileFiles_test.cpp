// Files that are broken or meant to break their reader. Each ends in a StreamIOException, or loads as far as it goes and
// says that it was cut; none takes memory for a length that it only states, or recurses as deep as it likes.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/DatasetBytes.h"
#include "support/DefaultDictionary.h"
#include "support/PiecewiseInputStream.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/file/Part10InputStreamInputStream.h"
#include "talvenor/file/Part10MemoryInputStream.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"

namespace
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
constexpr bool kIsSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsSanitized = false;
#endif

constexpr UINT32 kUndefined = DatasetBytes::kUndefined;
constexpr UINT32 kModality = 0x00080060;  // CS
constexpr UINT32 kSeries = 0x00081115;    // SQ
constexpr UINT32 kInstances = 0x00081199; // SQ
constexpr UINT32 kName = 0x00100010;      // PN
constexpr UINT32 kIcon = 0x00880200;      // SQ
constexpr UINT32 kPixels = 0x7FE00010;
constexpr UINT32 kUnknown = 0x00081FFE; // in no dictionary

constexpr Encoding kNative[] = {Encoding::Implicit, Encoding::Explicit, Encoding::BigEndian};

// What became of a file.
struct Outcome
{
   bool operator==(const Outcome&) const = default;

   TNResultCode itsCode = TN_NO_ERROR;
   InputTransferSyntax::LevelEnd itsEnd = InputTransferSyntax::NotEnded;
   bool itsIsCut = false;
   bool itsHasHeader = false;
   UINT32 itsEntries = 0;
   RWCString itsPath; // of the fault
   RWCString itsText;

   bool IsTold() const { return itsCode != TN_NO_ERROR || itsIsCut; }
   bool IsNothing() const { return !itsHasHeader; } // of a file that should have meta information: not one of ours
};

std::ostream& operator<<(std::ostream& theText, const Outcome& theOutcome)
{
   return theText << "code " << theOutcome.itsCode << ", end " << theOutcome.itsEnd << ", cut " << theOutcome.itsIsCut
                  << ", entries " << theOutcome.itsEntries << ", path \"" << theOutcome.itsPath << "\", "
                  << theOutcome.itsText;
}

template <class MakeStream>
Outcome LoadFrom(MakeStream theMakeStream, DICOMDataObject& theObject)
{
   Outcome anOutcome;
   try
   {
      const std::unique_ptr<Part10InputStream> aStream = theMakeStream();
      anOutcome.itsHasHeader = aStream->GetPart10Header() != nullptr;
      DICOMObjectLoader aLoader(theObject, *aStream);
      try
      {
         aLoader.Load();
      }
      catch (const StreamIOException& anException)
      {
         anOutcome.itsCode = anException.GetResultCode();
         anOutcome.itsText = anException.why();
      }
      anOutcome.itsEnd = aLoader.GetDecoder().GetLevelEnd();
      anOutcome.itsIsCut = aLoader.GetDecoder().IsCut();
      anOutcome.itsPath = aLoader.GetDecoder().GetFaultPath();
   }
   catch (const StreamIOException& anException)
   {
      anOutcome.itsCode = anException.GetResultCode();
      anOutcome.itsText = anException.why();
   }
   anOutcome.itsEntries = theObject.Entries();
   return anOutcome;
}

Outcome LoadFromMemory(const std::string& theFile, DICOMDataObject& theObject)
{
   // A copy of exactly that size, so that a sanitizer sees a read behind its end.
   const std::vector<unsigned char> aCopy(theFile.begin(), theFile.end());
   const unsigned char aNoByte = 0;
   const unsigned char* const aBytes = aCopy.empty() ? &aNoByte : aCopy.data();
   return LoadFrom(
       [&] { return std::make_unique<Part10MemoryInputStream>(static_cast<UINT32>(aCopy.size()), aBytes, 1, 1); },
       theObject);
}

Outcome LoadFromMemory(const std::string& theFile)
{
   DICOMDataObject anObject;
   return LoadFromMemory(theFile, anObject);
}

// From memory, and once more as from a network: both must end the same way.
Outcome Load(const std::string& theFile)
{
   const Outcome anOutcome = LoadFromMemory(theFile);
   if (theFile.size() >= 144) // a stream of unknown length needs a whole header
   {
      PiecewiseInputStream aSource({theFile.begin(), theFile.end()}, 7);
      DICOMDataObject anObject;
      const Outcome aSecond = LoadFrom(
          [&] {
             auto aStream = std::make_unique<Part10InputStreamInputStream>();
             aStream->Open(aSource, 1, 1);
             return aStream;
          },
          anObject);
      EXPECT_EQ(aSecond, anOutcome) << "from a stream of pieces";
   }
   return anOutcome;
}

struct Row
{
   const char* itsName;
   std::string itsFile;
   TNResultCode itsCode;
   bool itsIsCut = false;
};

void CheckRows(const std::vector<Row>& theRows)
{
   for (const Row& aRow : theRows)
   {
      SCOPED_TRACE(aRow.itsName);
      const Outcome anOutcome = Load(aRow.itsFile);
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

// The content, theDepth times in an item of a sequence.
std::string Nested(Encoding theEncoding, unsigned int theDepth, bool isDefined, const std::string& theContent)
{
   if (!isDefined)
   {
      const std::string anOpening = DatasetBytes(theEncoding).Sequence(kSeries).Item().Bytes();
      const std::string aClosing = DatasetBytes(theEncoding).ItemEnd().SequenceEnd().Bytes();
      std::string aResult;
      for (unsigned int i = 0; i < theDepth; ++i)
      {
         aResult += anOpening;
      }
      aResult += theContent;
      for (unsigned int i = 0; i < theDepth; ++i)
      {
         aResult += aClosing;
      }
      return aResult;
   }
   std::vector<std::string> anOpenings;
   std::size_t aLength = theContent.size();
   for (unsigned int i = 0; i < theDepth; ++i)
   {
      DatasetBytes anOpening(theEncoding);
      anOpening.Sequence(kSeries, static_cast<UINT32>(aLength + 8)).Item(static_cast<UINT32>(aLength));
      aLength += anOpening.Size();
      anOpenings.push_back(anOpening.Bytes());
   }
   std::string aResult;
   std::for_each(anOpenings.rbegin(), anOpenings.rend(), [&](const std::string& theText) { aResult += theText; });
   return aResult + theContent;
}

std::string FileOf(Encoding theEncoding, const std::string& theDataset)
{
   return DatasetBytes(theEncoding).Raw(theDataset).File();
}
} // namespace

// --- the file and its meta information ------------------------------------------------------------------------------

TEST_F(HostileFiles, ShortFilesAreNoFiles)
{
   const std::string aFile = Explicit().Element(kModality, "CS", "CT").File();
   for (const std::size_t aSize : {0, 1, 7, 8, 9, 127, 128, 131, 132, 133, 143, 144})
   {
      const Outcome anOutcome = Load(aFile.substr(0, aSize));
      EXPECT_TRUE(anOutcome.IsTold() || anOutcome.IsNothing()) << aSize << " bytes: " << anOutcome;
   }
}

TEST_F(HostileFiles, TheGroupLengthOfTheMetaInformationIsAHint)
{
   const std::string aMeta = Explicit().Element(0x00020010, "UI", "1.2.840.10008.1.2.1 ").Bytes();
   const std::string aDataset = Explicit().Element(kModality, "CS", "CT").Bytes();
   for (const UINT32 aLength : {0u, 28u, 40u, 68u, 0x7FFFFFFFu, kUndefined})
   {
      const Outcome anOutcome = Load(DatasetBytes::Header(aMeta, aLength) + aDataset);
      EXPECT_EQ(anOutcome.itsCode, TN_NO_ERROR) << aLength << ": " << anOutcome;
      EXPECT_EQ(anOutcome.itsEntries, 1u) << aLength;
   }
}

TEST_F(HostileFiles, MetaInformation)
{
   const std::string aSyntax = Explicit().Element(0x00020010, "UI", "1.2.840.10008.1.2.1 ").Bytes();
   const std::string aDataset = Explicit().Element(kModality, "CS", "CT").Bytes();
   const std::string anImplicit =
       DatasetBytes(Encoding::Implicit).Element(0x00020000, "UL", std::string(4, '\0')).Bytes() +
       DatasetBytes(Encoding::Implicit).Element(0x00020010, "UI", "1.2.840.10008.1.2.1 ").Bytes();
   const std::string aBigEndian = DatasetBytes(Encoding::BigEndian)
                                      .Element(0x00020000, "UL", std::string(4, '\0'))
                                      .Element(0x00020010, "UI", "1.2.840.10008.1.2.2 ")
                                      .Bytes();
   const std::string aStart = std::string(128, '\0') + "DICM";
   const auto aFileIn = [&](const std::string& theUID) { return DatasetBytes::Header(theUID) + aDataset; };
   CheckRows({
       {"last element ends behind the file",
        DatasetBytes::Header(aSyntax + Explicit().Stated(0x00020016, "AE", 0xFFFE, "A").Bytes(), 0), TN_END_OF_FILE},
       {"unknown VR", DatasetBytes::Header(aSyntax + Explicit().Stated(0x00020016, "ZZ", 0xFFFF, "AB").Bytes(), 0),
        TN_END_OF_FILE},
       {"no VR", DatasetBytes::Header(aSyntax + std::string("\2\0\x16\0\0\0\xFF\xFF\xFF\xFF\xFF\x7F", 12), 0),
        TN_END_OF_FILE},
       {"implicit VR", aStart + anImplicit + aDataset, TN_NO_ERROR},
       {"big endian", aStart + aBigEndian + std::string(2000, '\0'), TN_PARSE_TO_OBJECT_FAILED},
       {"big endian, short", aStart + aBigEndian, TN_END_OF_FILE},
       {"no group length", aStart + aSyntax + aDataset, TN_PARSE_TO_OBJECT_FAILED},
       {"no transfer syntax", DatasetBytes::Header(Explicit().Element(0x00020016, "AE", "A ").Bytes(), 10) + aDataset,
        TN_PARSE_TO_OBJECT_FAILED},
       {"empty transfer syntax", aFileIn(""), TN_TRANSFER_SYNTAX_UNSUPPORTED},
       {"unknown transfer syntax", aFileIn("1.2.3"), TN_TRANSFER_SYNTAX_UNSUPPORTED},
       {"deflated", aFileIn("1.2.840.10008.1.2.1.99"), TN_TRANSFER_SYNTAX_UNSUPPORTED},
       {"NUL within the transfer syntax", aFileIn(std::string("1.2.840\0.10008", 14)), TN_TRANSFER_SYNTAX_UNSUPPORTED},
       {"300 characters of transfer syntax", aFileIn(std::string(300, '1')), TN_TRANSFER_SYNTAX_UNSUPPORTED},
       {"group 0003 behind the group length",
        DatasetBytes::Header(Explicit().Element(0x00030010, "UI", "1.2 ").Bytes(), 0), TN_PARSE_TO_OBJECT_FAILED},
       {"a sequence that never ends", DatasetBytes::Header(aSyntax + Explicit().Sequence(0x00020020).Item().Bytes(), 0),
        TN_NO_ERROR},
       {"nothing behind it", DatasetBytes::Header(aSyntax, 28), TN_NO_ERROR},
   });
}

TEST_F(HostileFiles, WhatIsNoDataset)
{
   const std::string aFile = Explicit().Element(kModality, "CS", "CT").File();
   const std::vector<Row> kRows = {
       // Nothing marks the end of a dataset: the second preamble is one of untyped empty elements of group 0000.
       {"two files glued", aFile + aFile, TN_NO_ERROR},
       {"4 KiB of FF", std::string(4096, '\xFF'), TN_INVALID_DELIMITER},
       {"a web page", "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n" + std::string(200, '<'), TN_END_OF_FILE},
   };
   CheckRows(kRows);
   EXPECT_EQ(Load(std::string(4096, '\0')).itsEntries, 0u) << "4 KiB of zeros";
}

TEST_F(HostileFiles, PreamblesOfOtherFormatsAreAccepted)
{
   for (const char* const aMagic : {"MZ",
                                    "\x7F"
                                    "ELF",
                                    "II*"})
   {
      std::string aFile = Explicit().Element(kModality, "CS", "CT").File();
      aFile.replace(0, std::char_traits<char>::length(aMagic), aMagic);
      EXPECT_EQ(Load(aFile).itsCode, TN_NO_ERROR) << aMagic;
   }
}

// --- lengths --------------------------------------------------------------------------------------------------------

namespace
{
// Every length that lies, with 2 bytes of value.
std::vector<Row> LyingLengths()
{
   std::vector<Row> aRows;
   for (const char* const aType : {"AE", "AS", "AT", "CS", "DA", "DS", "DT", "FD", "FL", "IS", "LO", "LT", "PN",
                                   "SH", "SL", "SS", "ST", "TM", "UI", "UL", "US", "OD", "OL", "UC", "UR", "XX"})
   {
      aRows.push_back({aType, Explicit().Stated(kModality, aType, 0xFFFE, "AB").File(), TN_END_OF_FILE});
   }
   for (const char* const aType : {"OB", "OF", "OW", "UT", "UN", "SQ"})
   {
      aRows.push_back({aType, Explicit().Stated(kUnknown, aType, 0xFFFFFFFE, "AB").File(), TN_END_OF_FILE});
   }
   for (const UINT32 aLength : {3u, 4u, 0xFFFFu, 0x00FFFFFFu, 0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0x80000001u,
                                0xFFFFFFF0u, 0xFFFFFFFCu, 0xFFFFFFFDu, 0xFFFFFFFEu})
   {
      aRows.push_back({"OB", Explicit().Stated(kUnknown, "OB", aLength, "AB").File(), TN_END_OF_FILE});
      aRows.push_back({"pixel data of bytes", Explicit().Stated(kPixels, "OB", aLength, "AB").File(), TN_END_OF_FILE});
      aRows.push_back(
          {"implicit", DatasetBytes(Encoding::Implicit).Stated(kModality, "", aLength, "AB").File(), TN_END_OF_FILE});
   }
   aRows.push_back({"big endian", DatasetBytes(Encoding::BigEndian).Stated(kUnknown, "OB", 0x7FFFFFFE, "AB").File(),
                    TN_END_OF_FILE});
   for (const UINT32 aLength : {0x40000000u, 0x80000000u, 0xFFFFFFFEu, kUndefined})
   {
      aRows.push_back({"offset table", Fragments().Item(aLength, "AB").File(), TN_END_OF_FILE});
      aRows.push_back({"fragment", Fragments().Item(0).Item(aLength, "AB").File(), TN_END_OF_FILE});
   }
   return aRows;
}
} // namespace

TEST_F(HostileFiles, ALengthThatLiesIsAnEndOfFile)
{
   CheckRows(LyingLengths());
}

TEST_F(HostileFiles, ALengthThatLiesTakesNoMemory)
{
   if (kIsSanitized)
   {
      GTEST_SKIP() << "a sanitizer needs more address space than the limit leaves";
   }
   const std::vector<Row> aRows = LyingLengths();
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
            if (LoadFromMemory(aRows[i].itsFile).itsCode != TN_END_OF_FILE)
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

TEST_F(HostileFiles, ALengthThatLiesIsFoundInSequences)
{
   for (const Encoding anEncoding : kNative)
   {
      for (const unsigned int aDepth : {1u, 2u, 16u})
      {
         RWCString aPath;
         for (unsigned int i = 0; i < aDepth; ++i)
         {
            aPath += "/0008,1115[0]";
         }
         for (const bool isDefined : {false, true})
         {
            const std::string aLiar = DatasetBytes(anEncoding).Stated(kUnknown, "OB", 0x7FFFFFFE, "AB").Bytes();
            const Outcome anOutcome = Load(FileOf(anEncoding, Nested(anEncoding, aDepth, isDefined, aLiar)));
            EXPECT_EQ(anOutcome.itsCode, TN_END_OF_FILE) << aDepth << " deep: " << anOutcome;
            EXPECT_EQ(anOutcome.itsPath, aPath);
         }
      }
   }
}

TEST_F(HostileFiles, NothingReachesBeyondWhatIsAroundIt)
{
   const std::string aModality = Explicit().Element(kModality, "CS", "CT").Bytes(); // 10 bytes
   const std::string aTail = Explicit().Element(kName, "LO", std::string(5000, 'x')).Bytes();
   std::vector<Row> aRows = {
       {"an item whose end wraps around 32 bits", Explicit().Sequence(kSeries).Item(0xFFFFFFF8, aModality).File(),
        TN_NO_ERROR, true},
       {"the same in a sequence of defined length",
        Explicit().Sequence(kSeries, 18).Item(0xFFFFFFF8, aModality).Raw(aTail).File(), TN_NO_ERROR, true},
       {"spare bytes at the end of a sequence",
        Explicit().Sequence(kSeries, 25).Item(10, aModality).Raw("1234567").Raw(aTail).File(), TN_END_OF_FILE},
   };
   for (const UINT32 anExcess : {1u, 2u, 4000u})
   {
      aRows.push_back({"an item longer than its sequence",
                       Explicit().Sequence(kSeries, 18).Item(10 + anExcess, aModality).Raw(aTail).File(), TN_NO_ERROR,
                       true});
      aRows.push_back(
          {"a sequence longer than its item",
           Explicit().Sequence(kSeries).Item(12).Sequence(kInstances, anExcess).SequenceEnd().Raw(aTail).File(),
           TN_NO_ERROR, true});
      aRows.push_back(
          {"a value longer than its item",
           Explicit().Sequence(kSeries).Item(10).Stated(kModality, "LO", 2 + anExcess, "CT").Raw(aTail).File(),
           TN_END_OF_FILE});
      aRows.push_back({"pixel data longer than its item",
                       Explicit().Sequence(kIcon).Item(14).Stated(kPixels, "OB", 2 + anExcess, "CT").Raw(aTail).File(),
                       TN_END_OF_FILE});
   }
   for (UINT32 aLength = 1; aLength < 8; ++aLength)
   {
      aRows.push_back({"a sequence too short for an item", Explicit().Sequence(kSeries, aLength).Raw(aTail).File(),
                       TN_END_OF_FILE});
   }
   CheckRows(aRows);
}

// --- depth and number -----------------------------------------------------------------------------------------------

TEST_F(HostileFiles, DepthHasALimit)
{
   class NullBuffer : public std::streambuf
   {
      int_type overflow(int_type theCharacter) override { return traits_type::not_eof(theCharacter); }
   };
   for (const Encoding anEncoding : kNative)
   {
      for (const bool isDefined : {false, true})
      {
         for (const unsigned int aDepth : {100u, 256u})
         {
            DICOMDataObject anObject;
            const Outcome anOutcome =
                LoadFromMemory(FileOf(anEncoding, Nested(anEncoding, aDepth, isDefined, "")), anObject);
            EXPECT_EQ(anOutcome.itsCode, TN_NO_ERROR) << aDepth << ": " << anOutcome;
            EXPECT_FALSE(anOutcome.itsIsCut);
            const DICOMDataObject aCopy(anObject);
            EXPECT_TRUE(aCopy.ValueEquals(anObject));
            NullBuffer aBuffer;
            std::ostream anOutput(&aBuffer);
            DICOMObjectDumper aDumper;
            aDumper.SetStream(anOutput);
            aDumper.Dump(aCopy);
         }
         for (const unsigned int aDepth : {257u, 1000u, 100000u})
         {
            const Outcome anOutcome = LoadFromMemory(FileOf(anEncoding, Nested(anEncoding, aDepth, isDefined, "")));
            EXPECT_EQ(anOutcome.itsCode, TN_INVALID_ELEMENT_HEADER) << aDepth << ": " << anOutcome;
         }
      }
   }
}

TEST_F(HostileFiles, DepthHasALimitWhereverSequencesCanStand)
{
   constexpr unsigned int kLevels = 100000;
   const std::string anImplicitLevel = DatasetBytes(Encoding::Implicit).Sequence(kUnknown).Item().Bytes();
   const std::string anExplicitLevel = Explicit().Stated(kUnknown, "UN", kUndefined).Item().Bytes();
   std::string anImplicit, anExplicit;
   for (unsigned int i = 0; i < kLevels; ++i)
   {
      anImplicit += anImplicitLevel;
      anExplicit += anExplicitLevel;
   }
   std::string anItems;
   for (unsigned int i = 0; i < kLevels; ++i)
   {
      anItems += Explicit().Item().Bytes();
   }
   struct
   {
      const char* itsName;
      std::string itsFile;
      TNResultCode itsCode;
   } const kCases[] = {
       {"UN with implicit VR in it", FileOf(Encoding::Explicit, anExplicitLevel + anImplicit),
        TN_INVALID_ELEMENT_HEADER},
       {"unknown in implicit VR", FileOf(Encoding::Implicit, anImplicit), TN_INVALID_ELEMENT_HEADER},
       {"explicit VR in UN is not implicit", FileOf(Encoding::Explicit, anExplicit), TN_END_OF_FILE},
       {"items in items without a sequence", FileOf(Encoding::Explicit, Explicit().Sequence(kSeries).Bytes() + anItems),
        TN_PARSE_TO_OBJECT_FAILED},
   };
   for (const auto& aCase : kCases)
   {
      const Outcome anOutcome = LoadFromMemory(aCase.itsFile);
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << aCase.itsName << ": " << anOutcome;
   }
}

// Were any of this quadratic, it would not end within minutes.
TEST_F(HostileFiles, ManyEmptyItems)
{
   constexpr UINT32 kCount = kIsSanitized ? 50000 : 1000000;
   for (const bool isDefined : {false, true})
   {
      const UINT32 aCount = isDefined ? kCount / 10 : kCount;
      DatasetBytes aDataset = Explicit().Sequence(kSeries, isDefined ? 8 * aCount : kUndefined);
      for (UINT32 i = 0; i < aCount; ++i)
      {
         aDataset.Item(0);
      }
      if (!isDefined)
      {
         aDataset.SequenceEnd();
      }
      DICOMDataObject anObject;
      const Outcome anOutcome = LoadFromMemory(aDataset.File(), anObject);
      EXPECT_FALSE(anOutcome.IsTold()) << anOutcome;
      ASSERT_NE(anObject.GetVR(0x0008, 0x1115), nullptr);
      EXPECT_EQ(anObject.GetVR(0x0008, 0x1115)->GetAsSequenceVR()->GetSequenceArray()->size(), aCount);
   }
}

TEST_F(HostileFiles, ManyEmptyFragments)
{
   constexpr UINT32 kCount = kIsSanitized ? 50000 : 1000000;
   DatasetBytes aDataset = Fragments();
   for (UINT32 i = 0; i < kCount; ++i)
   {
      aDataset.Item(0);
   }
   DICOMDataObject anObject;
   const Outcome anOutcome = LoadFromMemory(aDataset.SequenceEnd().File(), anObject);
   EXPECT_FALSE(anOutcome.IsTold()) << anOutcome;
   ASSERT_NE(anObject.GetVR(0x7FE0, 0x0010), nullptr);
   EncapsulatedPixelVR* const aPixels = anObject.GetVR(0x7FE0, 0x0010)->GetAsEncapsulatedPixelVR();
   EXPECT_EQ(aPixels->GetItemCount(), kCount);
   EXPECT_EQ(aPixels->GetFrameCount(), -1);
}

TEST_F(HostileFiles, ManyElementsInAnyOrder)
{
   constexpr UINT32 kCount = kIsSanitized ? 50000 : 500000;
   DatasetBytes aDescending = Explicit();
   DatasetBytes aSame = Explicit();
   for (UINT32 i = kCount; i != 0; --i)
   {
      aDescending.Element(0x00100000 + (i / 0xF000 << 17 | (i % 0xF000 + 1)), "LO", "");
      aSame.Element(kName, "PN", "");
   }
   EXPECT_EQ(LoadFromMemory(aDescending.File()).itsEntries, kCount);
   EXPECT_EQ(LoadFromMemory(aSame.File()).itsEntries, 1u);
}

TEST_F(HostileFiles, ManySmallThingsTakeLittleMemory)
{
   if (kIsSanitized)
   {
      GTEST_SKIP() << "a sanitizer has its own allocator";
   }
   constexpr UINT32 kCount = 20000;
   constexpr std::size_t kBytesAByte = 40;
   const std::string aCreator = Explicit().Element(0x00110010, "LO", "AB").Bytes();
   const std::string anEmpty = Explicit().Element(kModality, "CS", "").Bytes();
   const std::string aSequence = Explicit().Sequence(kInstances, 0).Bytes();
   const std::string aFilledSequence = Explicit().Sequence(kInstances, 8).Item(0).Bytes();
   struct
   {
      const char* itsName;
      std::string itsStart;
      std::string itsThing;
   } const kCases[] = {
       {"empty items", Explicit().Sequence(kSeries).Bytes(), Explicit().Item(0).Bytes()},
       {"items with an empty element", Explicit().Sequence(kSeries).Bytes(), Explicit().Item(8, anEmpty).Bytes()},
       {"items with a private creator", Explicit().Sequence(kSeries).Bytes(), Explicit().Item(10, aCreator).Bytes()},
       {"items with an empty sequence", Explicit().Sequence(kSeries).Bytes(), Explicit().Item(12, aSequence).Bytes()},
       {"items in items", Explicit().Sequence(kSeries).Bytes(), Explicit().Item(20, aFilledSequence).Bytes()},
       {"empty fragments", Fragments().Bytes(), Explicit().Item(0).Bytes()},
   };
   for (const auto& aCase : kCases)
   {
      std::string aDataset = aCase.itsStart;
      for (UINT32 i = 0; i < kCount; ++i)
      {
         aDataset += aCase.itsThing;
      }
      const std::string aFile = FileOf(Encoding::Compressed, aDataset + Explicit().SequenceEnd().Bytes());
      const auto anInUse = [] {
         const struct mallinfo2 anInformation = mallinfo2();
         return anInformation.uordblks + anInformation.hblkhd;
      };
      const std::size_t aBefore = anInUse();
      DICOMDataObject anObject;
      const Outcome anOutcome = LoadFromMemory(aFile, anObject);
      EXPECT_FALSE(anOutcome.IsTold()) << aCase.itsName << ": " << anOutcome;
      EXPECT_LE((anInUse() - aBefore) / aFile.size(), kBytesAByte) << aCase.itsName;
   }
}

TEST_F(HostileFiles, ManyValuesInOneElementCostNothingUntilTheyAreAskedFor)
{
   DICOMDataObject anObject;
   const std::string aFile = Explicit()
                                 .Element(kModality, "UT", std::string(1000000, '\\'))
                                 .Element(kName, "PN", std::string(30000, '^') + std::string(30000, '='))
                                 .Element(0x30060050, "DS", std::string(65534, '\\'))
                                 .File();
   EXPECT_FALSE(LoadFromMemory(aFile, anObject).IsTold());
   EXPECT_EQ(anObject.GetVR(0x3006, 0x0050)->GetLength(), 65534u);
}

// --- delimiters, items and types ------------------------------------------------------------------------------------

TEST_F(HostileFiles, ADelimiterAtTheTopEndsTheDataset)
{
   for (const Encoding anEncoding : kNative)
   {
      for (const UINT32 aDelimiter : {DatasetBytes::kItemEnd, DatasetBytes::kSequenceEnd})
      {
         for (const UINT32 aLength : {0u, 4u, 8u, kUndefined})
         {
            const Outcome anOutcome = Load(DatasetBytes(anEncoding)
                                               .Element(kModality, "CS", "CT")
                                               .Stated(aDelimiter, "", aLength)
                                               .Stated(aDelimiter, "", aLength)
                                               .Element(kName, "PN", "A^B ")
                                               .File());
            EXPECT_EQ(anOutcome.itsEnd, InputTransferSyntax::AtDelimiter) << anOutcome;
            EXPECT_EQ(anOutcome.itsCode, TN_NO_ERROR) << anOutcome;
            EXPECT_EQ(anOutcome.itsEntries, 1u);
         }
      }
   }
}

TEST_F(HostileFiles, DelimitersAndItemTags)
{
   const std::string aName = Explicit().Element(kName, "PN", "A^B ").Bytes();
   const auto aSequence = [] { return Explicit().Sequence(kSeries); };
   std::vector<Row> aRows = {
       {"no item delimiter", aSequence().Item().SequenceEnd().File(), TN_NO_ERROR, true},
       {"no sequence delimiter", aSequence().Item().ItemEnd().File(), TN_NO_ERROR, true},
       {"neither", aSequence().Item().Raw(aName).File(), TN_NO_ERROR, true},
       {"no item at all", aSequence().File(), TN_NO_ERROR, true},
       {"an item closed by the sequence delimiter, and more", aSequence().Item().SequenceEnd().Raw(aName).File(),
        TN_INVALID_DELIMITER},
       {"a sequence closed by an item delimiter", aSequence().ItemEnd().Raw(aName).File(), TN_NO_ERROR},
       {"delimiters with a length",
        aSequence()
            .Item()
            .Stated(DatasetBytes::kItemEnd, "", 4)
            .Stated(DatasetBytes::kSequenceEnd, "", kUndefined)
            .Raw(aName)
            .File(),
        TN_NO_ERROR},
       {"an element for an item", aSequence().Raw(aName).SequenceEnd().File(), TN_INVALID_DELIMITER},
       {"a sequence for an item", aSequence().Sequence(kInstances).SequenceEnd().File(), TN_INVALID_DELIMITER},
       {"an item in the other byte order",
        aSequence().Raw(DatasetBytes(Encoding::BigEndian).Item(0).Bytes()).SequenceEnd().File(), TN_INVALID_DELIMITER},
   };
   for (const UINT32 aTag : {0xFFFEE001u, 0xFFFE0000u, 0xFFFEE00Cu, 0xFFFEFFFFu})
   {
      aRows.push_back(
          {"an unknown tag of group FFFE in a sequence", aSequence().Stated(aTag, "", 0).File(), TN_INVALID_DELIMITER});
      aRows.push_back({"and in an item", aSequence().Item().Stated(aTag, "", 0).File(), TN_INVALID_DELIMITER});
      aRows.push_back({"and at the top", Explicit().Stated(aTag, "", 0).File(), TN_INVALID_DELIMITER});
   }
   CheckRows(aRows);
}

TEST_F(HostileFiles, UndefinedLengthIsForSequences)
{
   const DatasetBytes anItem = DatasetBytes(Encoding::Implicit).Item().Element(kModality, "", "CT").ItemEnd();
   const std::string anExplicitItem = Explicit().Item().Element(kModality, "CS", "CT").ItemEnd().Bytes();
   const auto aUN = [](UINT32 theLength) { return Explicit().Stated(kUnknown, "UN", theLength); };
   CheckRows({
       {"OB", Explicit().Stated(kUnknown, "OB", kUndefined).SequenceEnd().File(), TN_INVALID_ELEMENT_HEADER},
       {"OW", Explicit().Stated(kUnknown, "OW", kUndefined).SequenceEnd().File(), TN_INVALID_ELEMENT_HEADER},
       {"OF", Explicit().Stated(kUnknown, "OF", kUndefined).SequenceEnd().File(), TN_INVALID_ELEMENT_HEADER},
       {"UT", Explicit().Stated(kUnknown, "UT", kUndefined).SequenceEnd().File(), TN_INVALID_ELEMENT_HEADER},
       {"LO of 65535", Explicit().Stated(kUnknown, "LO", 0xFFFF).SequenceEnd().File(), TN_END_OF_FILE},
       {"implicit PN", DatasetBytes(Encoding::Implicit).Stated(kName, "", kUndefined).SequenceEnd().File(),
        TN_INVALID_ELEMENT_HEADER},
       {"UN of an attribute known as PN", Explicit().Stated(kName, "UN", kUndefined).SequenceEnd().File(),
        TN_INVALID_ELEMENT_HEADER},
       {"UN with implicit items", aUN(kUndefined).Raw(anItem.Bytes()).SequenceEnd().File(), TN_NO_ERROR},
       {"UN with implicit items, defined", aUN(static_cast<UINT32>(anItem.Size())).Raw(anItem.Bytes()).File(),
        TN_NO_ERROR},
       {"UN with explicit items", aUN(kUndefined).Raw(anExplicitItem).SequenceEnd().File(), TN_END_OF_FILE},
       {"UN cut behind an item", aUN(kUndefined).Raw(anItem.Bytes()).File(), TN_NO_ERROR, true},
       {"encapsulated, big endian", DatasetBytes(Encoding::BigEndian).Stated(kPixels, "OB", kUndefined).File(),
        TN_INVALID_ENCODING},
       {"encapsulated, implicit", DatasetBytes(Encoding::Implicit).Stated(kPixels, "", kUndefined).File(),
        TN_INVALID_ENCODING},
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
      const Outcome anOutcome = LoadFromMemory(Explicit()
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
   const std::string anOdd = Explicit().Element(kModality, "CS", "CTX").Bytes();
   EXPECT_FALSE(Load(Explicit().Sequence(kSeries, 19).Item(11, anOdd).Element(kName, "PN", "A ").File()).IsTold());
}

// --- fragments ------------------------------------------------------------------------------------------------------

TEST_F(HostileFiles, BrokenFragments)
{
   const std::string aName = Explicit().Element(kName, "PN", "A^B ").Bytes();
   const auto aStart = [] { return Fragments().Item(0).Item(4, "ABCD"); };
   const auto anIcon = [](UINT32 theLength) {
      return DatasetBytes(Encoding::Compressed).Sequence(kIcon).Item(theLength).Stated(kPixels, "OB", kUndefined);
   };
   CheckRows({
       {"no delimiter", aStart().File(), TN_INVALID_DELIMITER},
       {"cut in a fragment", Fragments().Item(0).Item(6, "ABCD").File(), TN_END_OF_FILE},
       {"cut in an item header", aStart().Raw("\xFE\xFF").File(), TN_INVALID_DELIMITER},
       {"an item delimiter", aStart().ItemEnd().SequenceEnd().File(), TN_INVALID_DELIMITER},
       {"an element", aStart().Raw(aName).SequenceEnd().File(), TN_INVALID_DELIMITER},
       {"FFFE,E001", aStart().Stated(0xFFFEE001, "", 0).SequenceEnd().File(), TN_INVALID_DELIMITER},
       {"a delimiter with a length", aStart().Stated(DatasetBytes::kSequenceEnd, "", 4).File(), TN_INVALID_DELIMITER},
       {"junk behind", aStart().SequenceEnd().Raw("12345").File(), TN_END_OF_FILE},
       {"nothing", Fragments().SequenceEnd().File(), TN_NO_ERROR},
       {"only an empty table", Fragments().Item(0).SequenceEnd().File(), TN_NO_ERROR},
       {"an empty fragment", Fragments().Item(0).Item(0).SequenceEnd().File(), TN_NO_ERROR},
       {"an odd fragment", Fragments().Item(0).Item(3, "ABC").SequenceEnd().File(), TN_NO_ERROR},
       {"an item ends in a fragment", anIcon(22).Item(0).Item(4, "ABCD").SequenceEnd().Raw(aName).File(),
        TN_INVALID_DELIMITER},
       {"an item ends in the fragment's bytes", anIcon(30).Item(0).Item(4, "ABCD").SequenceEnd().Raw(aName).File(),
        TN_END_OF_FILE},
       {"an item ends behind the fragments", anIcon(32).Item(0).Item(4, "ABCD").SequenceEnd().Raw(aName).File(),
        TN_INVALID_DELIMITER},
   });
}

// --- truncation -----------------------------------------------------------------------------------------------------

namespace
{
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
      const Outcome anOutcome = Load(aFile.substr(0, aSize));
      const auto& aWhole = theDataset.WholeAt();
      const bool isWhole = aSize >= aHeader && std::count(aWhole.begin(), aWhole.end(), aSize - aHeader) != 0;
      EXPECT_EQ(anOutcome.IsTold() || anOutcome.IsNothing(), !isWhole)
          << aSize << " bytes (dataset from " << aHeader << "): " << anOutcome;
   }
}
} // namespace

TEST_F(HostileFiles, AFileCutAnywhereIsTold)
{
   for (const Encoding anEncoding : kNative)
   {
      SCOPED_TRACE(TransferSyntaxOf(anEncoding));
      CheckCuts(
          SmallDataset(anEncoding).Stated(kPixels, anEncoding == Encoding::Implicit ? "" : "OW", 6, "ABCDEF").Whole());
   }
}

TEST_F(HostileFiles, ACompressedFileCutAnywhereIsTold)
{
   CheckCuts(SmallDataset(Encoding::Compressed)
                 .Stated(kPixels, "OB", kUndefined)
                 .Item(4, std::string(4, '\0'))
                 .Item(6, "ABCDEF")
                 .Item(0)
                 .SequenceEnd()
                 .Whole());
}

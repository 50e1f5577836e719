// What the walk finds in datasets that are whole, and in those that are not.
#include "apps/tn/files/DatasetWalk.h"

#include <set>

#include <gtest/gtest.h>

#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/FileWindow.h"
#include "support/FileBytes.h"
#include "support/TemporaryDirectory.h"

namespace
{
const DatasetSyntax kNative = SyntaxOf("1.2.840.10008.1.2.1");
const DatasetSyntax kImplicit = SyntaxOf("1.2.840.10008.1.2");
const DatasetSyntax kCompressed = SyntaxOf("1.2.840.10008.1.2.4.50");

const std::string kClass = ShortElement(Bytes("\x08\x00\x16\x00"), "UI", Bytes("1.2.3\0"));
const std::string kInstance = ShortElement(Bytes("\x08\x00\x18\x00"), "UI", "1.22.3");
const std::string kItem = Bytes("\xFE\xFF\x00\xE0\xFF\xFF\xFF\xFF");
const std::string kItemEnd = Bytes("\xFE\xFF\x0D\xE0\0\0\0\0");
const std::string kSequenceEnd = Bytes("\xFE\xFF\xDD\xE0\0\0\0\0");
const std::string kSequence = Bytes("\x08\x00\x15\x11SQ\0\0\xFF\xFF\xFF\xFF");
const std::string kUnknown = Bytes("\x09\x00\x01\x10UN\0\0\xFF\xFF\xFF\xFF");
const std::string kDefinedItem = Bytes("\xFE\xFF\x00\xE0\x02\0\0\0ab");
const std::string kPixels = Bytes("\xE0\x7F\x10\x00OW\0\0\x04\0\0\0abcd");
const std::string kFragments =
    Bytes("\xE0\x7F\x10\x00OB\0\0\xFF\xFF\xFF\xFF\xFE\xFF\x00\xE0\0\0\0\0") + kDefinedItem + kSequenceEnd;
const std::string kLongText = Bytes("\x08\x00\x19\x01UC\0\0\x02\0\0\0ab"); // a VR of later editions

struct Result
{
   std::string itsFault; // empty: whole
   UINT64 itsEnd = 0;
   bool itsIsIrregular = false;
   RWCString itsInstance;
};

Result Walk(const std::string& theBytes, const DatasetSyntax& theSyntax)
{
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("dataset"), theBytes);
   const PlainFile aFile(aFolder.File("dataset"));
   FileWindow aWindow(aFile);
   DatasetWalk aWalk(aWindow, 0, theSyntax);
   try
   {
      aWalk.Run();
   }
   catch (const IncompleteDataset& anError)
   {
      return {anError.what(), 0, false, ""};
   }
   return {"", aWalk.GetEnd(), aWalk.IsIrregular(), aWalk.GetSOPInstanceUID()};
}

// A cut shows at every byte but between two elements of the top level.
TEST(DatasetWalk, FindsEveryCut)
{
   const std::string kNested = kSequence + kItem + kUnknown + kItem + Bytes("\x09\x00\x02\x10\x02\0\0\0xy") + kItemEnd +
                               kSequenceEnd + kItemEnd + kDefinedItem + kSequenceEnd;
   const std::vector<std::string> anElements = {kClass, kInstance, kLongText, kNested, kFragments};
   std::string aDataset;
   std::set<std::size_t> aBoundaries = {0};
   for (const std::string& anElement : anElements)
   {
      aDataset += anElement;
      aBoundaries.insert(aDataset.size());
   }
   for (std::size_t i = 0; i <= aDataset.size(); ++i)
   {
      const Result aResult = Walk(aDataset.substr(0, i), kCompressed);
      EXPECT_EQ(aResult.itsFault.empty(), aBoundaries.contains(i)) << i << ": " << aResult.itsFault;
   }
   EXPECT_EQ(Walk(aDataset, kCompressed).itsInstance, "1.22.3");
}

TEST(DatasetWalk, TellsWhatIsWrong)
{
   std::string aDeep;
   for (int i = 0; i < 200; ++i)
   {
      aDeep += kSequence + kItem;
   }
   const struct
   {
      const char* itsName;
      std::string itsBytes;
      DatasetSyntax itsSyntax;
      const char* itsFault; // the beginning; empty: none
      bool itsIsIrregular;
      std::size_t itsCutOff; // bytes behind the dataset
   } kCases[] = {
       {"native pixels", kClass + kPixels, kNative, "", false, 0},
       {"encapsulated in native", kFragments, kNative, "(7FE0,0010) is encapsulated", false, 0},
       {"length beyond the file", Bytes("\x08\0\x70\0LO\x10\0abcd"), kNative,
        "the file ends inside (0008,0070), of whose 16 bytes 4 are there (byte 8)", false, 0},
       {"the longest length",
        Bytes("\x08\0\x70\0\xFE\xFF\xFF\xFF"
              "ab"),
        kImplicit, "the file ends inside", false, 0},
       {"place", kSequence + kItem + Bytes("\x08\0\x70\0LO\x10\0ab"), kNative,
        "the file ends inside (0008,0070), of whose 16 bytes 2 are there (in (0008,1115), byte 28)", false, 0},
       {"deep", aDeep, kNative, "sequences are nested deeper than 256", false, 0},
       {"text without a length", Bytes("\x08\0\x70\0UT\0\0\xFF\xFF\xFF\xFF"), kNative, "(0008,0070) has no length",
        false, 0},
       {"fragment without a length", kFragments.substr(0, 12) + kItem, kCompressed, "a fragment has no length", false,
        0},
       {"item outside", kDefinedItem, kNative, "an item or a delimiter stands outside", false, 0},
       {"no item in a sequence", kSequence + kClass, kNative, "(0008,0016) stands where an item", false, 0},
       {"sequence ends in an item", kSequence + kItem + kSequenceEnd, kNative, "(FFFE,E0DD) stands where", false, 0},
       {"odd length", ShortElement(Bytes("\x08\x00\x70\x00"), "LO", "abc") + kClass, kNative, "", true, 0},
       {"meta information inside", kSOPClass + kClass, kNative, "", true, 0},
       {"UID too long", ShortElement(Bytes("\x08\x00\x18\x00"), "UI", std::string(66, '1')), kNative,
        "(0008,0018) is longer", false, 0},
       {"trailing padding", kClass + Bytes("\xFC\xFF\xFC\xFFOB\0\0\x02\0\0\0\0\0"), kNative, "", false, 0},
       {"trailing padding of any length", kClass + Bytes("\xFC\xFF\xFC\xFFOB\0\0\x20\0\0\0\0\0"), kNative, "", false,
        14},
       {"delimiter at the end", kClass + kSequenceEnd, kNative, "", false, 8},
   };
   for (const auto& aCase : kCases)
   {
      const Result aResult = Walk(aCase.itsBytes, aCase.itsSyntax);
      EXPECT_EQ(aResult.itsFault.substr(0, std::string(aCase.itsFault).size()), aCase.itsFault)
          << aCase.itsName << ": " << aResult.itsFault;
      EXPECT_EQ(aResult.itsFault.empty(), *aCase.itsFault == '\0') << aCase.itsName << ": " << aResult.itsFault;
      EXPECT_EQ(aResult.itsIsIrregular, aCase.itsIsIrregular) << aCase.itsName;
      EXPECT_TRUE(*aCase.itsFault != '\0' || aResult.itsEnd == aCase.itsBytes.size() - aCase.itsCutOff)
          << aCase.itsName;
   }
}
} // namespace

// Compressed files that become native ones, from end to end.
#include <gtest/gtest.h>

#include "support/DatasetBytes.h"
#include "support/RunTn.h"
#include "support/TemporaryDirectory.h"

using namespace std::string_literals;

namespace
{
const char kRLE[] = "1.2.840.10008.1.2.5";

// 1 row of 1 pixel in three colours (PS3.5 G.3): each a segment of one byte.
std::string Frame(char theFirst, char theSecond, char theThird)
{
   std::string aFrame(64, '\0');
   aFrame[0] = 3;
   aFrame[4] = 64;
   aFrame[8] = 66;
   aFrame[12] = 68;
   return aFrame + '\0' + theFirst + '\0' + theSecond + '\0' + theThird;
}

// A file that says theFrames, by planes and in a form that only its compressed frames have, and has two of them; its
// icon is compressed too.
std::string File(const std::string& theFrames)
{
   const auto aWord = [](UINT32 theNumber) { return DatasetBytes().Number(theNumber, 2).Bytes(); };
   const auto aDescribe = [&](DatasetBytes& theItem) -> DatasetBytes& {
      return theItem.Element(0x00280010, "US", aWord(1))
          .Element(0x00280011, "US", aWord(1))
          .Element(0x00280100, "US", aWord(8))
          .Element(0x00280101, "US", aWord(8))
          .Element(0x00280102, "US", aWord(7))
          .Element(0x00280103, "US", aWord(0));
   };
   DatasetBytes aFile;
   aFile.Element(0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.7\0"s).Element(0x00080018, "UI", "1.2.3\0"s);
   aFile.Element(0x00280002, "US", aWord(3)).Element(0x00280004, "CS", "YBR_FULL_422");
   aFile.Element(0x00280006, "US", aWord(1)).Element(0x00280008, "IS", theFrames);
   aDescribe(aFile).Sequence(0x00880200).Item();
   aFile.Element(0x00280002, "US", aWord(3)).Element(0x00280004, "CS", "RGB ");
   aDescribe(aFile).Stated(0x7FE00010, "OB", DatasetBytes::kUndefined).Item(0).Item(70, Frame(7, 8, 9));
   aFile.SequenceEnd().ItemEnd().SequenceEnd();
   aFile.Element(0x7FE00001, "OB", std::string(16, '\0')); // an extended offset table
   aFile.Stated(0x7FE00010, "OB", DatasetBytes::kUndefined).Item(0).Item(70, Frame(1, 2, 3)).Item(70, Frame(4, 5, 6));
   return DatasetBytes::Header(kRLE) + aFile.SequenceEnd().Bytes();
}
} // namespace

TEST(Decompression, AFileIsNativeInWhatItSaysAndWhatItHas)
{
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("rle"), File("2 "));
   const Outcome anOutcome = Tn("convert --to explicit " + aFolder.File("rle") + " " + aFolder.File("native"));
   ASSERT_EQ(anOutcome.itsCode, 0) << anOutcome.itsErrors;
   const std::string aNative = ReadFile(aFolder.File("native"));
   EXPECT_TRUE(aNative.ends_with(DatasetBytes().Element(0x7FE00010, "OB", "\1\2\3\4\5\6"s).Bytes()));
   const struct
   {
      const char* itsWhat;
      std::string itsBytes;
      bool itsIsThere;
   } kCases[] = {
       {"colours of each pixel", DatasetBytes().Element(0x00280004, "CS", "YBR_FULL").Bytes(), true},
       {"pixel by pixel", DatasetBytes().Element(0x00280006, "US", "\0\0"s).Bytes(), true},
       {"the icon", DatasetBytes().Element(0x7FE00010, "OB", "\7\10\11\0"s).Bytes(), true},
       {"offsets of what is gone", "\xE0\x7F\1\0"s, false},
       {"lossy compression, which was none", "\x28\0\x10\x21"s, false},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(Contains(aNative, aCase.itsBytes), aCase.itsIsThere) << aCase.itsWhat;
   }
}

TEST(Decompression, AFrameThatIsMissingIsNamedAndNothingIsLeft)
{
   const TemporaryDirectory aFolder;
   WriteFile(aFolder.File("rle"), File("3 "));
   const Outcome anOutcome = Tn("convert --to implicit " + aFolder.File("rle") + " " + aFolder.File("native"));
   EXPECT_EQ(anOutcome.itsCode, 3);
   EXPECT_TRUE(Contains(anOutcome.itsErrors, "frame 3 of 3: it is missing")) << anOutcome.itsErrors;
   EXPECT_EQ(aFolder.FileCount(), 1U);
}

// The frames of encapsulated pixel data, found by their markers or by an offset table.
#include "talvenor/pixel/ImageFrameInputStream.h"

#include <fstream>
#include <limits>

#include "support/EncapsulatedBytes.h"
#include "support/Sanitized.h"
#include "talvenor/pixel/BasicOffsetTable.h"

namespace
{
constexpr char kJPEG[] = "1.2.840.10008.1.2.4.50";
constexpr char kJPEG2000[] = "1.2.840.10008.1.2.4.90";
constexpr char kRLE[] = "1.2.840.10008.1.2.5";

const Bytes kFrame = {0xFF, 0xD8, 1, 2, 0xFF, 0xD9}; // the shortest of JPEG

std::string Text(const Bytes& theBytes)
{
   return Hex(theBytes.data(), theBytes.size());
}

std::string Text(InputStream* theFrame)
{
   const std::unique_ptr<InputStream> aFrame(theFrame);
   return aFrame ? Text(ReadToEnd(*aFrame)) : "(none)";
}

std::vector<UINT32> Offsets(const ImageFrameInputStream& theFrames)
{
   const BasicOffsetTable* const aTable = theFrames.GetBasicOffsetTable();
   return aTable == nullptr || aTable->IsEmpty()
              ? std::vector<UINT32>()
              : std::vector<UINT32>(aTable->GetOffsets(), aTable->GetOffsets() + aTable->GetFrameCount());
}

const struct FrameCase
{
   const char* itsName;
   const char* itsUID;
   std::vector<Bytes> itsFrames; // 0xFF and 0x00 between frames are padding, in whatever fragment
   bool itsIsPadded;
} kFrameCases[] = {
    {"JPEG", kJPEG, {JPEGFrame({}), JPEGFrame({1, 2, 3}), kFrame, JPEGFrame({9})}, true},
    {"JPEG 2000", kJPEG2000, {JPEG2000Frame({}), JPEG2000Frame({1, 2, 3}), JPEG2000Frame({9})}, false},
};

// The frame case in fragments of a size: the items, where frames start, and what the offset table has to be.
struct Layout
{
   Layout(const FrameCase& theCase, std::size_t theFragmentSize) : itsSize(theFragmentSize)
   {
      Bytes aData;
      for (const Bytes& aFrame : theCase.itsFrames)
      {
         itsStarts.push_back(aData.size());
         itsOffsets.push_back(static_cast<UINT32>(aData.size() / itsSize * (itsSize + 8)));
         aData = aData + aFrame + (theCase.itsIsPadded ? Bytes{0x00, 0xFF} : Bytes{});
      }
      itsItems = Fragments(aData, itsSize) + kEndOfItems;
   }

   std::size_t itsSize;
   std::vector<std::size_t> itsStarts;
   std::vector<UINT32> itsOffsets;
   Bytes itsItems;
};

TEST(ImageFrameInputStream, FindsFramesWhateverTheirFragments)
{
   for (const FrameCase& aCase : kFrameCases)
   {
      for (const std::size_t aSize : {1u, 2u, 3u, 50u, 100000u})
      {
         for (const unsigned int aPiece : {EncapsulatedBytes::kInMemory, 1u, 60u})
         {
            SCOPED_TRACE(aCase.itsName + std::string(" in fragments of ") + std::to_string(aSize) + ", pieces of " +
                         std::to_string(aPiece));
            const Layout aLayout(aCase, aSize);
            EncapsulatedBytes aSource(Item({}) + aLayout.itsItems, aPiece);
            const auto aCount = static_cast<INT32>(aCase.itsFrames.size());
            ImageFrameInputStream aFrames(aSource.Pixels(), aCase.itsUID, aCount, 0);
            for (std::size_t i = 0; i < aCase.itsFrames.size(); ++i)
            {
               // the second one is passed: the one behind it must not miss what was read ahead
               const bool isPassed = i == 1 && aFrames.SkipNextFrame();
               EXPECT_EQ(isPassed ? Text(aCase.itsFrames[i]) : Text(aFrames.NextFrame()), Text(aCase.itsFrames[i]));
               EXPECT_EQ(aFrames.GetCurrentFrameIndex(), static_cast<INT32>(i));
               EXPECT_EQ(aFrames.GetCurrentFrameLength(), static_cast<INT64>(aCase.itsFrames[i].size()));

               const auto aPlace = aFrames.GetCurrentFramePlace();
               const std::size_t aStart = aLayout.itsStarts[i];
               const std::size_t aLast = aStart + aCase.itsFrames[i].size() - 1;
               EXPECT_EQ(aPlace.itsItemOffset, aLayout.itsOffsets[i]);
               EXPECT_EQ(aPlace.itsDataOffset, static_cast<INT64>(aStart));
               EXPECT_EQ(aPlace.itsFirstFragment, static_cast<INT32>(aStart / aSize));
               EXPECT_EQ(aPlace.itsBytesBefore, static_cast<INT64>(aStart % aSize));
               EXPECT_EQ(aPlace.itsFragmentLengths.size(), aLast / aSize - aStart / aSize + 1);
            }
            EXPECT_EQ(Offsets(aFrames), aLayout.itsOffsets);
            EXPECT_EQ(aFrames.NextFrame(), nullptr);
            EXPECT_EQ(aFrames.GetCurrentFrameLength(), -1);
            EXPECT_EQ(aSource.Pixels().NextFragment(), nullptr) << "the decoder stands behind the pixel data";
         }
      }
   }
}

TEST(ImageFrameInputStream, JumpsToFramesByTheTableItBuilt)
{
   for (const FrameCase& aCase : kFrameCases)
   {
      for (const std::size_t aSize : {1u, 3u, 50u, 100000u})
      {
         SCOPED_TRACE(aCase.itsName + std::string(" in fragments of ") + std::to_string(aSize));
         const Layout aLayout(aCase, aSize);
         EncapsulatedBytes aSource(Item({}) + aLayout.itsItems);
         ImageFrameInputStream aFrames(aSource.Pixels(), aCase.itsUID, static_cast<INT32>(aCase.itsFrames.size()), 0);
         EXPECT_FALSE(aFrames.IsRandomFrameAccessAvailable());
         while (aFrames.PassNextFrame())
         {}
         EXPECT_TRUE(aFrames.IsRandomFrameAccessAvailable());
         for (const std::size_t aFrame : {2u, 0u, 1u, 2u, 1u, 0u})
         {
            EXPECT_EQ(Text(aFrames.GetFrame(static_cast<INT32>(aFrame))), Text(aCase.itsFrames[aFrame]));
            EXPECT_EQ(aFrames.GetCurrentFrameIndex(), static_cast<INT32>(aFrame));
            EXPECT_EQ(aFrames.GetCurrentFramePlace().itsItemOffset, aLayout.itsOffsets[aFrame]);
            EXPECT_EQ(aFrames.GetCurrentFramePlace().itsDataOffset, static_cast<INT64>(aLayout.itsStarts[aFrame]));
         }
         EXPECT_EQ(Text(aFrames.NextFrame()), Text(aCase.itsFrames[1])) << "what follows in the stream";
         EXPECT_EQ(aFrames.SkipNextFrame(), 1);
         EXPECT_EQ(aFrames.GetCurrentFrameIndex(), 2) << "only the index moves";
         EXPECT_EQ(aFrames.GetCurrentFrameLength(), -1);
         EXPECT_EQ(Text(aFrames.NextFrame()), Text(aCase.itsFrames[2]));
      }
   }
}

// A frame may be as long as its file.
TEST(ImageFrameInputStream, KeepsNothingOfAFrameThatIsPassed)
{
   if (kIsSanitized)
   {
      GTEST_SKIP() << "what is freed stays in memory there";
   }
   const auto aResidentPages = [] {
      std::size_t aSize = 0, aResident = 0;
      std::ifstream("/proc/self/statm") >> aSize >> aResident;
      return aResident;
   };
   EncapsulatedBytes aSource(Item({}) + Item(JPEGFrame(Bytes(64'000'000, 7))) + Item(kFrame) + kEndOfItems);
   ImageFrameInputStream aFrames(aSource.Pixels(), kJPEG, 2, 0);
   const std::size_t aBefore = aResidentPages();
   ASSERT_TRUE(aFrames.PassNextFrame());
   EXPECT_LT(aResidentPages(), aBefore + 4000);
   EXPECT_EQ(Text(aFrames.NextFrame()), Text(kFrame));
}

TEST(ImageFrameInputStream, RLEFramesAreFragments)
{
   const Bytes anItems = Item({1, 2, 3, 4}) + Item({}) + Item({5, 6}) + kEndOfItems;
   EncapsulatedBytes aSource(Item({}) + anItems, 1);
   ImageFrameInputStream aFrames(aSource.Pixels(), kRLE, 3, 0);
   EXPECT_EQ(Text(aFrames.NextFrame()), "01020304");
   EXPECT_EQ(Text(aFrames.NextFrame()), "");
   EXPECT_EQ(aFrames.GetCurrentFramePlace().itsItemOffset, 12);
   EXPECT_EQ(aFrames.GetCurrentFramePlace().itsFragmentLengths, std::vector<UINT32>{0});
   EXPECT_EQ(Text(aFrames.GetFrame(2)), "0506");
   EXPECT_EQ(Offsets(aFrames), (std::vector<UINT32>{0, 12, 20}));
   EXPECT_EQ(aFrames.NextFrame(), nullptr);

   EncapsulatedBytes aSeekable(Table({0, 12, 20}) + anItems);
   ImageFrameInputStream aRandom(aSeekable.Pixels(), kRLE, 3, 0);
   EXPECT_EQ(Text(aRandom.GetFrame(2)), "0506");
   EXPECT_EQ(aRandom.GetCurrentFramePlace().itsFirstFragment, -1) << "fragments in front have not been counted";
   EXPECT_EQ(Text(aRandom.GetFrame(0)), "01020304");
}

// The caller may read a frame in part, destroy it, or keep it when it asks for the next one.
TEST(ImageFrameInputStream, FramesEndWhenTheNextOneIsAskedFor)
{
   for (const char* const aUID : {kJPEG, kRLE})
   {
      SCOPED_TRACE(aUID);
      EncapsulatedBytes aSource(Item({}) + Item(kFrame) + Item(kFrame) + Item(kFrame) + kEndOfItems, 4);
      auto aFrames = std::make_unique<ImageFrameInputStream>(aSource.Pixels(), aUID, 4, 0);
      const std::unique_ptr<InputStream> aFirst(aFrames->NextFrame());
      unsigned char aBytes[6];
      EXPECT_EQ(aFirst->Length(), 6);
      EXPECT_EQ(aFirst->Read(aBytes, 3), 3u);
      std::unique_ptr<InputStream>(aFrames->NextFrame())->Skip(1);
      EXPECT_EQ(aFirst->Read(aBytes, 6), 0u);
      const std::unique_ptr<InputStream> aThird(aFrames->NextFrame());
      EXPECT_EQ(aThird->Skip(2), 2u);
      EXPECT_EQ(aThird->Read(aBytes, 1), 1u);
      EXPECT_EQ(aBytes[0], 1);
      aFrames.reset();
      EXPECT_EQ(aThird->Read(aBytes, 6), 0u);
   }
}

TEST(ImageFrameInputStream, PassesOverWhatIsNoFrame)
{
   const Bytes aNoise(300000, 0x11);
   EncapsulatedBytes aSource(Item({}) + Item(aNoise) + Item(kFrame + aNoise) + Item(kFrame) + kEndOfItems);
   ImageFrameInputStream aFrames(aSource.Pixels(), kJPEG, 2, 0);
   EXPECT_EQ(Text(aFrames.NextFrame()), Text(kFrame));
   EXPECT_EQ(aFrames.GetCurrentFramePlace().itsFirstFragment, 1);
   EXPECT_EQ(Text(aFrames.NextFrame()), Text(kFrame));
   EXPECT_EQ(Offsets(aFrames), (std::vector<UINT32>{0, 600022})) << "a table begins with the first fragment";
   EXPECT_EQ(Text(aFrames.GetFrame(0)), Text(kFrame));
}

TEST(ImageFrameInputStream, TellsWhatItCannotDo)
{
   const StreamError kNoMore = {"ImageFrameInputStream::GetFrameSequential: unexpected EOF", TN_INTERNAL_ERROR, 0};
   const StreamError kOutOfRange = {"ImageFrameInputStream::GetFrame: frame number out of range", TN_INTERNAL_ERROR, 0};
   const StreamError kCut = {"ImageFrameInputStream::NextFrame(): Hit EOF while searching for end of JPEG codestream",
                             TN_INVALID_ENCODING, 0};
   const StreamError kNoItem = {"Error or EOF while reading encapsulation delimiter", TN_INVALID_DELIMITER, 0};
   const StreamError kMismatch = {"BasicOffsetTable::Init: invalid table - number of entries != number of frames",
                                  TN_INVALID_ENCODING, 0};
   const StreamError kCutFragment = {"EncapsulatedDataInputStream: EOF inside fragment 0 (2 bytes remaining)",
                                     TN_END_OF_FILE, 0};
   const INT32 kMost = std::numeric_limits<INT32>::max();
   const INT32 kNext = -2; // NextFrame, not GetFrame
   const struct
   {
      const char* itsName;
      const char* itsUID;
      Bytes itsItems;
      INT32 itsNumberOfFrames;
      INT32 itsFrame;
      StreamError itsError;
   } kCases[] = {
       {"JPEG-LS",
        "1.2.840.10008.1.2.4.80",
        Item({}) + Item(kFrame) + kEndOfItems,
        1,
        kNext,
        {"ImageFrameInputStream::NextFrame(): unknown compression type: TransferSyntax is 1.2.840.10008.1.2.4.80",
         TN_TRANSFER_SYNTAX_UNSUPPORTED, 0}},
       {"a negative frame", kJPEG, Item({}) + kEndOfItems, 1, -1, kOutOfRange},
       {"a frame too many", kJPEG, Item({}) + kEndOfItems, 1, 1, kOutOfRange},
       {"no frames at all", kJPEG, Item({}) + kEndOfItems, std::numeric_limits<INT32>::min(), 0, kOutOfRange},
       {"more frames claimed", kJPEG, Item({}) + Item(kFrame) + kEndOfItems, kMost, kMost - 1, kNoMore},
       {"no fragment", kJPEG, Item({}) + kEndOfItems, 3, 0, kNoMore},
       {"no item", kJPEG, kEndOfItems, 3, 0, kNoMore},
       {"no end of the image", kJPEG, Item({}) + Item(First(kFrame, 5)) + kEndOfItems, 1, kNext, kCut},
       {"a million fill bytes", kJPEG, Item({}) + Item(kFrame + Bytes(1000000, 0xFF)) + kEndOfItems, 2, 1, kNoMore},
       {"pixel data cut in a frame", kJPEG, Item({}) + First(Item(kFrame), 12), 2, kNext, kCutFragment},
       {"pixel data cut in an RLE frame", kRLE, Item({}) + First(Item(kFrame), 12), 2, 1, kCutFragment},
       {"a table of fewer entries", kJPEG, Table({0}) + Item(kFrame) + kEndOfItems, 2, kNext, kMismatch},
       {"a table of 16 MiB that is not there",
        kJPEG,
        Bytes{0xFE, 0xFF, 0x00, 0xE0, 0, 0, 0, 1, 0, 0, 0, 0},
        0x400000,
        kNext,
        {"BasicOffsetTable::Init: unexpected failure while reading offset table", TN_INTERNAL_ERROR, 0}},
       {"an offset behind the end", kJPEG, Table({0, 0x7FFFFFFE}) + Item(kFrame) + kEndOfItems, 2, 1, kNoItem},
       {"an offset at the end",
        kJPEG,
        Table({0, 14}) + Item(kFrame) + kEndOfItems,
        2,
        1,
        {"ImageFrameInputStream::GetFrame: unexpected EOF at frame 1", TN_INTERNAL_ERROR, 0}},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      EncapsulatedBytes aSource(aCase.itsItems,
                                aCase.itsName[0] == 'p' ? 1000
                                                        : EncapsulatedBytes::kInMemory); // cut: as from a network
      ImageFrameInputStream aFrames(aSource.Pixels(), aCase.itsUID, aCase.itsNumberOfFrames, 0);
      EXPECT_EQ(StreamErrorOf(
                    [&] { Text(aCase.itsFrame == kNext ? aFrames.NextFrame() : aFrames.GetFrame(aCase.itsFrame)); }),
                aCase.itsError);
   }
}

TEST(ImageFrameInputStream, GoesOnBehindATableAtFault)
{
   EncapsulatedBytes aSource(Table({0, 14, 28}) + Item(kFrame) + Item(kFrame) + kEndOfItems, 3);
   ImageFrameInputStream aFrames(aSource.Pixels(), kJPEG, 2, 0);
   EXPECT_THROW(aFrames.ReadBasicOffsetTable(), StreamIOException);
   EXPECT_EQ(aFrames.GetBasicOffsetTable(), nullptr);
   EXPECT_EQ(Text(aFrames.GetFrame(1)), Text(kFrame));
   EXPECT_EQ(Offsets(aFrames), (std::vector<UINT32>{0, 14})) << "the right one is built";
   EXPECT_EQ(StreamErrorOf([&] { aFrames.GetFrame(0); }),
             (StreamError{"ImageFrameInputStream::GetFrameSequential: can only access frames in forward direction - "
                          "random access unavilable with current input stream",
                          TN_INTERNAL_ERROR, 0}));
}

TEST(ImageFrameInputStream, GivesTheLastFrameAlthoughTheEndIsMissing)
{
   EncapsulatedBytes aSource(Item({}) + Item(kFrame), 100);
   ImageFrameInputStream aFrames(aSource.Pixels(), kJPEG, 1, 0);
   EXPECT_EQ(Text(aFrames.NextFrame()), Text(kFrame));
   EXPECT_EQ(Offsets(aFrames), std::vector<UINT32>{0}) << "an empty table is enough for one frame";
   EXPECT_EQ(StreamErrorOf([&] { aFrames.NextFrame(); }).itsCode, TN_INVALID_DELIMITER);
   EXPECT_EQ(aFrames.NextFrame(), nullptr) << "told once";
}

// Frames at one offset are told apart by their order, also with a table from elsewhere and one of zeros.
TEST(ImageFrameInputStream, UsesTheTableItIsGiven)
{
   const Bytes anOther = JPEGFrame({});
   const Bytes anItems = Item(kFrame + anOther) + Item(anOther) + kEndOfItems;
   for (const Bytes& aTableItem : {Item({}), Table({0, 0, 0})})
   {
      EncapsulatedBytes aSource(aTableItem + anItems);
      BasicOffsetTable aTable(3);
      aTable.Init({static_cast<UINT32>((kFrame + anOther).size()), 40}, {0, 0, 1});
      ImageFrameInputStream aFrames(aSource.Pixels(), kJPEG, 3, 0);
      aFrames.SetBasicOffsetTable(&aTable);
      EXPECT_EQ(Text(aFrames.GetFrame(1)), Text(anOther));
      EXPECT_EQ(aFrames.GetCurrentFramePlace().itsBytesBefore, 6);
      EXPECT_EQ(Text(aFrames.GetFrame(0)), Text(kFrame));
      EXPECT_EQ(Text(aFrames.GetFrame(2)), Text(anOther));
      EXPECT_EQ(Text(aFrames.GetFrame(1)), Text(anOther)) << "also when it is known already";
      EXPECT_EQ(aFrames.GetBasicOffsetTable() == &aTable, aTableItem == Item({})) << "that of the data comes first";
   }
}

TEST(ImageFrameInputStream, BuildsATableToCompareWithThatOfTheData)
{
   EncapsulatedBytes aSource(Table({0, 13}) + Item(kFrame) + Item(kFrame) + kEndOfItems);
   ImageFrameInputStream aFrames(aSource.Pixels(), kJPEG, 2, 0);
   aFrames.ReadBasicOffsetTable();
   const BasicOffsetTable* const aWrong = aFrames.GetBasicOffsetTable();
   EXPECT_EQ(StreamErrorOf([&] { aFrames.GetFrame(1); }).itsCode, TN_INVALID_DELIMITER);
   EXPECT_EQ(Text(aFrames.GetFrame(0)), Text(kFrame));
   aFrames.SetBasicOffsetTable(nullptr);
   EXPECT_EQ(Text(aFrames.NextFrame()), Text(kFrame));
   EXPECT_EQ(Offsets(aFrames), (std::vector<UINT32>{0, 14}));
   EXPECT_EQ(aWrong->GetOffset(1), 13u) << "still there";
}

TEST(ImageFrameInputStream, PixelDataOfDefinedLengthHasNoFrames)
{
   EncapsulatedBytes aSource({1, 2, 3, 4}, EncapsulatedBytes::kInMemory, 4);
   ImageFrameInputStream aFrames(aSource.Pixels(), kJPEG, 1, 0);
   EXPECT_EQ(aFrames.GetCompressionType(), ImageFrameInputStream::NotEncapsulated);
   EXPECT_EQ(aFrames.NextFrame(), nullptr);
   EXPECT_EQ(aSource.Position(), 0u) << "nothing is read";
}
} // namespace

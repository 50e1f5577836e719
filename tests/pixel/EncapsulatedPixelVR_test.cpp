#include "talvenor/pixel/EncapsulatedPixelVR.h"

#include <cstring>
#include <gtest/gtest.h>

#include "support/Decoding.h"
#include "support/MessageOf.h"
#include "support/RecordingOutputStream.h"
#include "talvenor/io/EndianHandlingWriter.h"

namespace
{
using FrameStarts = EncapsulatedPixelVR::FrameStarts;
using Failure = EncapsulatedPixelVR::EncapsulationException;

PixelDataFragment* NewFragment(const Bytes& theBytes)
{
   auto* aFragment = new MemoryBufferedPixelDataFragment(static_cast<UINT32>(theBytes.size()));
   if (!theBytes.empty())
   {
      std::memcpy(static_cast<PixelDataFragment*>(aFragment)->GetData(), theBytes.data(), theBytes.size());
   }
   return aFragment;
}

// An offset table, little endian (PS3.5 A.4).
Bytes Table(std::initializer_list<UINT32> theOffsets)
{
   Bytes aBytes;
   for (const UINT32 anOffset : theOffsets)
   {
      for (int aShift = 0; aShift < 32; aShift += 8)
      {
         aBytes.push_back(static_cast<unsigned char>(anOffset >> aShift));
      }
   }
   return aBytes;
}

// Pixel data with this offset table and fragments of these lengths.
std::unique_ptr<EncapsulatedPixelVR> Make(const Bytes& theTable, std::initializer_list<UINT32> theLengths)
{
   auto* const aList = new EncapsulatedPixelVR::FragmentList{NewFragment(theTable)};
   for (const UINT32 aLength : theLengths)
   {
      aList->push_back(NewFragment(Bytes(aLength, 0x55)));
   }
   return std::make_unique<EncapsulatedPixelVR>(aList);
}

std::string TableWrittenBy(const EncapsulatedPixelVR& thePixels,
                           TNEndian::EndianType theEndian = TNEndian::LittleEndian)
{
   RecordingOutputStream aStream;
   EndianHandlingWriter aWriter(aStream, theEndian);
   thePixels.WriteBasicItemOffsetTableData(aWriter);
   return Hex(aStream.Bytes().data(), aStream.Bytes().size());
}

TEST(EncapsulatedPixelVR, CountsFramesByItsOffsetTable)
{
   const struct
   {
      const char* itsName;
      Bytes itsTable;
      std::initializer_list<UINT32> itsLengths;
      int itsFrames;
      bool itsHasTable;
      UINT32 itsTableLength; // as it is written
   } kCases[] = {
       {"no fragment", Table({0, 10}), {}, 0, false, 0},
       {"one fragment", {}, {2}, 1, false, 4},
       {"one fragment, whatever the table says", Table({0, 10, 20}), {2}, 1, false, 4},
       {"three fragments without a table", {}, {2, 2, 2}, -1, false, 0},
       {"three fragments, two frames", Table({0, 20}), {2, 2, 2}, 2, true, 8},
       {"a table of no whole entry", {0, 0, 0}, {2, 2}, 0, true, 0},
       {"a table with bytes left over", Table({0, 10}) + Bytes{0, 0}, {2, 2}, 2, true, 8},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const auto aPixels = Make(aCase.itsTable, aCase.itsLengths);
      EXPECT_EQ(aPixels->GetFrameCount(), aCase.itsFrames);
      EXPECT_EQ(aPixels->HasBasicOffsetTable(), aCase.itsHasTable);
      EXPECT_EQ(aPixels->GetBasicItemOffsetTableLength(), aCase.itsTableLength);
      EXPECT_EQ(aPixels->GetFragmentCount(), static_cast<int>(aCase.itsLengths.size()));
   }
   EXPECT_EQ(EncapsulatedPixelVR::GetEncodedBasicItemOffsetTableSize(3), 20u);
}

// An offset counts the 8 bytes of each item header and the lengths before the frame.
TEST(EncapsulatedPixelVR, FindsTheFirstFragmentOfEachFrame)
{
   const struct
   {
      const char* itsName;
      Bytes itsTable;
      std::initializer_list<UINT32> itsLengths;
      FrameStarts itsStarts;
      std::vector<int> itsCounts; // of fragments in each frame
   } kCases[] = {
       {"nothing", {}, {}, {}, {}},
       {"one frame of three fragments", Table({0}), {2, 4, 6}, {1}, {3}},
       {"one fragment each", Table({0, 1000}), {992, 10}, {1, 2}, {1, 1}},
       {"two and one", Table({0, 22}), {2, 4, 6}, {1, 3}, {2, 1}},
       {"one and two", Table({0, 10}), {2, 4, 6}, {1, 2}, {1, 2}},
       {"of no bytes", Table({0, 8, 16}), {0, 0, 0}, {1, 2, 3}, {1, 1, 1}},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const auto aPixels = Make(aCase.itsTable, aCase.itsLengths);
      EXPECT_EQ(aPixels->GetFrameStartIndices(), aCase.itsStarts);
      EXPECT_EQ(&aPixels->GetFrameStartIndices(), &aPixels->GetFrameStartIndices()) << "computed once";
      for (std::size_t i = 0; i < aCase.itsCounts.size(); ++i)
      {
         EXPECT_EQ(aPixels->GetFragmentCount(static_cast<int>(i)), aCase.itsCounts[i]);
      }
      for (const int aFrame : {-1, static_cast<int>(aCase.itsCounts.size())})
      {
         EXPECT_EQ(MessageOf<Failure>([&] { aPixels->GetFragmentCount(aFrame); }),
                   "EncapsulatedPixelVR::GetFragmentCount: Invalid frame index passed to GetFragmentCount");
      }
   }
}

TEST(EncapsulatedPixelVR, RefusesAnOffsetTableThatDoesNotFit)
{
   const std::string kClass = "EncapsulatedPixelVR::GetFrameStartIndices: ";
   const std::string kDecreased = kClass + "Offset decreased while reading basic item offset entry ";
   const std::string kMismatch = kClass + "Offset doesn't match fragment lengths for basic item offset entry ";
   const struct
   {
      const char* itsName;
      Bytes itsTable;
      std::initializer_list<UINT32> itsLengths;
      std::string itsError;
   } kCases[] = {
       {"first not 0", Table({12, 20}), {2, 2}, "Invalid non-zero offset (12) for entry 0"},
       {"equal", Table({0, 0}), {2, 2}, kDecreased + "1"},
       {"decreasing", Table({0, 20, 10}), {2, 2, 2}, kDecreased + "2"},
       {"inside a fragment", Table({0, 1000}), {990, 10}, kMismatch + "1"},
       {"beyond the end", Table({0, 10, 500}), {2, 2}, kMismatch + "2"},
       {"at the end, where no fragment starts", Table({0, 20}), {2, 2}, kMismatch + "1"},
       {"the largest", Table({0, 0xFFFFFFFF}), {2, 2}, kMismatch + "1"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const auto aPixels = Make(aCase.itsTable, aCase.itsLengths);
      EXPECT_EQ(MessageOf<Failure>([&] { aPixels->GetFrameStartIndices(); }), aCase.itsError);
      EXPECT_EQ(MessageOf<Failure>([&] { aPixels->GetFragmentCount(0); }), aCase.itsError);
      EXPECT_EQ(aPixels->GetFragment(1).GetLength(), *aCase.itsLengths.begin()) << "the fragments stay in reach";
   }
}

TEST(EncapsulatedPixelVR, RefusesFramesWithoutAnOffsetTable)
{
   const auto aPixels = Make({}, {2, 2, 2});
   EXPECT_EQ(StreamErrorOf([&] { aPixels->GetFrameStartIndices(); }),
             (StreamError{"EncapsulatedPixelVR::GetFrameStartIndices(): frame count is unknown threrefor frame indices "
                          "are unknown",
                          TN_INTERNAL_ERROR, 0}));
   EXPECT_EQ(aPixels->GetFragmentCount(0), -1);
   EXPECT_EQ(aPixels->GetFragmentCount(99), -1) << "unknown comes before invalid";
   const auto aSingle = Make({}, {2});
   EXPECT_EQ(aSingle->GetFragmentCount(0), -1) << "until the frames have been looked for";
   aSingle->GetFrameStartIndices();
   EXPECT_EQ(aSingle->GetFragmentCount(0), 1);
}

TEST(EncapsulatedPixelVR, TellsATableThatCannotBeRead)
{
   for (const std::size_t aBytesThere : {std::size_t{0}, std::size_t{5}})
   {
      PiecewiseInputStream aStream(Bytes(aBytesThere, 0));
      const auto aPixels = Make({}, {2, 2});
      aPixels->ReplaceBasicOffsetTable(new StreamBufferedPixelDataFragment(aStream, 8));
      EXPECT_EQ(MessageOf<Failure>([&] { aPixels->GetFrameStartIndices(); }),
                "EncapsulatedPixelVR::GetFrameStartIndices: Error while reading basic item offset entry 0");
      EXPECT_EQ(MessageOf<Failure>([&] { aPixels->GetFrameStartIndices(); }),
                "EncapsulatedPixelVR::GetFrameStartIndices: Error while reading basic item offset entry 0")
          << "nor later, when the bytes are gone";
   }
   PiecewiseInputStream aStream(Table({0, 10}));
   const auto aPixels = Make({}, {2, 2});
   aPixels->ReplaceBasicOffsetTable(new StreamBufferedPixelDataFragment(aStream, 8));
   EXPECT_EQ(aPixels->GetFrameStartIndices(), (FrameStarts{1, 2})) << "in a stream, but whole";
}

TEST(EncapsulatedPixelVR, ForgetsTheFramesWithTheirTable)
{
   const auto aPixels = Make(Table({0, 10}), {2, 2, 2});
   EXPECT_EQ(aPixels->GetFrameStartIndices(), (FrameStarts{1, 2}));
   aPixels->ReplaceBasicOffsetTable(NewFragment(Table({0, 20})));
   EXPECT_EQ(aPixels->GetFrameStartIndices(), (FrameStarts{1, 3}));
}

TEST(EncapsulatedPixelVR, CountsFragmentsFromOne)
{
   const auto aPixels = Make(Table({0}), {2, 4});
   EXPECT_EQ(aPixels->GetFragment(1).GetLength(), 2u);
   EXPECT_EQ(aPixels->GetFragment(2).GetLength(), 4u);
   for (const int anIndex : {-1, 0, 3})
   {
      EXPECT_EQ(MessageOf<Failure>([&] { aPixels->GetFragment(anIndex); }),
                "EncapsulatedPixelVR::GetFragment: Invalid fragment index passed to GetFragment " +
                    std::to_string(anIndex));
   }
}

TEST(EncapsulatedPixelVR, WritesAnOffsetTableMadeFromItsFragments)
{
   EXPECT_EQ(TableWrittenBy(*Make({}, {2})), "00000000") << "one frame";
   EXPECT_EQ(TableWrittenBy(*Make({}, {2, 2, 2})), "") << "unknown";
   EXPECT_EQ(TableWrittenBy(*Make({}, {})), "");
   EXPECT_EQ(TableWrittenBy(*Make(Table({0, 24, 36}) + Bytes{1, 2}, {2, 6, 4, 8})), "000000001800000024000000");
   EXPECT_EQ(MessageOf<Failure>([] { TableWrittenBy(EncapsulatedPixelVR(nullptr)); }),
             "EncapsulatedPixelVR::WriteBasicItemOffsetTableData:itsFragments == null");
   EXPECT_EQ(StreamErrorOf([] {
                TableWrittenBy(*Make(Table({0, 10}), {2, 2}), TNEndian::BigEndian);
             }),
             (StreamError{"EncapsulatedPixelVR::WriteBasicItemOffsetTableData(): Basic item offset table must be "
                          "encoded as little-endian but you supplied a big-endian writer",
                          TN_INVALID_ENCODING, 0}));
   EXPECT_EQ(TableWrittenBy(*Make({}, {2}), TNEndian::BigEndian), "00000000") << "0 in either order";
}

TEST(EncapsulatedPixelVR, RefusesStartsThatAreNoFragments)
{
   RecordingOutputStream aStream;
   EndianHandlingWriter aWriter(aStream, TNEndian::LittleEndian);
   const std::unique_ptr<PixelDataFragment> aFragment(NewFragment(Bytes(2)));
   const EncapsulatedPixelVR::FragmentList aList = {aFragment.get(), aFragment.get()};
   for (const INT32 aStart : {-1, 0, 2})
   {
      EXPECT_EQ(MessageOf<Failure>([&] {
                   EncapsulatedPixelVR::WriteBasicItemOffsetTableData(aWriter, aList, {1, aStart});
                }),
                "EncapsulatedPixelVR::WriteBasicItemOffsetTableData: no fragment " + std::to_string(aStart));
   }
}

TEST(EncapsulatedPixelVR, EqualsWhatHasTheSameItemsByteForByte)
{
   const auto aPixels = Make(Table({0}), {2, 2});
   const auto aChanged = Make(Table({0}), {2, 2});
   aChanged->GetFragment(2).GetData()[1] = 0;
   const struct
   {
      const char* itsName;
      std::unique_ptr<VR> itsOther;
      bool itsIsEqual;
   } kCases[] = {
       {"a copy", std::unique_ptr<VR>(aPixels->Copy()), true},
       {"another table", Make(Table({1}), {2, 2}), false},
       {"fewer fragments", Make(Table({0}), {2}), false},
       {"another length", Make(Table({0}), {2, 4}), false},
       {"another byte", std::unique_ptr<VR>(aChanged->Copy()), false},
       {"native pixels", std::make_unique<VR>(UINT16{0x7FE0}, UINT16{0x0010}, 2, 1), false},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(aPixels->ValueEquals(*aCase.itsOther) != 0, aCase.itsIsEqual) << aCase.itsName;
      EXPECT_EQ(aCase.itsOther->ValueEquals(*aPixels) != 0, aCase.itsIsEqual) << aCase.itsName << ", the other way";
   }
   EXPECT_TRUE(EncapsulatedPixelVR(nullptr).ValueEquals(EncapsulatedPixelVR(nullptr)));
}

TEST(EncapsulatedPixelVR, CopiesItsFragmentsAlsoFromAStream)
{
   PiecewiseInputStream aStream({1, 2, 3});
   EncapsulatedPixelVR aPixels(nullptr);
   EXPECT_EQ(aPixels.GetTypeCode(), VRCode::OB); // PS3.5 A.4
   aPixels.AddItem(std::unique_ptr<PixelDataFragment>(NewFragment({})));
   aPixels.AddItem(std::make_unique<StreamBufferedPixelDataFragment>(aStream, 3));
   const std::unique_ptr<VR> aCopy(aPixels.Copy());
   const EncapsulatedPixelVR& aCopied = *aCopy->GetAsEncapsulatedPixelVR();
   aPixels.GetFragment(1).GetData()[0] = 9;
   EXPECT_FALSE(aCopied.GetFragment(1).IsStreamBuffered());
   EXPECT_EQ(Hex(aCopied.GetFragment(1).GetData(), 3), "010203");
}

TEST(EncapsulatedPixelVR, CanBeFilledAgainAfterReset)
{
   const auto aPixels = Make(Table({0, 10}), {2, 2});
   aPixels->GetFrameStartIndices();
   aPixels->Reset();
   EXPECT_TRUE(aPixels->IsEmpty());
   EXPECT_EQ(aPixels->GetFrameCount(), 0);
   EXPECT_EQ(aPixels->GetFrameStartIndices(), FrameStarts());
   aPixels->AddItem(std::unique_ptr<PixelDataFragment>(NewFragment({})));
   aPixels->AddItem(std::unique_ptr<PixelDataFragment>(NewFragment({1})));
   EXPECT_EQ(aPixels->GetFrameStartIndices(), FrameStarts{1});
}
} // namespace

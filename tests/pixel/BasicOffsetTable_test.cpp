// The basic offset table (PS3.5 A.4).
#include "talvenor/pixel/BasicOffsetTable.h"

#include <memory>

#include "support/Decoding.h"
#include "talvenor/io/MemoryStreams.h"
#include "talvenor/pixel/PixelDataFragment.h"

namespace
{
using Lengths = std::vector<UINT32>;
using Indices = std::vector<INT32>;

std::string Text(const BasicOffsetTable& theTable)
{
   const std::unique_ptr<PixelDataFragment> anItem(theTable.GetAsPixelDataFragment());
   return (theTable.IsEmpty() ? "empty " : "") + Hex(anItem->GetData(), anItem->GetLength());
}

TEST(BasicOffsetTable, IsMadeFromFragments)
{
   const std::string kStart = "BasicOffsetTable::Init(const size_t*, const int*): ";
   const struct
   {
      const char* itsName;
      INT32 itsFrames;
      Lengths itsLengths;
      Indices itsStarts;
      std::string itsResult; // little endian, or the text of the failure
   } kCases[] = {
       {"three frames in five fragments",
        3,
        {10, 2, 4, 0, 8},
        {0, 1, 4},
        "00000000"
        "12000000"
        "30000000"},
       {"two frames in a fragment",
        3,
        {10, 2},
        {0, 0, 1},
        "00000000"
        "00000000"
        "12000000"},
       {"no frame", 0, {10}, {}, "empty "},
       {"a negative number of frames", -1, {10}, {}, "empty "},
       {"not from the first", 1, {10, 2}, {1}, kStart + "invalid indices table - first entry not 0"},
       {"backwards", 3, {10, 2, 2}, {0, 2, 1}, kStart + "invalid indices table - entry 2 is 1"},
       {"behind the fragments", 2, {10, 2}, {0, 3}, kStart + "invalid indices table - entry 1 is 3"},
       {"too few", 3, {10, 2}, {0, 1}, kStart + "indices for 2 of 3 frames"},
       {"beyond 32 bits", 2, {0xFFFFFFFE, 2}, {0, 1}, kStart + "offset of frame 1 does not fit 32 bits"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      BasicOffsetTable aTable(aCase.itsFrames);
      const StreamError anError = StreamErrorOf([&] { aTable.Init(aCase.itsLengths, aCase.itsStarts); });
      const bool hasFailed = anError.itsCode != TN_NO_ERROR;
      EXPECT_EQ(hasFailed ? anError.itsMessage : Text(aTable), aCase.itsResult);
      EXPECT_EQ(anError.itsCode, hasFailed ? TN_INTERNAL_ERROR : TN_NO_ERROR);
   }
}

TEST(BasicOffsetTable, IsReadFromItsItem)
{
   const Bytes kValue = {0, 0, 0, 0, 0x12, 0x34, 0x56, 0x78, 0xAA, 0xBB};
   const struct
   {
      const char* itsName;
      INT32 itsFrames;
      UINT32 itsLength;
      std::string itsResult;
      TNResultCode itsCode;
   } kCases[] = {
       {"an entry for each frame", 2, 8,
        "00000000"
        "12345678",
        TN_NO_ERROR},
       {"half an entry too much", 2, 10,
        "00000000"
        "12345678",
        TN_NO_ERROR},
       {"nothing for one frame", 1, 0, "00000000", TN_NO_ERROR},
       {"nothing for two frames", 2, 0,
        "empty 00000000"
        "00000000",
        TN_NO_ERROR},
       {"an entry too many", 1, 8, "", TN_INVALID_ENCODING},
       {"an entry too few", 3, 8, "", TN_INVALID_ENCODING},
       {"half an entry", 1, 3, "", TN_INVALID_ENCODING},
       {"entries for no frames", 0, 8, "", TN_INVALID_ENCODING},
       {"most entries that are not there", 0x3FFFFFFF, 0xFFFFFFFC, "", TN_INTERNAL_ERROR},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      for (const unsigned int aPiece : {1u, 100u})
      {
         BasicOffsetTable aTable(aCase.itsFrames);
         PiecewiseInputStream aStream(kValue, aPiece);
         EXPECT_EQ(StreamErrorOf([&] { aTable.Init(aStream, aCase.itsLength); }).itsCode, aCase.itsCode);
         if (aCase.itsCode == TN_NO_ERROR)
         {
            EXPECT_EQ(Text(aTable), aCase.itsResult);
            BasicOffsetTable anOther(aCase.itsFrames);
            anOther.Init(kValue.data(), aCase.itsLength);
            EXPECT_TRUE(anOther == aTable);
            EXPECT_EQ(aTable == BasicOffsetTable(7), aTable.IsEmpty()) << "empty ones are equal";
         }
         else
         {
            EXPECT_TRUE(aTable.IsEmpty());
         }
      }
   }
}

TEST(BasicOffsetTable, KnowsTheOffsetOfTheFirstFrameAlways)
{
   BasicOffsetTable aTable(2);
   EXPECT_EQ(aTable.GetOffset(0), 0u);
   EXPECT_EQ(aTable.GetOffset(1), 0xFFFFFFFFu);
   aTable.Init(Lengths{4, 4}, Indices{0, 1});
   EXPECT_EQ(aTable.GetOffset(1), 12u);
   EXPECT_EQ(aTable.GetOffset(2), 0xFFFFFFFFu);
   EXPECT_EQ(aTable.GetOffset(-1), 0xFFFFFFFFu);
   EXPECT_THROW(delete BasicOffsetTable(0x7FFFFFFF).GetAsPixelDataFragment(), StreamIOException) << "8 GiB of zeros";
}
} // namespace

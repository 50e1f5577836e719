#include "talvenor/pixel/PixelDataFragment.h"

#include <gtest/gtest.h>

#include "support/CountingAllocater.h"
#include "support/Decoding.h"
#include "support/RecordingOutputStream.h"
#include "talvenor/io/EndianHandlingWriter.h"

namespace
{
const Bytes kBytes = {1, 2, 3, 4, 5};

std::string WrittenBy(PixelDataFragment& theFragment)
{
   RecordingOutputStream aStream;
   EndianHandlingWriter aWriter(aStream, TNEndian::BigEndian);
   theFragment.WriteData(aWriter);
   return Hex(aStream.Bytes().data(), aStream.Bytes().size());
}

std::string DataOf(const PixelDataFragment& theFragment)
{
   return Hex(theFragment.GetData(), theFragment.GetLength());
}

// A stream that notes its end.
class WatchedStream : public PiecewiseInputStream
{
public:
   explicit WatchedStream(bool& theIsGone) : PiecewiseInputStream(kBytes), itsIsGone(theIsGone) {}
   ~WatchedStream() override { itsIsGone = true; }

private:
   bool& itsIsGone;
};

TEST(MemoryBufferedPixelDataFragment, OwnsBorrowsOrAllocatesItsBytes)
{
   CountingAllocater anAllocator;
   unsigned char aLent[] = {1, 2, 3, 4, 5};
   unsigned char* const aPointer = aLent;
   {
      MemoryBufferedPixelDataFragment aBorrower(5, aPointer, anAllocator);
      EXPECT_EQ(static_cast<PixelDataFragment&>(aBorrower).GetData(), aLent);
      EXPECT_TRUE(anAllocator.Sizes().empty());

      auto* const aGiven = static_cast<unsigned char*>(anAllocator.Allocate(5));
      std::copy_n(aLent, 5, aGiven);
      MemoryBufferedPixelDataFragment anOwner(aGiven, 5, anAllocator);
      MemoryBufferedPixelDataFragment anEmpty(0);
      MemoryBufferedPixelDataFragment aCopy(aBorrower);
      aLent[0] = 9;
      EXPECT_EQ(DataOf(aBorrower), "0902030405");
      EXPECT_EQ(DataOf(aCopy), "0102030405") << "deep";
      EXPECT_EQ(WrittenBy(anOwner), "0102030405") << "as they are, whatever the byte order";
      EXPECT_EQ(WrittenBy(anEmpty), "");
      EXPECT_FALSE(anOwner.IsStreamBuffered());
      EXPECT_TRUE(anOwner.CanGetData());
      EXPECT_TRUE(anOwner == aCopy) << "by length alone";
      EXPECT_FALSE(anOwner == anEmpty);
   }
   EXPECT_EQ(anAllocator.Live(), 0u);
   EXPECT_FALSE(anAllocator.HasSeenStrangers());
}

TEST(StreamBufferedPixelDataFragment, ReadsItsBytesOnceIntoMemory)
{
   PiecewiseInputStream aStream(kBytes, 2);
   StreamBufferedPixelDataFragment aFragment(aStream, 4);
   EXPECT_TRUE(aFragment.IsStreamBuffered());
   EXPECT_TRUE(aFragment.CanGetData());
   EXPECT_EQ(aStream.Consumed(), 0u) << "not before they are asked for";
   EXPECT_EQ(DataOf(aFragment), "01020304");
   EXPECT_EQ(DataOf(aFragment), "01020304");
   EXPECT_TRUE(aFragment.CanGetData());
   EXPECT_EQ(WrittenBy(aFragment), "01020304");
   EXPECT_EQ(WrittenBy(aFragment), "01020304");
   EXPECT_EQ(aStream.Consumed(), 4u);
}

TEST(StreamBufferedPixelDataFragment, WritesItsBytesThroughOnce)
{
   PiecewiseInputStream aStream(kBytes, 2);
   StreamBufferedPixelDataFragment aFragment(aStream, 4);
   EXPECT_EQ(WrittenBy(aFragment), "01020304");
   EXPECT_FALSE(aFragment.CanGetData());
   EXPECT_EQ(StreamErrorOf([&] { DataOf(aFragment); }),
             (StreamError{"StreamBufferedPixelDataFragment::GetData(): data has already been consumed from the stream "
                          "and is unavailable in memory",
                          TN_INTERNAL_ERROR, 0}));
   EXPECT_EQ(StreamErrorOf([&] { WrittenBy(aFragment); }),
             (StreamError{"StreamBufferedPixelDataFragment::WriteData: data has already been consumed from the stream "
                          "and is unavailable in memory",
                          TN_INTERNAL_ERROR, 0}));
   EXPECT_EQ(StreamErrorOf([&] { std::make_unique<StreamBufferedPixelDataFragment>(aFragment); }),
             (StreamError{"StreamBufferedPixelDataFragment::StreamBufferedPixelDataFragment: data has already been "
                          "consumed from stream and is not available internally",
                          TN_INTERNAL_ERROR, 0}));
}

TEST(StreamBufferedPixelDataFragment, TellsHowManyBytesAreMissing)
{
   PiecewiseInputStream aStream(kBytes, 2);
   StreamBufferedPixelDataFragment aRead(aStream, 7);
   EXPECT_EQ(StreamErrorOf([&] { DataOf(aRead); }),
             (StreamError{"StreamBufferedPixelDataFragment::GetData(): EOF before end of input stream (2 bytes "
                          "remaining)",
                          TN_END_OF_FILE, 0}));
   EXPECT_FALSE(aRead.CanGetData());
   PiecewiseInputStream anOther(kBytes, 2);
   StreamBufferedPixelDataFragment aWritten(anOther, 0xFFFFFFFF);
   EXPECT_EQ(StreamErrorOf([&] { WrittenBy(aWritten); }),
             (StreamError{"StreamBufferedPixelDataFragment::WriteData(): EOF before end of input stream (4294967290 "
                          "bytes remaining)",
                          TN_END_OF_FILE, 0}));
}

TEST(StreamBufferedPixelDataFragment, CopiesWhatItReadsForIt)
{
   PiecewiseInputStream aStream(kBytes);
   StreamBufferedPixelDataFragment aFragment(aStream, 5);
   StreamBufferedPixelDataFragment aCopy(aFragment);
   EXPECT_NE(static_cast<const PixelDataFragment&>(aCopy).GetData(),
             static_cast<const PixelDataFragment&>(aFragment).GetData());
   EXPECT_EQ(DataOf(aCopy), "0102030405");
   EXPECT_EQ(WrittenBy(aCopy), "0102030405");
   EXPECT_EQ(aStream.Consumed(), 5u);
}

TEST(StreamBufferedPixelDataFragment, OfNoBytesNeedsNoStream)
{
   PiecewiseInputStream aStream({});
   StreamBufferedPixelDataFragment aFragment(aStream, 0);
   EXPECT_EQ(WrittenBy(aFragment), "");
   EXPECT_TRUE(aFragment.CanGetData());
   EXPECT_EQ(DataOf(aFragment), "");
   StreamBufferedPixelDataFragment aCopy(aFragment);
   EXPECT_TRUE(aCopy.CanGetData());
   EXPECT_EQ(aStream.Reads(), 0u);
}

TEST(StreamBufferedPixelDataFragment, OwnsAStreamPassedByPointer)
{
   bool isGone = false;
   {
      StreamBufferedPixelDataFragment aFragment(new WatchedStream(isGone), 5);
      EXPECT_EQ(DataOf(aFragment), "0102030405");
      EXPECT_FALSE(isGone);
   }
   EXPECT_TRUE(isGone);
}
} // namespace

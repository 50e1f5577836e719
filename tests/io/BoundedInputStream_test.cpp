#include "talvenor/io/BoundedInputStream.h"

#include <gtest/gtest.h>
#include <memory>

#include "support/CountingBytes.h"
#include "support/PiecewiseInputStream.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/MemoryStreams.h"

namespace
{

// Reads with a request of theCount and returns the bytes.
std::vector<unsigned char> ReadFrom(InputStream& theStream, unsigned int theCount)
{
   std::vector<unsigned char> aBytes(theCount);
   aBytes.resize(theStream.Read(aBytes.data(), theCount));
   return aBytes;
}

using Bytes = std::vector<unsigned char>;

} // namespace

TEST(BoundedInputStream, EndsAtTheWindowOrTheStreamWhicheverIsFirst)
{
   struct WindowCase
   {
      const char* itsName;
      unsigned int itsStream, itsWindow, itsExpected;
   };
   const WindowCase kCases[] = {
       {"stream longer than the window", 9, 4, 4},
       {"stream ends inside the window", 2, 4, 2},
       {"empty window", 4, 0, 0},
       {"largest window", 9, 0xFFFFFFFF, 9},
   };
   for (const WindowCase& aCase : kCases)
   {
      for (const unsigned int aPiece : {1U, 3U, 100U})
      {
         PiecewiseInputStream aStream(CountingBytes(aCase.itsStream, 0), aPiece);
         BoundedInputStream aWindow(aStream, aCase.itsWindow);
         unsigned char aBytes[20];
         EXPECT_EQ(aWindow.ReadFully(aBytes, sizeof aBytes), aCase.itsExpected) << aCase.itsName;
         EXPECT_EQ(aStream.Consumed(), aCase.itsExpected) << aCase.itsName;
      }
   }
}

TEST(BoundedInputStream, WithoutAStreamThereIsNothing)
{
   BoundedInputStream aWindow(static_cast<InputStream*>(nullptr), 5);
   BoundedInputStream anInner(aWindow, 3);
   unsigned char aByte;
   EXPECT_EQ(aWindow.Read(&aByte, 1), 0U);
   EXPECT_EQ(anInner.Read(&aByte, 1), 0U);
   anInner.Close();
}

TEST(BoundedInputStream, CannotBeLeftBySeekingOrSkipping)
{
   const Bytes aBytes = CountingBytes(20, 0);
   MemoryInputStream aStream(aBytes.data(), 20);
   BoundedInputStream aWindow(aStream, 5);
   EXPECT_EQ(aWindow.CanSeek(), 0);
   EXPECT_EQ(aWindow.Skip(12), 5U);
   EXPECT_EQ(aStream.GetStreamPosition(), 5U);
}

TEST(BoundedInputStream, AnInnerWindowEndsAtTheSameByteWhicheverWindowIsRead)
{
   PiecewiseInputStream aStream(CountingBytes(20, 0));
   BoundedInputStream anOuter(aStream, 8);
   EndianHandlingReader aReader(anOuter, TNEndian::BigEndian); // a window is seen through it
   BoundedInputStream anInner(aReader, 5);
   BoundedInputStream aWidest(anInner, 50); // clipped by those around it
   EXPECT_EQ(ReadFrom(anOuter, 2), (Bytes{0, 1}));
   EXPECT_EQ(anInner.GetRemaining(), 3U);
   EXPECT_EQ(ReadFrom(aWidest, 100), (Bytes{2, 3, 4}));
   EXPECT_EQ(ReadFrom(anOuter, 2), (Bytes{5, 6}));
   EXPECT_EQ(ReadFrom(anInner, 1), Bytes{});
   EXPECT_EQ(aWidest.GetRemaining(), 0U);
   EXPECT_EQ(anOuter.GetRemaining(), 1U);
}

TEST(BoundedInputStream, ManyNestedWindowsAskTheStreamOnceARead)
{
   PiecewiseInputStream aStream(CountingBytes(250, 0));
   std::vector<std::unique_ptr<BoundedInputStream>> aWindows;
   InputStream* anInnermost = &aStream;
   for (unsigned int i = 0; i < 256; ++i)
   {
      aWindows.push_back(std::make_unique<BoundedInputStream>(*anInnermost, 400 - i));
      anInnermost = aWindows.back().get();
   }
   EXPECT_EQ(ReadFrom(*anInnermost, 100).size(), 100U);
   EXPECT_EQ(aStream.Reads(), 1U);
   EXPECT_EQ(aWindows.front()->GetRemaining(), 300U);
   EXPECT_EQ(aWindows.back()->GetRemaining(), 45U);
   anInnermost->Close();
   EXPECT_TRUE(aStream.IsClosed());
}

TEST(BoundedInputStream, SkipRemainingTellsWhenTheStreamEndsFirst)
{
   PiecewiseInputStream aStream(CountingBytes(40000, 0), 7000);
   BoundedInputStream anOuter(aStream, 50000);
   BoundedInputStream anInner(anOuter, 30000);
   EXPECT_EQ(anInner.SkipRemaining(), 30000U);
   EXPECT_EQ(anOuter.GetRemaining(), 20000U);
   EXPECT_EQ(anOuter.SkipRemaining(), 10000U);
   EXPECT_EQ(anOuter.GetRemaining(), 10000U);
}

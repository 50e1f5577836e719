#include "talvenor/pixel/LookAheadInputStream.h"

#include <gtest/gtest.h>

#include "support/Decoding.h"
#include "talvenor/io/BufferingInputStream.h"
#include "talvenor/pixel/JPEGFileInputStream.h"

namespace
{
// 0, 1, ... 250, 0, 1, ...: no 0xFF, and a period that is no power of two.
Bytes Counting(std::size_t theSize)
{
   Bytes aBytes(theSize);
   for (std::size_t i = 0; i < theSize; ++i)
   {
      aBytes[i] = static_cast<unsigned char>(i % 251);
   }
   return aBytes;
}

Bytes ReadAll(InputStream& theStream)
{
   Bytes aBytes;
   unsigned char aBlock[1000];
   while (const unsigned int aCount = theStream.Read(aBlock, sizeof aBlock))
   {
      aBytes.insert(aBytes.end(), aBlock, aBlock + aCount);
   }
   return aBytes;
}

TEST(LookAheadInputStream, WhatIsReadAheadComesFirstAndIsCounted)
{
   Bytes aBytes = Counting(100000);
   aBytes[1000] = 0xFF;
   aBytes[1001] = 0xD9;
   for (const unsigned int aPiece : {1u, 999u, 1001u, 0xFFFFFFFFu})
   {
      SCOPED_TRACE("pieces of " + std::to_string(aPiece));
      PiecewiseInputStream aSource(aBytes, aPiece);
      BufferingInputStream aRecorder(aSource);
      JPEGFileInputStream aStream(aRecorder);
      INT64 anOffset = 0;
      ASSERT_TRUE(aStream.FindCodestreamPosition(JPEGFileInputStream::M_EOI, anOffset));
      EXPECT_EQ(anOffset, 1002);
      EXPECT_EQ(aStream.GetPosition(), 1002);
      EXPECT_EQ(aRecorder.GetBufferedBytesAvailable(), 1002 + aStream.GetLookAheadCount());
      EXPECT_LE(aStream.GetLookAheadCount(), 65536u);
      unsigned char aByte = 0;
      EXPECT_EQ(aStream.Read(&aByte, 1), 1u);
      EXPECT_EQ(aByte, aBytes[1002]);
      EXPECT_EQ(aStream.Skip(70000), 70000u) << "across the end of what was read ahead";
      EXPECT_EQ(aRecorder.GetBufferedBytesAvailable(), 71003u);
      EXPECT_EQ(ReadAll(aStream), Bytes(aBytes.begin() + 71003, aBytes.end()));
      EXPECT_EQ(aStream.GetStreamPosition(), 100000u);
   }
}

TEST(LookAheadInputStream, NothingBeyondTheLimitIsTaken)
{
   const struct
   {
      const char* itsName;
      std::function<INT64(JPEGFileInputStream&)> itsWay;
      INT64 itsExpected;
   } kCases[] = {
       {"Read", [](JPEGFileInputStream& theStream) { return INT64(ReadAll(theStream).size()); }, 10},
       {"Skip", [](JPEGFileInputStream& theStream) { return INT64{theStream.Skip(4000000000u)}; }, 10},
       {"search", [](JPEGFileInputStream& theStream) { return theStream.seekToEndOfCodestream(); }, -1},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      PiecewiseInputStream aSource(Counting(10) + Bytes{0xFF, 0xD9});
      JPEGFileInputStream aStream(aSource, 10);
      EXPECT_EQ(aCase.itsWay(aStream), aCase.itsExpected);
      EXPECT_EQ(aSource.Consumed(), 10u);
      EXPECT_EQ(aStream.readByte(), -1);
   }
}

TEST(LookAheadInputStream, BytesPushedBackComeFirstInAnyNumber)
{
   for (const unsigned int aCount : {1u, 256u, 257u, 70000u})
   {
      for (const bool isBehindSearch : {false, true})
      {
         SCOPED_TRACE(std::to_string(aCount) + (isBehindSearch ? " behind a search" : " at the start"));
         const Bytes aBytes = Bytes{0xFF, 0xD9} + Counting(5000);
         PiecewiseInputStream aSource(aBytes);
         JPEGFileInputStream aStream(aSource, 5002);
         const INT64 aPosition = isBehindSearch ? aStream.seekToEndOfCodestream() : 0;
         const Bytes aPushed(aCount, 0xAB);
         aStream.Pushback(aPushed.data(), aCount - 1);
         aStream.Pushback(Bytes{0xCD}.data(), 1);
         EXPECT_EQ(aStream.GetPosition(), aPosition - aCount);
         const Bytes anExpected =
             Bytes{0xCD} + First(aPushed, aCount - 1) + Bytes(aBytes.begin() + aPosition, aBytes.end());
         EXPECT_EQ(ReadAll(aStream), anExpected);
      }
   }
}

TEST(LookAheadInputStream, ResetForgetsWhatWasReadAhead)
{
   PiecewiseInputStream aSource(Bytes{0xFF, 0xD9, 1, 2, 3, 4, 5}, 4);
   JPEGFileInputStream aStream(aSource, 5);
   aStream.seekToEndOfCodestream();
   ASSERT_EQ(aStream.GetLookAheadCount(), 2u);
   aStream.Reset();
   EXPECT_EQ(aStream.GetPosition(), 0);
   EXPECT_EQ(ReadAll(aStream), (Bytes{3, 4, 5})) << "position and limit count from here";
}

TEST(LookAheadInputStream, OwnsWhatItIsGivenByPointer)
{
   struct Watched : PiecewiseInputStream
   {
      explicit Watched(bool& theIsGone) : PiecewiseInputStream({7}), itsIsGone(theIsGone) {}
      ~Watched() override { itsIsGone = true; }
      bool& itsIsGone;
   };
   bool isGone = false;
   {
      JPEGFileInputStream aStream(new Watched(isGone));
      EXPECT_EQ(aStream.readByte(), 7);
   }
   EXPECT_TRUE(isGone);
   JPEGFileInputStream aNone(nullptr);
   EXPECT_EQ(aNone.readByte(), -1);
   EXPECT_EQ(aNone.Skip(1), 0u);
   aNone.Close();
   PiecewiseInputStream aLent({7});
   JPEGFileInputStream(aLent).Close();
   EXPECT_TRUE(aLent.IsClosed());
}
} // namespace

#include "talvenor/io/BufferingInputStream.h"

#include <gtest/gtest.h>

#include "support/PiecewiseInputStream.h"

namespace
{

// Values that differ from block to block.
std::vector<unsigned char> Pattern(unsigned int theCount)
{
   std::vector<unsigned char> aBytes(theCount);
   for (unsigned int i = 0; i < theCount; ++i)
   {
      aBytes[i] = static_cast<unsigned char>(i * 7 + i / 256);
   }
   return aBytes;
}

} // namespace

TEST(BufferingInputStream, ReplaysWhatWasReadAndSkippedInOrder)
{
   const std::vector<unsigned char> aSource = Pattern(30000);
   for (const unsigned int aPiece : {1U, 5000U, 100000U})
   {
      PiecewiseInputStream aStream(aSource, aPiece);
      BufferingInputStream aRecorder(aStream);
      std::vector<unsigned char> aBytes(30000);
      EXPECT_EQ(aRecorder.ReadFully(aBytes.data(), 8191), 8191U);
      EXPECT_EQ(aRecorder.Skip(16000), 16000U);
      EXPECT_EQ(aRecorder.ReadFully(aBytes.data(), 10000), 5809U);
      EXPECT_EQ(aRecorder.Skip(1), 0U);
      EXPECT_EQ(aRecorder.GetBufferedBytesAvailable(), 30000U);

      EXPECT_EQ(aRecorder.ReadBufferedData(aBytes.data(), 100), 100U);
      EXPECT_EQ(aRecorder.SkipBufferedData(8192), 8192U);
      EXPECT_EQ(aRecorder.ReadBufferedData(aBytes.data() + 8292, 50000), 21708U);
      EXPECT_EQ(aRecorder.GetBufferedBytesAvailable(), 0U);
      EXPECT_TRUE(std::equal(aBytes.begin(), aBytes.begin() + 100, aSource.begin())) << aPiece;
      EXPECT_TRUE(std::equal(aBytes.begin() + 8292, aBytes.end(), aSource.begin() + 8292)) << aPiece;
   }
}

TEST(BufferingInputStream, RecordingGoesOnAfterAReplay)
{
   PiecewiseInputStream aStream(Pattern(20));
   BufferingInputStream aRecorder(aStream);
   unsigned char aBytes[20];
   aRecorder.Read(aBytes, 4);
   EXPECT_EQ(aRecorder.ReadBufferedData(aBytes, 3), 3U);
   aRecorder.Read(aBytes, 2); // goes on in the stream, not in the recording
   EXPECT_EQ(aBytes[0], Pattern(20)[4]);
   EXPECT_EQ(aRecorder.GetBufferedBytesAvailable(), 3U);
   EXPECT_EQ(aRecorder.ReadBufferedData(aBytes, 20), 3U);
   EXPECT_EQ(aBytes[0], Pattern(20)[3]);
   EXPECT_EQ(aBytes[2], Pattern(20)[5]);
}

TEST(BufferingInputStream, KeepsTheLastBytesWhenTheRecordingIsLimited)
{
   const std::vector<unsigned char> aSource = Pattern(200000);
   PiecewiseInputStream aStream(aSource);
   BufferingInputStream aRecorder(aStream);
   aRecorder.SetRecordingLimit(10000);
   std::vector<unsigned char> aBytes(200000);
   for (const unsigned int aCount : {1U, 9999U, 30000U, 20000U, 100U})
   {
      aRecorder.Read(aBytes.data(), aCount);
      EXPECT_LE(aRecorder.GetBufferedBytesAvailable(), 10000U + 8192U);
   }
   aRecorder.SkipBufferedData(static_cast<unsigned int>(aRecorder.GetBufferedBytesAvailable()) - 10000);
   EXPECT_EQ(aRecorder.ReadBufferedData(aBytes.data(), 20000), 10000U);
   EXPECT_TRUE(std::equal(aBytes.begin(), aBytes.begin() + 10000, aSource.begin() + 50100));

   aRecorder.Read(aBytes.data(), 100);
   EXPECT_EQ(aRecorder.Skip(50000), 50000U);
   EXPECT_EQ(aRecorder.GetBufferedBytesAvailable(), 0U) << "what is skipped is not recorded, nor what is before it";
   aRecorder.SetRecordingLimit(BufferingInputStream::kNoLimit);
   aRecorder.Read(aBytes.data(), 30);
   EXPECT_EQ(aRecorder.ReadOnward(aBytes.data(), 20), 20U);
   EXPECT_EQ(aRecorder.SkipOnward(20), 10U);
   EXPECT_EQ(aRecorder.ReadOnward(aBytes.data(), 20), 20U);
   EXPECT_EQ(aBytes[0], aSource[110230]);
   EXPECT_EQ(aRecorder.GetBufferedBytesAvailable(), 0U) << "what is read onward is not recorded";
}

// The defaults of InputStream and OutputStream, and the streams over memory and over nothing.
#include "talvenor/io/InputStream.h"

#include <functional>
#include <gtest/gtest.h>

#include "support/PiecewiseInputStream.h"
#include "support/RecordingOutputStream.h"
#include "support/StreamErrors.h"
#include "talvenor/io/BufferingInputStream.h"
#include "talvenor/io/FileStream.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/io/LFInputStream.h"
#include "talvenor/io/MemoryStreams.h"
#include "talvenor/io/NullStreams.h"

namespace
{

// Seekable without an end; remembers where it was told to go.
class EndlessInputStream : public InputStream
{
public:
   explicit EndlessInputStream(unsigned int thePosition) : itsPosition(thePosition) {}
   unsigned int Read(unsigned char*, unsigned int theCount) override { return theCount; }
   void Seek(unsigned int thePosition) override { itsPosition = thePosition; }
   int CanSeek() const override { return 1; }
   unsigned int GetStreamPosition() const override { return itsPosition; }
   void Close() override {}

private:
   unsigned int itsPosition;
};

} // namespace

TEST(InputStream, SkipReadsWhereItCannotSeek)
{
   const struct
   {
      unsigned int itsStream, itsPiece, itsSkip, itsExpected;
   } kCases[] = {{3000, 0xFFFFFFFF, 5000, 3000}, {9000, 0xFFFFFFFF, 5000, 5000}, {100, 1, 99, 99}};
   for (const auto& aCase : kCases)
   {
      PiecewiseInputStream aStream(std::vector<unsigned char>(aCase.itsStream), aCase.itsPiece);
      EXPECT_EQ(aStream.Skip(aCase.itsSkip), aCase.itsExpected) << aCase.itsStream;
      EXPECT_EQ(aStream.Consumed(), aCase.itsExpected) << aCase.itsStream;
   }
}

TEST(InputStream, SkipNeverWrapsAroundToAnEarlierPosition)
{
   EndlessInputStream aStream(0xFFFFFF00);
   EXPECT_EQ(aStream.Skip(0x200), 0x200U);
   EXPECT_EQ(aStream.GetStreamPosition(), 0xFFFFFFFFU);
}

TEST(InputStream, UnsupportedOperationsSaySo)
{
   PiecewiseInputStream anInput({});
   RecordingOutputStream anOutput;
   NullInputStream aNull;
   BufferingInputStream aBuffering(anInput);
   FileStream aFile("/nonexistent", std::ios::in);
   LFInputStream aLockedFile;
   const struct
   {
      const char* itsMessage;
      std::function<void()> itsOperation;
   } kCases[] = {
       {"InputStream does not support Seek(size_t)", [&] { anInput.Seek(1); }},
       {"InputStream does not support GetStreamPosition()", [&] { anInput.GetStreamPosition(); }},
       {"InputStream does not support Pushback(uchar_t*, size_t)", [&] { aLockedFile.Pushback(nullptr, 0); }},
       {"OutputStream does not support Seek(size_t)", [&] { anOutput.Seek(1); }},
       {"OutputStream does not support GetStreamPosition()", [&] { anOutput.GetStreamPosition(); }},
       {"NullInputStream does not support Seek(size_t)", [&] { aNull.Seek(1); }},
       {"NullInputStream does not support GetStreamPosition()", [&] { aNull.GetStreamPosition(); }},
       {"BufferingInputStream does not support Seek(size_t)", [&] { aBuffering.Seek(1); }},
       {"FileStream does not support Seek(size_t)", [&] { aFile.Seek(1); }},
       {"FileStream does not support GetStreamPosition()", [&] { aFile.GetStreamPosition(); }},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(StreamErrorOf(aCase.itsOperation), (StreamError{aCase.itsMessage, TN_UNSUPPORTED, 0}));
   }
}

TEST(OutputStream, TakesAnIOBufferAlsoWhenWritingFails)
{
   RecordingOutputStream aStream;
   auto* aBuffer = new IOBuffer(4);
   aBuffer->CopyIn(reinterpret_cast<const unsigned char*>("abcd"), 4);
   aBuffer->Skip(1);
   aStream.Write(aBuffer);
   EXPECT_EQ(aStream.Bytes(), (std::vector<unsigned char>{'b', 'c', 'd'}));
   aStream.Write(static_cast<IOBuffer*>(nullptr));
   aStream.Write(new IOBuffer(4));
   EXPECT_EQ(aStream.Writes(), 1U);

   unsigned char aSpace[2];
   MemoryOutputStream aSmall(aSpace, sizeof aSpace);
   auto* aLarge = new IOBuffer(4); // the leak checker sees whether it is destroyed
   aLarge->SetBytesCopiedIn(4);
   EXPECT_THROW(aSmall.Write(aLarge), StreamIOException);
}

TEST(NullOutputStream, CountsWhatItDoesNotKeep)
{
   NullOutputStream aStream;
   aStream.Seek(5);
   const unsigned char aBytes[3] = {};
   aStream.Write(aBytes, 3);
   EXPECT_EQ(aStream.GetStreamPosition(), 8U);
}

TEST(MemoryInputStream, EndsWithItsBytesAndClampsPositions)
{
   const unsigned char aBytes[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
   MemoryInputStream aStream(aBytes, sizeof aBytes);
   unsigned char aTarget[16] = {};
   EXPECT_EQ(aStream.Read(aTarget, 16), 10U);
   EXPECT_EQ(aTarget[9], 9);
   EXPECT_EQ(aStream.Read(aTarget, 16), 0U);
   aStream.Seek(20);
   EXPECT_EQ(aStream.GetStreamPosition(), 10U);
   aStream.Seek(3);
   EXPECT_EQ(aStream.Skip(50), 50U);
   EXPECT_EQ(aStream.GetStreamPosition(), 10U);
   aStream.Seek(8);
   EXPECT_EQ(aStream.Read(aTarget, 0xFFFFFFFF), 2U);
   EXPECT_EQ(aTarget[0], 8);
}

TEST(MemoryOutputStream, RefusesAWriteThatDoesNotFitWhole)
{
   unsigned char aSpace[4] = {};
   MemoryOutputStream aStream(aSpace, sizeof aSpace);
   const unsigned char aBytes[] = {1, 2, 3};
   aStream.Write(aBytes, 3);
   EXPECT_EQ(StreamErrorOf([&] { aStream.Write(aBytes, 2); }),
             (StreamError{"MemoryOutputBuffer::Write(): attempt to write beyond buffer end", TN_END_OF_FILE, 0}));
   EXPECT_EQ(aSpace[3], 0);
   aStream.Write(aBytes, 1);
   EXPECT_EQ(aSpace[3], 1);
}

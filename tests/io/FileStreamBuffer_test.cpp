#include "talvenor/io/FileStreamBuffer.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <random>
#include <string>
#include <sys/resource.h>

#include "support/TemporaryFile.h"
#include "support/TemporaryPipe.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{

std::string Text(std::size_t theLength)
{
   std::string aText(theLength, ' ');
   for (std::size_t i = 0; i < theLength; ++i)
   {
      aText[i] = static_cast<char>('a' + i * 7 % 26);
   }
   return aText;
}

std::string ReadBytes(FileStreamBuffer& theBuffer, std::size_t theCount)
{
   std::string aText(theCount, '?');
   bool hasFailed = false;
   aText.resize(theBuffer.ReadBytes(reinterpret_cast<unsigned char*>(aText.data()), theCount, hasFailed));
   EXPECT_FALSE(hasFailed);
   return aText;
}

bool WriteBytes(FileStreamBuffer& theBuffer, const std::string& theText)
{
   return theBuffer.WriteBytes(reinterpret_cast<const unsigned char*>(theText.data()), theText.size());
}

constexpr auto kIn = std::ios::in;
constexpr auto kOut = std::ios::out;
constexpr auto kApp = std::ios::app;
constexpr auto kTrunc = std::ios::trunc;

const unsigned int kBufferSizes[] = {0, 1, 7, 64, 4096};

// Ends the process: with 7 when a buffer of a gigabyte, in half a gigabyte of memory, fails as it should.
[[noreturn, maybe_unused]] void ReadUnderALimit(const char* theName)
{
   constexpr unsigned int kSize = 1U << 30;
   const rlimit aLimit = {kSize / 2, kSize / 2};
   setrlimit(RLIMIT_AS, &aLimit);
   FileStreamBuffer aBuffer(kSize);
   unsigned char aByte;
   bool hasFailed = false;
   try
   {
      aBuffer.Open(theName, kIn);
      aBuffer.ReadBytes(&aByte, 1, hasFailed);
   }
   catch (const BadAllocException& anException)
   {
      std::_Exit(anException.requested() == kSize ? 7 : 1);
   }
   std::_Exit(2);
}

} // namespace

TEST(FileStreamBuffer, OpensWithTheMeaningOfTheStandardModes)
{
   struct ModeCase
   {
      const char* itsName;
      std::ios::openmode itsMode;
      bool isOpenWhenMissing;
      const char* itsContents; // of a file "old" after "new" was written; null: does not open
   };
   const ModeCase kCases[] = {
       {"in", kIn, false, "old"},
       {"out", kOut, true, "new"},
       {"out app", kOut | kApp, true, "oldnew"},
       {"in out", kIn | kOut, false, "new"},
       {"in out ate", kIn | kOut | std::ios::ate, false, "oldnew"},
       {"in out app", kIn | kOut | kApp, true, "oldnew"},
       {"trunc alone", kTrunc, false, nullptr},
       {"in trunc", kIn | kTrunc, false, nullptr},
   };
   for (const ModeCase& aCase : kCases)
   {
      TemporaryFile aMissing;
      FileStreamBuffer aBuffer(64);
      EXPECT_EQ(aBuffer.Open(aMissing.Name(), aCase.itsMode), aCase.isOpenWhenMissing) << aCase.itsName;

      TemporaryFile aFile("old");
      FileStreamBuffer anOther(64);
      ASSERT_EQ(anOther.Open(aFile.Name(), aCase.itsMode), aCase.itsContents != nullptr) << aCase.itsName;
      if (aCase.itsContents != nullptr)
      {
         EXPECT_EQ(WriteBytes(anOther, "new"), aCase.itsMode != kIn) << aCase.itsName;
         EXPECT_TRUE(anOther.Close()) << aCase.itsName;
         EXPECT_EQ(aFile.Contents(), aCase.itsContents) << aCase.itsName;
      }
      else
      {
         EXPECT_EQ(anOther.GetError(), EINVAL) << aCase.itsName;
      }
   }
}

// The same operations on the buffer and on a string; every size of buffer, every kind of interface.
TEST(FileStreamBuffer, BehavesLikeAStandardStringBufferUnderMixedUse)
{
   for (const unsigned int aSize : kBufferSizes)
   {
      TemporaryFile aFile;
      std::mt19937 aRandom(aSize + 1);
      FileStreamBuffer aBuffer(aSize);
      ASSERT_TRUE(aBuffer.Open(aFile.Name(), kIn | kOut | kTrunc));
      std::string aModel;
      std::size_t aPosition = 0;
      for (int i = 0; i < 4000; ++i)
      {
         const std::size_t aCount = aRandom() % (aRandom() % 4 == 0 ? 300 : 12);
         switch (aRandom() % 8)
         {
         case 0:
         case 1:
         case 2: {
            const std::string anExpected = aModel.substr(std::min(aPosition, aModel.size()), aCount);
            std::string aText(i % 2 ? aCount : 0, '?'); // through either interface
            aText.resize(std::size_t(aBuffer.sgetn(aText.data(), std::streamsize(aText.size()))));
            ASSERT_EQ(i % 2 ? aText : ReadBytes(aBuffer, aCount), anExpected) << "step " << i << ", buffer " << aSize;
            aPosition += anExpected.size();
            break;
         }
         case 3: {
            const int anExpected = aPosition < aModel.size() ? aModel[aPosition++] : EOF;
            ASSERT_EQ(aBuffer.sbumpc(), anExpected) << "step " << i << ", buffer " << aSize;
            break;
         }
         case 4:
         case 5: {
            const std::string aText = Text(aCount);
            ASSERT_TRUE(WriteBytes(aBuffer, aText));
            if (!aText.empty())
            {
               aModel.resize(std::max(aModel.size(), aPosition + aText.size()));
               aModel.replace(aPosition, aText.size(), aText);
            }
            aPosition += aText.size();
            break;
         }
         case 6:
            aPosition = aRandom() % (aModel.size() + 5);
            ASSERT_TRUE(aBuffer.SetPosition(aPosition));
            break;
         default:
            ASSERT_TRUE(aRandom() % 2 == 0 || aBuffer.Synchronise());
            aModel.resize(std::max(aModel.size(), aPosition + 1));
            aModel[aPosition++] = 'Z';
            ASSERT_EQ(aBuffer.sputc('Z'), 'Z');
         }
         ASSERT_EQ(aBuffer.GetPosition(), aPosition) << "step " << i << ", buffer " << aSize;
      }
      ASSERT_TRUE(aBuffer.Close());
      EXPECT_EQ(aFile.Contents(), aModel) << aSize;
   }
}

TEST(FileStreamBuffer, ServesTheStandardStreams)
{
   for (const unsigned int aSize : kBufferSizes)
   {
      TemporaryFile aFile("12 34\nline\nrest");
      FileStreamBuffer aBuffer(aSize);
      ASSERT_TRUE(aBuffer.Open(aFile.Name(), kIn | kOut));
      std::iostream aStream(&aBuffer);
      int aNumber = 0;
      std::string aWord, aLine;
      aStream >> aNumber >> aWord >> aLine;
      EXPECT_EQ(aNumber, 12);
      EXPECT_EQ(aLine, "line");
      EXPECT_EQ(aStream.tellg(), 10);
      aStream.get();
      aStream.unget();
      EXPECT_EQ(aStream.get(), '\n');
      aStream.seekg(-4, std::ios::end);
      EXPECT_EQ(aStream.get(), 'r');
      aStream.seekp(1, std::ios::cur);
      aStream << "XY!" << std::flush;
      EXPECT_TRUE(aStream.good());
      EXPECT_EQ(aFile.Contents(), "12 34\nline\nreXY!") << aSize;
      EXPECT_EQ(aStream.seekg(-1).rdstate(), std::ios::failbit);
   }
}

TEST(FileStreamBuffer, TruncateAndLengthCountWhatIsBuffered)
{
   TemporaryFile aFile("0123456789");
   FileStreamBuffer aBuffer(64);
   ASSERT_TRUE(aBuffer.Open(aFile.Name(), kIn | kOut));
   EXPECT_EQ(ReadBytes(aBuffer, 2), "01");
   ASSERT_TRUE(aBuffer.Truncate(4));
   EXPECT_EQ(ReadBytes(aBuffer, 99), "23"); // nothing read ahead is left
   WriteBytes(aBuffer, "abc");
   UINT64 aLength = 0;
   ASSERT_TRUE(aBuffer.GetLength(aLength));
   EXPECT_EQ(aLength, 7U);
   ASSERT_TRUE(aBuffer.Truncate(0));
   ASSERT_TRUE(aBuffer.SetPosition(0));
   WriteBytes(aBuffer, "xyz");
   ASSERT_TRUE(aBuffer.Close());
   EXPECT_EQ(aFile.Contents(), "xyz");
}

TEST(FileStreamBuffer, AClosedOneTakesAndGivesNothing)
{
   unsigned char aByte;
   bool hasFailed = false;
   FileStreamBuffer aClosed(16);
   EXPECT_EQ(aClosed.ReadBytes(&aByte, 1, hasFailed), 0U);
   EXPECT_TRUE(hasFailed);
   EXPECT_EQ(aClosed.GetError(), EBADF);
   EXPECT_FALSE(aClosed.WriteBytes(&aByte, 1));
   EXPECT_FALSE(aClosed.WriteBytes(&aByte, 1)); // nor is a second attempt taken into the buffer
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // whose own memory does not fit under the limit
TEST(FileStreamBuffer, ABufferThatIsNotToBeHadIsTold)
{
   TemporaryFile aFile("text");
   GTEST_FLAG_SET(death_test_style, "threadsafe");
   EXPECT_EXIT(ReadUnderALimit(aFile.Name()), testing::ExitedWithCode(7), "");
}
#endif

TEST(FileStreamBuffer, RefusesToWriteWhatWasOpenedForReading)
{
   TemporaryFile aFile("text");
   for (const unsigned int aSize : kBufferSizes)
   {
      FileStreamBuffer aBuffer(aSize);
      ASSERT_TRUE(aBuffer.Open(aFile.Name(), kIn));
      EXPECT_EQ(ReadBytes(aBuffer, 2), "te") << aSize;
      EXPECT_FALSE(WriteBytes(aBuffer, "x")) << aSize;
      EXPECT_EQ(aBuffer.GetError(), EBADF) << aSize;
      EXPECT_EQ(ReadBytes(aBuffer, 9), "xt") << aSize;
   }
}

TEST(FileStreamBuffer, ReadsAPipeWhichHasNoPositions)
{
   TemporaryPipe aPipe("some bytes that came through a pipe");
   FileStreamBuffer aReader(16);
   ASSERT_TRUE(aReader.Open(aPipe.Name(), kIn));
   EXPECT_EQ(ReadBytes(aReader, 5), "some ");
   EXPECT_TRUE(aReader.Synchronise()); // does not lose what was read ahead
   EXPECT_EQ(ReadBytes(aReader, 99), "bytes that came through a pipe");
   EXPECT_FALSE(aReader.SetPosition(1));
   EXPECT_EQ(aReader.GetError(), ESPIPE);
}

TEST(FileStreamBuffer, WritesAPipeAndNothingOfItStaysForTheNextFile)
{
   int anEnds[2];
   ASSERT_EQ(::pipe(anEnds), 0);
   FileStreamBuffer aBuffer(16);
   ASSERT_TRUE(aBuffer.Open(("/proc/self/fd/" + std::to_string(anEnds[1])).c_str(), kOut));
   ::close(anEnds[1]);
   EXPECT_TRUE(WriteBytes(aBuffer, Text(10)) && WriteBytes(aBuffer, Text(50)) && aBuffer.Close());
   const std::string aName = "/proc/self/fd/" + std::to_string(anEnds[0]);
   ASSERT_TRUE(aBuffer.Open(aName.c_str(), kIn));
   ::close(anEnds[0]);
   EXPECT_EQ(ReadBytes(aBuffer, 50), Text(10) + Text(50).substr(0, 40));
   EXPECT_EQ(ReadBytes(aBuffer, 2), Text(50).substr(40, 2)); // the rest is read ahead
   EXPECT_TRUE(aBuffer.Close());

   TemporaryFile aFile("0123456789");
   ASSERT_TRUE(aBuffer.Open(aFile.Name(), kIn | kOut));
   EXPECT_EQ(ReadBytes(aBuffer, 2), "01");
   EXPECT_TRUE(aBuffer.SetPosition(8) && WriteBytes(aBuffer, "x") && aBuffer.Close());
   EXPECT_EQ(aFile.Contents(), "01234567x9");
}

TEST(FileStreamBuffer, PositionsGoBeyondFourGigabytes)
{
   TemporaryFile aFile("start");
   FileStreamBuffer aBuffer(16);
   ASSERT_TRUE(aBuffer.Open(aFile.Name(), kIn | kOut));
   const UINT64 aFarAway = UINT64{5} << 30;
   ASSERT_TRUE(aBuffer.SetPosition(aFarAway));
   WriteBytes(aBuffer, "end"); // a hole lies between
   ASSERT_TRUE(aBuffer.SetPosition(aFarAway + 1));
   EXPECT_EQ(ReadBytes(aBuffer, 9), "nd");
   EXPECT_FALSE(aBuffer.SetPosition(UINT64{1} << 63));
   EXPECT_EQ(aBuffer.GetError(), EINVAL);
}

#include "talvenor/foundation/LogStream.h"

#include <cerrno>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "support/OnAnotherThread.h"
#include "support/TemporaryDirectory.h"

namespace
{

constexpr INT64 kNow = 1795383605005; // 2026-11-22 21:40:05.005 UTC

// What ends both marker lines: process and thread.
std::string Ids()
{
   return std::to_string(::getpid()) + "." + std::to_string(::gettid());
}

// A stream that is held for good ends the test by its time limit.
bool IsFree(LogStream& theLog)
{
   return OnAnotherThread([&] { return theLog.Lock() && theLog.Unlock(); });
}

class FailingBuffer : public std::streambuf
{
protected:
   int_type overflow(int_type) override { throw std::runtime_error("disk full"); }
};

} // namespace

TEST(LogStream, FramesAnEntryWithNumberTimeProcessAndThread)
{
   FakeClock aClock(kNow);
   std::ostringstream anOutput;
   LogStream aLog(anOutput);
   startentry(aLog) << "one\n";
   aClock.Advance(61); // the end line repeats the start
   endentry(aLog);
   aLog << startinfoentry << "two\n" << endentry;
   EXPECT_EQ(anOutput.str(), "-------------------> 1 2026-11-22 21:40:05.5 " + Ids() + "\none\n" +
                                 "<------------------- 1 2026-11-22 21:40:05.5 " + Ids() + "\n" +
                                 "-------------------> 2 2026-11-22 21:41:06.5 " + Ids() + "\ntwo\n" +
                                 "<------------------- 2 2026-11-22 21:41:06.5 " + Ids() + "\n");
}

TEST(LogStream, WritesDatesInUTC)
{
   const struct
   {
      INT64 itsMilliseconds;
      const char* itsText;
   } kCases[] = {
       {951'868'799'999, " 2000-02-29 23:59:59.999 "},  // leap day of a century
       {4'294'967'296'010, " 2106-02-07 06:28:16.10 "}, // beyond 32 bits
   };
   for (const auto& aCase : kCases)
   {
      FakeClock aClock(aCase.itsMilliseconds);
      std::ostringstream anOutput;
      LogStream aLog(anOutput);
      aLog << startentry << endentry;
      EXPECT_THAT(anOutput.str(), testing::HasSubstr(aCase.itsText));
   }
}

TEST(LogStream, MarkerLinesIgnoreTheFormatOfTheOutput)
{
   FakeClock aClock(kNow);
   std::ostringstream anOutput;
   LogStream aLog(anOutput);
   aLog << std::hex << std::showbase << std::setfill('*');
   aLog.width(6);
   aLog << startentry << 255 << endentry;
   EXPECT_EQ(anOutput.str(), "-------------------> 1 2026-11-22 21:40:05.5 " + Ids() + "\n**0xff" +
                                 "<------------------- 1 2026-11-22 21:40:05.5 " + Ids() + "\n");
}

TEST(LogStream, WhileOffAcceptsEverythingAndAnswersNeutrally)
{
   LogStream aLog;
   aLog << startentry << "lost " << static_cast<const char*>(nullptr) << std::hex << std::endl << indent << endentry;
   EXPECT_FALSE(aLog.IsOn());
   EXPECT_EQ(aLog.GetEntryCounter(), 1u);
   EXPECT_EQ(aLog.tellp(), std::streampos(-1));
   EXPECT_FALSE(aLog.fail() || aLog.bad() || aLog.eof() || aLog.good());
   EXPECT_TRUE(!aLog);
   aLog.iword(3) = 5;
   EXPECT_EQ(aLog.iword(3), 0);
}

TEST(LogStream, StopsAtTheEndOfTheCallersArray)
{
   char aBuffer[] = "......";
   LogStream aLog(aBuffer, 4);
   aLog << "ab"
        << "cdef";
   EXPECT_TRUE(aLog.fail());
   EXPECT_STREQ(aBuffer, "abcd..");
}

TEST(LogStream, OpenModesDecideAboutFormerContents)
{
   const struct
   {
      int itsMode;
      const char* itsText;
   } kCases[] = {{10, "old new"}, {2, " new"}, {18, " new"}, {1 | 2 | 4, "old new"}};
   const TemporaryDirectory aDirectory;
   const std::string aFile = aDirectory.File("x.log");
   for (const auto& aCase : kCases)
   {
      WriteFile(aFile, "old");
      LogStream aLog(aFile.c_str(), aCase.itsMode, 64);
      aLog << " new";
      aLog.Off();
      EXPECT_EQ(ReadFile(aFile), aCase.itsText) << aCase.itsMode;
   }
   LogStream aTarget, aRedirected(aTarget);
   aRedirected.On(aFile.c_str(), 10, 64);
   EXPECT_FALSE(aRedirected.IsRedirected()) << "the file takes the place of the other log";
}

TEST(LogStream, AppendsBehindAnotherWriterOfTheSameFile)
{
   const TemporaryDirectory aDirectory;
   const std::string aFile = aDirectory.File("x.log");
   LogStream aFirst(aFile.c_str(), 10, 64);
   LogStream aSecond(aFile.c_str(), 10, 64);
   (aFirst << "1").flush();
   (aSecond << "2").flush();
   (aFirst << "3").flush();
   EXPECT_EQ(ReadFile(aFile), "123");
}

TEST(LogStream, RefusesARedirectionThatLeadsBackToIt)
{
   LogStream aFirst, aSecond, aThird;
   aFirst.On(aFirst);
   EXPECT_FALSE(aFirst.IsRedirected());
   aSecond.On(aFirst);
   aThird.On(aSecond);
   aFirst.On(aThird);
   EXPECT_FALSE(aFirst.IsRedirected());
   aFirst = aThird; // assignment takes over a redirection
   EXPECT_TRUE(aThird.IsRedirected());
   aSecond = aThird;
   EXPECT_FALSE(aSecond.IsRedirected());
   aThird << startentry << "no endless loop" << endentry;
}

TEST(LogStream, AssignmentSharesTheOutputAndCopiesTheRest)
{
   const TemporaryDirectory aDirectory;
   const std::string aFile = aDirectory.File("x.log");
   LogStream aCopy;
   {
      LogStream aLog(aFile.c_str(), 10, 64);
      aLog.SetEntryStartMarker("start");
      aLog.SetEntryEndMarker("end");
      aLog.SetIndent("  ");
      aLog << startentry << endentry;
      aCopy = aLog;
      startentry(aLog);
      EXPECT_TRUE(IsFree(aCopy)); // each has its own mutex
      endentry(aLog);
   }
   aCopy << startentry << indent << "still open\n" << endentry;
   aCopy.Off();
   const std::string aText = ReadFile(aFile);
   EXPECT_THAT(aText, testing::ContainsRegex("start 2 [^\n]*\n  still open\nend 2 [^\n]*\n$"));
}

TEST(LogStream, EntriesKeepErrno)
{
   const TemporaryDirectory aDirectory;
   LogStream aLog(aDirectory.File("x.log").c_str(), 10, 64);
   errno = EDOM;
   startentry(aLog);
   EXPECT_EQ(errno, EDOM);
   errno = ERANGE;
   endentry(aLog);
   EXPECT_EQ(errno, ERANGE);
}

TEST(LogStream, LocksItsWholeChainForAnEntry)
{
   std::ostringstream anOutput;
   LogStream aTarget(anOutput);
   LogStream aLog(aTarget);
   std::thread anotherThread;
   startentry(aLog);
   startentry(aLog); // nested: recursive
   anotherThread = std::thread([&] { aTarget << startentry << "other\n" << endentry; });
   std::this_thread::sleep_for(std::chrono::milliseconds(10));
   aLog << "inner\n" << endentry << "outer\n" << endentry;
   anotherThread.join();
   EXPECT_THAT(anOutput.str(), testing::ContainsRegex("outer\n<-* 2 [^\n]*\n-*> 3 [^\n]*\nother\n"));
   EXPECT_TRUE(IsFree(aLog));
}

TEST(LogStream, IsReleasedWhenAnEntryOrItsOutputThrows)
{
   FailingBuffer aBuffer;
   std::ostream anOutput(&aBuffer);
   anOutput.exceptions(std::ios::badbit);
   LogStream aLog;
   EXPECT_THROW(
       {
          LogEntry anEntry(aLog, LogStream::WarningSeverity);
          throw std::runtime_error("dump");
       },
       std::runtime_error);
   EXPECT_TRUE(IsFree(aLog));
   startentry(aLog);
   aLog.On(anOutput); // from here on every write throws
   EXPECT_THROW(endentry(aLog), std::runtime_error);
   EXPECT_TRUE(IsFree(aLog));
   anOutput.clear();
   EXPECT_THROW(startentry(aLog), std::runtime_error);
   EXPECT_TRUE(IsFree(aLog));
}

TEST(LogStream, EntriesOfThreadsDoNotInterleave)
{
   constexpr int kThreads = 4, kEntries = 200;
   std::ostringstream anOutput;
   LogStream aTarget(anOutput);
   LogStream aRedirected(aTarget);
   OnThreads(kThreads, [&](int theThread) {
      for (int anEntry = 0; anEntry < kEntries; ++anEntry)
      {
         LogEntry(theThread % 2 ? aTarget : aRedirected) << theThread << " " << anEntry << "\n";
      }
   });
   std::istringstream aText(anOutput.str());
   std::string aStart, aBody, anEnd;
   int aCount = 0;
   while (std::getline(aText, aStart) && std::getline(aText, aBody) && std::getline(aText, anEnd))
   {
      ++aCount;
      ASSERT_EQ(aStart.rfind("-------------------> " + std::to_string(aCount) + " ", 0), 0u) << aStart;
      ASSERT_EQ(aBody.find_first_not_of("0123456789 "), std::string::npos) << aBody;
      ASSERT_EQ(anEnd.substr(20), aStart.substr(20));
   }
   EXPECT_EQ(aCount, kThreads * kEntries);
}

// The sanitizer of threads is the judge of the members that return nothing to compare.
TEST(LogStream, MayBeSetAndAskedWhileOthersWriteEntries)
{
   std::ostringstream aText;
   LogStream aLog(aText);
   constexpr unsigned int kEntries = 200;
   std::thread aWriter([&] {
      for (unsigned int i = 0; i < kEntries; ++i)
      {
         LogEntry(aLog, LogStream::InfoSeverity) << indent << "text\n";
      }
   });
   unsigned int aCounter = 0;
   while (aCounter < kEntries)
   {
      aLog.SetIndent(std::string(40, aLog.GetIndent().starts_with("+") ? '-' : '+'));
      aLog.SetEntryStartMarker(std::string(40, 's'));
      aLog.SetEntryEndMarker(std::string(40, 'e'));
      const unsigned int aNewCounter = aLog.GetEntryCounter();
      EXPECT_GE(aNewCounter, aCounter);
      aCounter = aNewCounter;
      EXPECT_TRUE(aCounter == 0 || aLog.GetSeverity() == LogStream::InfoSeverity);
   }
   aWriter.join();
   EXPECT_EQ(aLog.GetSeverity(), LogStream::InfoSeverity);
}

TEST(LogStream, MayBeSwitchedWhileOthersWriteEntries)
{
   std::ostringstream aFirst, aSecond;
   LogStream aTarget(aSecond);
   LogStream aLog;
   std::atomic<bool> isDone{false};
   std::thread aWriter([&] {
      while (!isDone)
      {
         LogEntry(aLog) << "text\n";
      }
   });
   for (int aRound = 0; aRound < 200; ++aRound)
   {
      aLog.On(aFirst);
      aLog.On(aTarget);
      aLog.Off();
   }
   isDone = true;
   aWriter.join();
   for (const std::string& aText : {aFirst.str(), aSecond.str()})
   {
      EXPECT_TRUE(aText.empty() || aText.compare(0, 20, "------------------->") == 0);
      EXPECT_TRUE(aText.empty() || aText.back() == '\n');
   }
}

#include "talvenor/foundation/CapturingVersioningLogStream.h"

#include <atomic>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "support/TemporaryDirectory.h"

namespace
{

struct Call
{
   CapturingVersioningLogStream* itsLog;
   std::string itsText;
};

std::vector<Call> gCalls;

void Record(CapturingVersioningLogStream& theLog, const std::string& theText)
{
   gCalls.push_back({&theLog, theText});
}

class CapturingVersioningLogStreamTest : public testing::Test
{
protected:
   CapturingVersioningLogStreamTest() { gCalls.clear(); }

   FakeClock itsClock; // later than in any test before: time stamps are given
   TemporaryDirectory itsDirectory;
   std::string itsFile = itsDirectory.File("x.log");
};

} // namespace

TEST_F(CapturingVersioningLogStreamTest, GivesTheCallbackStartLineAndBodyOnce)
{
   CapturingVersioningLogStream aLog;
   aLog.SetCaptureCallback(Record); // before there is a file: kept
   aLog.On(itsFile.c_str());
   for (const int aNumber : {1, 2})
   {
      startentry(aLog) << "body " << aNumber << "\n";
      EXPECT_EQ(aLog.GetCaptureLength(), aLog.GetCapture().size());
      EXPECT_NE(aLog.GetCapture().find("body"), std::string::npos);
      endentry(aLog);
   }
   ASSERT_EQ(gCalls.size(), 2u);
   EXPECT_EQ(gCalls[1].itsLog, &aLog);
   const std::string aFile = ReadFile(itsFile);
   const std::string anEndMarker = "<-------------------";
   EXPECT_EQ(aFile.find(gCalls[0].itsText), 0u);
   EXPECT_EQ(aFile.find(anEndMarker), gCalls[0].itsText.size());
   EXPECT_THAT(gCalls[1].itsText, testing::MatchesRegex("-*> 2 [^\n]*\nbody 2\n"));
   EXPECT_EQ(aLog.GetCapture(), "");
}

TEST_F(CapturingVersioningLogStreamTest, CapturesOnlyAFileOfItsOwnAndOnlyWithASize)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 0);
   aLog.SetCaptureCallback(Record);
   EXPECT_TRUE(aLog.IsCaptureEnabled());
   EXPECT_EQ(aLog.GetMaxCaptureSize(), 4096u);
   aLog.SetMaxCaptureSize(0);
   EXPECT_FALSE(aLog.IsCaptureEnabled());
   aLog << startentry << "size 0\n" << endentry;
   aLog.SetMaxCaptureSize(1);
   std::ostringstream anOutput;
   aLog.On(anOutput);
   aLog << startentry << "not a file\n" << endentry;
   EXPECT_TRUE(gCalls.empty());
   EXPECT_EQ(aLog.GetMaxCaptureSize(), 0u);
   EXPECT_EQ(aLog.GetCallback(), nullptr);
   aLog.On(itsFile.c_str());
   aLog << startentry << "longer than one character\n" << endentry;
   ASSERT_EQ(gCalls.size(), 1u);
   EXPECT_NE(gCalls[0].itsText.find("longer than one character\n"), std::string::npos);
   EXPECT_EQ(aLog.GetCallback(), &Record);
}

TEST_F(CapturingVersioningLogStreamTest, TextOutsideAnEntryIsNotCaptured)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 0);
   aLog.SetCaptureCallback(Record);
   aLog << "before\n" << startentry << endentry << "after\n" << startentry << endentry;
   ASSERT_EQ(gCalls.size(), 2u);
   for (const Call& aCall : gCalls)
   {
      EXPECT_THAT(aCall.itsText, testing::MatchesRegex("-*> [^\n]*\n"));
   }
}

TEST_F(CapturingVersioningLogStreamTest, TheCaptureIsFormattedAsTheOutput)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 0);
   aLog.SetCaptureCallback(Record);
   aLog << std::hex << std::setfill('0');
   aLog << startentry << std::setw(4) << 255 << std::dec << 255;
   aLog.setf(std::ios::showpos);
   aLog << 1 << endentry;
   aLog.Off();
   ASSERT_EQ(gCalls.size(), 1u);
   EXPECT_NE(gCalls[0].itsText.find("\n00ff255+1"), std::string::npos) << gCalls[0].itsText;
   EXPECT_EQ(ReadFile(itsFile).find(gCalls[0].itsText), 0u);
}

TEST_F(CapturingVersioningLogStreamTest, ARedirectedStreamUsesTheCaptureOfItsTarget)
{
   CapturingVersioningLogStream aTarget(itsFile.c_str(), 0);
   CapturingVersioningLogStream aLog;
   aLog.SetCaptureCallback(nullptr); // kept by aLog itself, and hidden while it has a target
   aLog.On(aTarget);
   aLog.SetCaptureCallback(Record); // passed on
   EXPECT_EQ(aTarget.GetCallback(), &Record);
   EXPECT_EQ(aLog.GetMaxCaptureSize(), 4096u);
   aLog << startentry << "through\n" << endentry;
   aTarget << startentry << "direct\n" << endentry;
   ASSERT_EQ(gCalls.size(), 2u);
   EXPECT_EQ(gCalls[0].itsLog, &aLog);
   EXPECT_THAT(gCalls[0].itsText, testing::MatchesRegex("-*> 1 [^\n]*\nthrough\n"));
   EXPECT_EQ(gCalls[1].itsLog, &aTarget);

   LogStream& aPlainTarget = aTarget;
   aLog.On(aPlainTarget); // redirected without sharing the capture
   aLog << startentry << endentry;
   EXPECT_EQ(gCalls.size(), 2u);
}

TEST_F(CapturingVersioningLogStreamTest, EntriesOfTheCallbackDoNotCallIt)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 0);
   aLog.SetCaptureCallback([](CapturingVersioningLogStream& theLog, const std::string& theText) {
      Record(theLog, theText);
      theLog << startentry << "inner\n" << endentry;
   });
   aLog << startentry << "outer\n" << endentry;
   ASSERT_EQ(gCalls.size(), 1u);
   EXPECT_EQ(gCalls[0].itsText.find("inner"), std::string::npos);
   EXPECT_NE(ReadFile(itsFile).find("inner\n"), std::string::npos);
   aLog << startentry << "again\n" << endentry;
   ASSERT_EQ(gCalls.size(), 2u);
   EXPECT_EQ(gCalls[1].itsText.find("inner"), std::string::npos);
}

TEST_F(CapturingVersioningLogStreamTest, IsReleasedAndGoesOnWhenTheCallbackThrows)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 0);
   aLog.SetCaptureCallback([](CapturingVersioningLogStream& theLog, const std::string& theText) {
      Record(theLog, theText);
      throw std::runtime_error("host");
   });
   startentry(aLog);
   EXPECT_THROW(endentry(aLog), std::runtime_error);
   std::thread([&] { LogEntry(aLog) << "second\n"; }).join(); // would hang if the mutex were held
   ASSERT_EQ(gCalls.size(), 2u);
   EXPECT_NE(gCalls[1].itsText.find("second"), std::string::npos);
}

TEST_F(CapturingVersioningLogStreamTest, IsNotDestroyedUnderAnOpenEntry)
{
   auto aLog = std::make_unique<CapturingVersioningLogStream>(itsFile.c_str(), 10);
   aLog->SetCaptureCallback(Record);
   std::atomic<bool> isOpen = false;
   std::thread aWriter([&isOpen, &aStream = *aLog] {
      startentry(aStream) << "body";
      isOpen = true;
      std::this_thread::sleep_for(std::chrono::milliseconds(20)); // in which the destructor begins
      aStream << " and end\n" << endentry;
   });
   while (!isOpen)
   {
      std::this_thread::yield();
   }
   aLog.reset();
   aWriter.join();
   ASSERT_EQ(gCalls.size(), 1u);
   EXPECT_NE(gCalls[0].itsText.find("body and end\n"), std::string::npos);
   EXPECT_EQ(itsDirectory.FileCount(), 2u); // rolled over
}

TEST_F(CapturingVersioningLogStreamTest, RollsOverAfterTheCallback)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 10);
   aLog.SetCaptureCallback(Record);
   aLog << startentry << "one\n" << endentry;
   aLog << startentry << "two\n" << endentry;
   EXPECT_EQ(itsDirectory.FileCount(), 3u);
   EXPECT_EQ(ReadFile(itsFile), "");
   ASSERT_EQ(gCalls.size(), 2u);
   EXPECT_NE(gCalls[1].itsText.find("two\n"), std::string::npos);
   EXPECT_EQ(aLog.GetFilename(), itsFile);
   EXPECT_EQ(aLog.GetThreshold(), 10u);
}

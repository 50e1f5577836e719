#include "talvenor/foundation/CapturingVersioningLogStream.h"

#include <atomic>
#include <chrono>
#include <iomanip>
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
   aLog << startentry << "body 1\n" << endentry << "between\n" << startentry << "body 2\n" << endentry;
   ASSERT_EQ(gCalls.size(), 2u);
   EXPECT_EQ(gCalls[1].itsLog, &aLog);
   const std::string aFile = ReadFile(itsFile);
   const std::string anEndMarker = "<-------------------";
   EXPECT_EQ(aFile.find(gCalls[0].itsText), 0u);
   EXPECT_EQ(aFile.find(anEndMarker), gCalls[0].itsText.size());
   EXPECT_THAT(gCalls[1].itsText, testing::MatchesRegex("-*> 2 [^\n]*\nbody 2\n"));
}

TEST_F(CapturingVersioningLogStreamTest, CapturesOnlyAFileOfItsOwnAndOnlyWithASize)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 0);
   aLog.SetCaptureCallback(Record);
   aLog.SetMaxCaptureSize(0);
   aLog << startentry << "size 0\n" << endentry;
   aLog.SetMaxCaptureSize(1);
   std::ostringstream anOutput;
   aLog.On(anOutput);
   aLog << startentry << "not a file\n" << endentry;
   EXPECT_TRUE(gCalls.empty());
   aLog.On(itsFile.c_str());
   aLog << startentry << "longer than one character\n" << endentry;
   ASSERT_EQ(gCalls.size(), 1u);
   EXPECT_NE(gCalls[0].itsText.find("longer than one character\n"), std::string::npos);
}

TEST_F(CapturingVersioningLogStreamTest, TheCaptureIsFormattedAsTheOutput)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 0);
   aLog.SetCaptureCallback(Record);
   aLog << std::hex << std::setfill('0') << startentry << std::setw(4) << 255 << std::dec << 255 << endentry;
   aLog.Off();
   ASSERT_EQ(gCalls.size(), 1u);
   EXPECT_NE(gCalls[0].itsText.find("\n00ff255"), std::string::npos);
   EXPECT_EQ(ReadFile(itsFile).find(gCalls[0].itsText), 0u);
}

TEST_F(CapturingVersioningLogStreamTest, ARedirectedStreamUsesTheCaptureOfItsTarget)
{
   CapturingVersioningLogStream aTarget(itsFile.c_str(), 0);
   CapturingVersioningLogStream aLog;
   aLog.SetCaptureCallback(nullptr); // kept by aLog itself, and hidden while it has a target
   aLog.On(aTarget);
   aLog.SetCaptureCallback(Record); // passed on
   aLog << startentry << "through\n" << endentry;
   aTarget << startentry << "direct\n" << endentry;
   ASSERT_EQ(gCalls.size(), 2u);
   EXPECT_EQ(gCalls[0].itsLog, &aLog);
   EXPECT_THAT(gCalls[0].itsText, testing::MatchesRegex("-*> 1 [^\n]*\nthrough\n"));
   EXPECT_EQ(gCalls[1].itsLog, &aTarget);
}

TEST_F(CapturingVersioningLogStreamTest, EntriesOfTheCallbackDoNotCallIt)
{
   CapturingVersioningLogStream aLog(itsFile.c_str(), 0);
   aLog.SetCaptureCallback([](CapturingVersioningLogStream& theLog, const std::string& theText) {
      Record(theLog, theText);
      theLog << startentry << "inner\n" << endentry;
   });
   aLog << startentry << "outer\n" << endentry;
   aLog << startentry << "again\n" << endentry;
   EXPECT_NE(ReadFile(itsFile).find("inner\n"), std::string::npos);
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

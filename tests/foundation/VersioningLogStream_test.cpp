#include "talvenor/foundation/VersioningLogStream.h"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "support/TemporaryDirectory.h"
#include "talvenor/foundation/UniqueTimestamp.h"

namespace
{

// On a clock that no test before has seen later: without that there would be no time stamps.
class VersioningLogStreamTest : public testing::Test
{
protected:
   FakeClock itsClock;
};

} // namespace

TEST(LogRollover, PutsTheStampBeforeTheExtension)
{
   struct NameCase
   {
      const char* itsFilename;
      const char* itsVersion;
   };
   const NameCase kCases[] = {
       {"trace.log", "trace-7.log"},       {"a.b.c", "a.b-7.c"},     {"trace.", "trace-7."},
       {"/var/a.d/log", "/var/a.d/log-7"}, {".hidden", "-7.hidden"},
   };
   for (const NameCase& aCase : kCases)
   {
      EXPECT_EQ(LogRollover::VersionName(aCase.itsFilename, "7"), aCase.itsVersion) << aCase.itsFilename;
   }
}

TEST_F(VersioningLogStreamTest, RollsOverAtTheThresholdAndNotBelow)
{
   for (const unsigned int aMissing : {0u, 1u}) // the clock stands still: entries are of one size
   {
      const TemporaryDirectory aDirectory;
      VersioningLogStream aLog(aDirectory.File("x").c_str(), 0);
      aLog << startentry << endentry;
      const unsigned int anEntrySize = static_cast<unsigned int>(ReadFile(aDirectory.File("x")).size());
      aLog.SetThreshold(2 * anEntrySize + aMissing);
      aLog << startentry << endentry;
      EXPECT_EQ(aDirectory.FileCount(), aMissing == 0 ? 2u : 1u) << aMissing;
      EXPECT_EQ(ReadFile(aDirectory.File("x")).empty(), aMissing == 0);
      EXPECT_NE(aLog.SwitchVersions(), "") << "the name of the file put aside";
   }
}

TEST_F(VersioningLogStreamTest, CountsWhatAnAppendedFileHeldBefore)
{
   const TemporaryDirectory aDirectory;
   WriteFile(aDirectory.File("x"), std::string(2000, 'a'));
   VersioningLogStream aLog(aDirectory.File("x").c_str(), 1000);
   aLog << startentry << endentry;
   EXPECT_EQ(aDirectory.FileCount(), 2u);
}

TEST_F(VersioningLogStreamTest, NeverRollsOverWithoutThresholdOrFile)
{
   const TemporaryDirectory aDirectory;
   VersioningLogStream aLog(aDirectory.File("x").c_str(), 0);
   aLog << startentry << std::string(100'000, 'a') << endentry;
   EXPECT_EQ(aDirectory.FileCount(), 1u);
   aLog.SetThreshold(1);
   std::ostringstream anOutput;
   aLog.On(anOutput);
   aLog << startentry << endentry;
   EXPECT_EQ(aLog.SwitchVersions(), "");
   EXPECT_EQ(aDirectory.FileCount(), 1u);
}

TEST_F(VersioningLogStreamTest, ContinuesTheOldFileWhenItCannotBeRenamed)
{
   const TemporaryDirectory aDirectory;
   const std::string aFile = aDirectory.File(std::string(250, 'n')); // with a stamp the name is too long
   VersioningLogStream aLog(aFile.c_str(), 10, OpenMode::Out | OpenMode::Trunc);
   aLog << startentry << "first\n" << endentry;
   aLog << startentry << "second\n" << endentry;
   EXPECT_EQ(aLog.SwitchVersions(), "");
   EXPECT_THAT(ReadFile(aFile), testing::ContainsRegex("first\n[^\n]*\n[^\n]*\nsecond\n"));
   EXPECT_EQ(aDirectory.FileCount(), 1u);
}

// Two processes that share a log may reach for one stamp.
TEST_F(VersioningLogStreamTest, NeverReplacesAVersionThatIsThere)
{
   const TemporaryDirectory aDirectory;
   const std::string aFile = aDirectory.File("x.log");
   const std::string aTaken = LogRollover::VersionName(aFile, std::to_string(UniqueTimestamp::GetTimestamp() + 1));
   WriteFile(aTaken, "of another process");
   VersioningLogStream aLog(aFile.c_str(), 10);
   aLog << startentry << "first\n" << endentry;
   EXPECT_EQ(ReadFile(aTaken), "of another process");
   EXPECT_THAT(ReadFile(aFile), testing::HasSubstr("first\n"));
   aLog << startentry << "second\n" << endentry;
   EXPECT_EQ(aDirectory.FileCount(), 3u);
   EXPECT_EQ(ReadFile(aFile), "");
}

TEST_F(VersioningLogStreamTest, OutlivesAClockThatIsSetFarBack)
{
   const TemporaryDirectory aDirectory;
   const std::string aFile = aDirectory.File("x.log");
   VersioningLogStream aLog(aFile.c_str(), 10);
   aLog << startentry << "first\n" << endentry;
   ASSERT_EQ(aDirectory.FileCount(), 2u);
   itsClock.Advance(-3600); // no time stamp is given now
   EXPECT_NO_THROW(aLog << startentry << "second\n" << endentry);
   EXPECT_EQ(aDirectory.FileCount(), 2u);
   aLog << startentry << "third\n" << endentry;
   EXPECT_EQ(aDirectory.FileCount(), 3u);
   EXPECT_EQ(ReadFile(aFile), "");
}

#include "talvenor/foundation/MUIDFactory.h"

#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

#include "support/FakeClock.h"
#include "support/OnAnotherThread.h"
#include "talvenor/foundation/LibraryIdentity.h"

namespace
{

struct Parts
{
   RWCString itsRandom, itsDate, itsCount;
};

// The parts behind theRoot.
Parts Split(const RWCString& theUID, const RWCString& theRoot)
{
   EXPECT_EQ(theUID.rfind(theRoot + ".", 0), 0u) << theUID;
   const std::size_t aSecond = theUID.rfind('.'), aFirst = theUID.rfind('.', aSecond - 1);
   const std::size_t aStart = theRoot.size() + 1;
   return {theUID.substr(aStart, aFirst - aStart), theUID.substr(aFirst + 1, aSecond - aFirst - 1),
           theUID.substr(aSecond + 1)};
}

RWCString LocalDate(FakeClock& theClock)
{
   const std::time_t aTime = theClock.WallSeconds();
   char aText[32];
   std::strftime(aText, sizeof aText, "%Y%m%d%H%M%S", std::localtime(&aTime));
   return aText;
}

TEST(MUIDFactory, JoinsRootRandomNumberLocalTimeAndCount)
{
   FakeClock aClock;
   MUIDFactory aFactory("1.2.3");
   const Parts aFirst = Split(aFactory.GetUID(), "1.2.3"), aSecond = Split(aFactory.GetUID(), "1.2.3");
   EXPECT_EQ(aFirst.itsDate, LocalDate(aClock));
   EXPECT_EQ(aFirst.itsCount, "1");
   EXPECT_EQ(aSecond.itsCount, "2");
   EXPECT_NE(aFirst.itsRandom, aSecond.itsRandom);
   aClock.Advance(1);
   const Parts aThird = Split(aFactory.GetUID(), "1.2.3");
   EXPECT_EQ(aThird.itsCount, "1");
}

// PS3.5 9.1: digits and dots, no component with a leading zero, 64 characters at most.
TEST(MUIDFactory, MakesValidUIDsFromTheDefaultRoot)
{
   FakeClock aClock;
   MUIDFactory aFactory;
   std::set<RWCString> aUIDs;
   for (int i = 0; i < 2000; ++i)
   {
      const RWCString aUID = aFactory.GetUID();
      ASSERT_LE(aUID.size(), 64u);
      ASSERT_EQ(aUID.find_first_not_of("0123456789."), RWCString::npos) << aUID;
      ASSERT_EQ(aUID.find(".0"), RWCString::npos) << aUID;
      ASSERT_EQ(aUID.find(".."), RWCString::npos) << aUID;
      ASSERT_NE(aUID.back(), '.') << aUID;
      aUIDs.insert(aUID);
   }
   EXPECT_EQ(aUIDs.size(), 2000u);
}

TEST(MUIDFactory, MakesNothingWithoutARootOrRoom)
{
   EXPECT_EQ(MUIDFactory("").GetUID(), "");
   EXPECT_EQ(MUIDFactory("1." + RWCString(48, '2')).GetUID(), ""); // 50, and 1 + 1 + 1 + 14 + 1 + 1 at least
   EXPECT_NE(MUIDFactory("1." + RWCString(30, '2')).GetUID(), "");
}

TEST(MUIDFactory, CountsOnWhenTheClockWasSetBack)
{
   FakeClock aClock;
   MUIDFactory aFirst("1.2"), aSecond("1.2");
   const RWCString aDate = Split(aFirst.GetUID(), "1.2").itsDate;
   aClock.Advance(-3600);
   const Parts aParts = Split(aSecond.GetUID(), "1.2");
   EXPECT_EQ(aParts.itsDate, aDate);
   EXPECT_EQ(aParts.itsCount, "2");
   EXPECT_EQ(aClock.Slept(), 0u);
}

TEST(MUIDFactory, WaitsForTheNextSecondAfter65536UIDs)
{
   FakeClock aClock;
   MUIDFactory aFactory("1.2");
   for (int i = 1; i < 65536; ++i)
   {
      aFactory.GetUID();
   }
   EXPECT_EQ(Split(aFactory.GetUID(), "1.2").itsCount, "65536");
   EXPECT_EQ(aClock.Slept(), 0u);
   EXPECT_EQ(Split(aFactory.GetUID(), "1.2").itsCount, "1");
   EXPECT_EQ(aClock.Slept(), 1000u);
}

TEST(MUIDFactory, GivesDifferentUIDsToDifferentThreads)
{
   std::mutex aMutex;
   std::set<RWCString> aUIDs;
   OnThreads(4, [&](int) {
      MUIDFactory aFactory; // seeds what the others draw from
      for (int j = 0; j < 200; ++j)
      {
         const RWCString aUID = aFactory.GetUID();
         const std::lock_guard aLock(aMutex);
         aUIDs.insert(aUID);
      }
   });
   EXPECT_EQ(aUIDs.size(), 800u);
}

// Parent and child share the time, the count and the state of the random numbers at the moment of the fork.
TEST(MUIDFactory, ForkedProcessMakesUIDsOfItsOwn)
{
   FakeClock aClock;
   MUIDFactory aFactory("1.2");
   aFactory.GetUID();
   int aPipe[2];
   ASSERT_EQ(pipe(aPipe), 0);
   const pid_t aChild = fork();
   const RWCString aUID = aFactory.GetUID();
   if (aChild == 0)
   {
      _exit(write(aPipe[1], aUID.c_str(), aUID.size()) < 0);
   }
   char aText[64] = {};
   ASSERT_GT(read(aPipe[0], aText, sizeof aText), 0);
   EXPECT_EQ(waitpid(aChild, nullptr, 0), aChild);
   close(aPipe[0]);
   close(aPipe[1]);
   EXPECT_EQ(Split(aUID, "1.2").itsCount, "2");
   EXPECT_NE(RWCString(aText, strnlen(aText, sizeof aText)), aUID);
}

} // namespace

// Locked file streams: the table of locks, the locks within this process and between processes, and reading.
#include "talvenor/io/LFStream.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "support/FakeClock.h"
#include "support/OnAnotherThread.h"
#include "support/StreamErrors.h"
#include "support/TemporaryFile.h"
#include "talvenor/io/LFInputStream.h"

namespace
{

constexpr auto kShared = LFStream::Shared;
constexpr auto kExclusive = LFStream::Exclusive;

LFStreamFileID FileID(UINT32 theLow, UINT32 theHigh = 0, UINT32 theVolume = 0)
{
   return LFStreamFileID({theVolume, theHigh, theLow, 0, 0});
}

// Another process that holds a lock on a file until it is told to end.
class LockingProcess
{
public:
   LockingProcess(const char* theName, bool isExclusive)
   {
      int someEnds[2];
      EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, someEnds), 0);
      itsProcess = ::fork();
      if (itsProcess == 0)
      {
         ::close(someEnds[0]);
         TNPlatform::FileHandle aFile;
         char aByte = aFile.Open(theName, TNPlatform::FileHandle::kRead) &&
                      aFile.TryLock(isExclusive) == TNPlatform::FileHandle::kLocked;
         ::_exit(::write(someEnds[1], &aByte, 1) != 1 || ::read(someEnds[1], &aByte, 1) != 0);
      }
      ::close(someEnds[1]);
      itsEnd = someEnds[0];
      char isLocked = 0;
      EXPECT_EQ(::read(itsEnd, &isLocked, 1), 1);
      EXPECT_EQ(isLocked, 1);
   }
   ~LockingProcess() { End(); }
   LockingProcess(const LockingProcess&) = delete;
   LockingProcess& operator=(const LockingProcess&) = delete;

   void End()
   {
      if (itsEnd >= 0)
      {
         ::close(itsEnd);
         itsEnd = -1;
         int aStatus = 0;
         ::waitpid(itsProcess, &aStatus, 0);
         EXPECT_EQ(aStatus, 0);
      }
   }

private:
   pid_t itsProcess = -1;
   int itsEnd = -1;
};

// What a lock operation returned, with errno when it failed.
int ErrorOf(int theResult)
{
   return theResult == 1 ? 0 : errno;
}

} // namespace

TEST(LFStreamFileID, IsEqualAndOrderedByItsThreeNumbersOnly)
{
   const LFStreamFileID kDescending[] = {FileID(9),       FileID(5, 9), FileID(5, 2, 9),
                                         FileID(5, 2, 1), FileID(5),    FileID(1)};
   for (std::size_t i = 0; i < std::size(kDescending); ++i)
   {
      for (std::size_t j = 0; j < std::size(kDescending); ++j)
      {
         EXPECT_EQ(kDescending[i] < kDescending[j], i < j) << i << ", " << j;
         EXPECT_EQ(kDescending[i] == kDescending[j], i == j) << i << ", " << j;
      }
   }
}

// Files of two file systems may have the same inode number.
TEST(LFStreamFileID, TellsFileSystemsApart)
{
   TemporaryFile aTemporary("x");
   UINT32 aVolumes[2] = {};
   for (const char* const aName : {aTemporary.Name(), "/proc/self/status"})
   {
      TNPlatform::FileHandle aFile;
      LFStreamFileID anID;
      ASSERT_TRUE(aFile.Open(aName, TNPlatform::FileHandle::kRead) && anID.ReadFrom(aFile));
      aVolumes[aName != aTemporary.Name()] = anID.GetInfo().itsVolumeSerialNumber;
   }
   EXPECT_NE(aVolumes[0], aVolumes[1]);
}

TEST(LFStream, SharedLocksCoexistAndKeepAnExclusiveOneOut)
{
   TemporaryFile aFile("x");
   LFStream aFirst(aFile.Name(), std::ios::in);
   LFStream aSecond(aFile.Name(), std::ios::in);
   LFStream aThird(aFile.Name(), std::ios::in);
   EXPECT_EQ(aFirst.LockShared(), 1);
   EXPECT_EQ(aSecond.LockShared(), 1);
   EXPECT_EQ(ErrorOf(aThird.LockNB(kExclusive)), EDEADLK);
   EXPECT_EQ(aThird.IsLocked(), 0);
   EXPECT_EQ(ErrorOf(aFirst.Lock(0, kShared)), EDEADLK); // locked already
   EXPECT_EQ(aFirst.Unlock(), 1);
   EXPECT_EQ(aFirst.Unlock(), 0);
   EXPECT_EQ(ErrorOf(aThird.LockNB(kExclusive)), EDEADLK);
   EXPECT_EQ(aSecond.Unlock(), 1);
   EXPECT_EQ(aThird.LockNB(kExclusive), 1);
   EXPECT_EQ(ErrorOf(aFirst.LockNB(kShared)), EDEADLK);
   aThird.close();
   EXPECT_EQ(aFirst.LockNB(kShared), 1);
   EXPECT_EQ(aSecond.LockNB(7), 1); // whatever is not exclusive is shared
   EXPECT_EQ(ErrorOf(LFStream().LockNB(kShared)), EBADF);
}

TEST(LFStream, WaitingForALockOfThisProcessEndsASecondAfterTheLimit)
{
   TemporaryFile aFile("x");
   LFStream aHolder(aFile.Name(), std::ios::in);
   LFStream aWaiter(aFile.Name(), std::ios::in);
   ASSERT_EQ(aHolder.LockExclusive(), 1);
   FakeClock aClock;
   EXPECT_EQ(ErrorOf(aWaiter.Lock(2, kExclusive)), EDEADLK);
   EXPECT_EQ(aClock.Slept(), 3000U);
   aHolder.Unlock();
   EXPECT_EQ(aWaiter.LockNB(kExclusive), 1); // the failed request has left nothing behind
}

TEST(LFStream, AWaiterGetsTheLockOnceItIsFree)
{
   for (const int aWait : {0, -1, 7})
   {
      TemporaryFile aFile("x");
      LFStream aHolder(aFile.Name(), std::ios::in);
      LFStream aWaiter(aFile.Name(), std::ios::in);
      ASSERT_EQ(aHolder.LockExclusive(), 1);
      FakeClock aClock;
      aClock.OnceSlept(5000, [&] { aHolder.Unlock(); });
      EXPECT_EQ(aWaiter.Lock(aWait, kShared), 1) << aWait;
      EXPECT_EQ(aClock.Slept(), 5000U) << aWait;
   }
}

TEST(LFStream, NamesOfTheSameFileShareItsLocks)
{
   TemporaryFile aFile("x");
   TemporaryFile aSecondName;
   std::filesystem::create_hard_link(aFile.Path(), aSecondName.Path());
   LFStream aFirst(aFile.Name(), std::ios::in);
   LFStream aSecond(aSecondName.Name(), std::ios::in);
   ASSERT_EQ(aFirst.LockNB(kExclusive), 1);
   EXPECT_EQ(ErrorOf(aSecond.LockNB(kShared)), EDEADLK);
}

// The name comes to mean another file while the old one is locked.
TEST(LFStream, UnlocksTheFileItLocked)
{
   TemporaryFile aFile("old");
   LFStream aHolder(aFile.Name(), std::ios::in);
   LFStream aSecond(aFile.Name(), std::ios::in);
   ASSERT_EQ(aHolder.LockNB(kExclusive), 1);
   std::filesystem::remove(aFile.Path());
   aFile.Write("new");
   LFStream aNewFile(aFile.Name(), std::ios::in);
   EXPECT_EQ(aNewFile.LockNB(kExclusive), 1);
   EXPECT_EQ(aHolder.Unlock(), 1);
   EXPECT_EQ(aSecond.LockNB(kExclusive), 1);
}

// A child of the process, which has a copy of the handle, does not keep the lock either.
TEST(LFStream, ClosingUnlocks)
{
   TemporaryFile aFile("x");
   LFStream aStream(aFile.Name(), std::ios::in);
   LFStream anOther(aFile.Name(), std::ios::in);
   ASSERT_EQ(aStream.LockNB(kExclusive), 1);
   int anEnds[2];
   ASSERT_EQ(::pipe(anEnds), 0);
   const pid_t aChild = ::fork();
   if (aChild == 0)
   {
      ::close(anEnds[1]);
      char aByte;
      ::_exit(::read(anEnds[0], &aByte, 1) != 0);
   }
   aStream.close();
   EXPECT_EQ(aStream.IsLocked(), 0);
   EXPECT_EQ(anOther.LockNB(kExclusive), 1);
   anOther.close();
   aStream.open(aFile.Name(), std::ios::in, 16);
   EXPECT_EQ(aStream.GetOpenMode(), std::ios::in);
   EXPECT_EQ(aStream.GetProtection(), 16);
   EXPECT_EQ(aStream.LockNB(kExclusive), 1);
   ::close(anEnds[0]);
   ::close(anEnds[1]);
   ::waitpid(aChild, nullptr, 0);
}

TEST(LFStream, AnotherProcessKeepsTheLock)
{
   TemporaryFile aFile("x");
   LFStream aStream(aFile.Name(), std::ios::in | std::ios::out);
   {
      LockingProcess aSharer(aFile.Name(), false);
      EXPECT_EQ(aStream.LockNB(kShared), 1);
      aStream.Unlock();
      EXPECT_EQ(ErrorOf(aStream.LockNB(kExclusive)), EDEADLK);
   }
   LockingProcess aProcess(aFile.Name(), true);
   EXPECT_EQ(ErrorOf(aStream.LockNB(kShared)), EDEADLK);
   FakeClock aClock;
   EXPECT_EQ(ErrorOf(aStream.Lock(1, kExclusive)), EDEADLK);
   EXPECT_EQ(aClock.Slept(), 2000U);
   aClock.OnceSlept(4000, [&] { aProcess.End(); });
   EXPECT_EQ(aStream.Lock(9, kExclusive), 1);
   EXPECT_EQ(aClock.Slept(), 4000U);
}

TEST(LFStream, UnlockingPublishesWhatWasWrittenAndForgetsWhatWasReadAhead)
{
   TemporaryFile aFile("first");
   LFStream aReader(aFile.Name(), std::ios::in);
   LFStream aWriter(aFile.Name(), std::ios::in | std::ios::out);
   ASSERT_EQ(aReader.LockShared(), 1);
   EXPECT_EQ(aReader.get(), 'f');
   aReader.Unlock();
   ASSERT_EQ(aWriter.LockExclusive(), 1);
   aWriter << "SECOND";
   EXPECT_EQ(aFile.Contents(), "first");
   aWriter.Unlock();
   EXPECT_EQ(aFile.Contents(), "SECOND");
   ASSERT_EQ(aReader.LockShared(), 1);
   std::string aText;
   aReader >> aText;
   EXPECT_EQ(aText, "ECOND");
}

// A writer opens, locks, and only then truncates: a reader that holds the file keeps its bytes.
TEST(LFStream, AFileIsOpenedForWritingWithoutLosingIt)
{
   TemporaryFile aFile("precious");
   LFStream aReader(aFile.Name(), std::ios::in);
   ASSERT_EQ(aReader.LockNB(kShared), 1);
   LFStream aWriter;
   aWriter.OpenKeeping(aFile.Name());
   ASSERT_TRUE(aWriter.is_open());
   EXPECT_EQ(aWriter.GetOpenMode(), std::ios::in | std::ios::out | std::ios::binary);
   EXPECT_EQ(aWriter.LockNB(kExclusive), 0);
   EXPECT_EQ(aFile.Contents(), "precious");
   aReader.close();
   ASSERT_EQ(aWriter.LockNB(kExclusive), 1);
   ASSERT_TRUE(aWriter.Truncate(0));
   aWriter << "new";
   aWriter.close();
   EXPECT_TRUE(aWriter.good());
   EXPECT_EQ(aFile.Contents(), "new");
}

// Every thread adds one to a number in the file under an exclusive lock; none may be lost.
TEST(LFStream, ThreadsTakeTurns)
{
   TemporaryFile aFile("0");
   OnThreads(4, [&](int) {
      for (int i = 0; i < 20;)
      {
         LFStream aStream(aFile.Name(), std::ios::in | std::ios::out);
         if (!aStream.LockNB(kExclusive))
         {
            std::this_thread::yield();
            continue;
         }
         int aNumber = 0;
         aStream >> aNumber;
         aStream.clear();
         aStream.seekp(0);
         aStream << aNumber + 1;
         ++i;
      }
   });
   EXPECT_EQ(aFile.Contents(), "80");
}

TEST(LFInputStream, ReadsSkipsAndSeeks)
{
   TemporaryFile aFile("0123456789");
   LFInputStream aStream(aFile.Name(), std::ios::in | std::ios::binary);
   unsigned char aBytes[20];
   EXPECT_EQ(aStream.Read(aBytes, 3), 3U);
   EXPECT_EQ(aStream.Skip(2), 2U);
   EXPECT_EQ(aStream.Read(aBytes, 20), 5U);
   EXPECT_EQ(aBytes[0], '5');
   EXPECT_TRUE(aStream.eof());
   EXPECT_EQ(aStream.Read(aBytes, 20), 0U);
   aStream.Seek(8);
   EXPECT_TRUE(aStream.good());
   EXPECT_EQ(aStream.GetStreamPosition(), 8U);
   EXPECT_EQ(aStream.Read(aBytes, 1), 1U);
   EXPECT_EQ(aBytes[0], '8');
   EXPECT_EQ(aStream.Skip(100), 100U);
   EXPECT_EQ(aStream.Read(aBytes, 1), 0U);
   aStream.Seek(0xFFFFFFFF);
   EXPECT_EQ(aStream.GetStreamPosition(), 0xFFFFFFFFU);
   EXPECT_EQ(aStream.Skip(2), 2U);
   EXPECT_EQ(aStream.GetPosition(), 0x100000001U);
}

TEST(LFInputStream, FailuresCarryTheSystemsErrorNumber)
{
   unsigned char aByte;
   LFInputStream aDirectory(std::filesystem::temp_directory_path().c_str(), std::ios::in);
   EXPECT_EQ(StreamErrorOf([&] { aDirectory.Read(&aByte, 1); }),
             (StreamError{"LFInputStream::read(): I/O error in fstream::read", TN_SYSTEM_CALL_FAILED, EISDIR}));
   EXPECT_TRUE(aDirectory.bad());
   LFInputStream aClosed("/nonexistent/file", std::ios::in);
   EXPECT_EQ(errno, ENOENT);
   EXPECT_EQ(StreamErrorOf([&] { aClosed.Skip(1); }),
             (StreamError{"LFInputStream::Skip(): I/O error", TN_SYSTEM_CALL_FAILED, EBADF}));
}

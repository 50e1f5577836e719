// Locked file streams: the table of locks, the locks within this process and between processes, and reading.
#include "talvenor/io/LFStream.h"

#include <cerrno>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "support/FakeClock.h"
#include "support/StreamErrors.h"
#include "support/TemporaryFile.h"
#include "talvenor/io/LFInputStream.h"
#include "talvenor/io/LFStreamLockTable.h"

namespace
{

constexpr auto kShared = LFStream::Shared;
constexpr auto kExclusive = LFStream::Exclusive;

LFStreamFileID FileID(UINT32 theLow, UINT32 theHigh = 0, UINT32 theVolume = 0)
{
   return LFStreamFileID({theVolume, theHigh, theLow, 0, 0});
}

// Runs a function once the sleeper has slept a given number of times, as if another thread had acted meanwhile.
class ClockWithAnEvent final : public SystemClock
{
public:
   ClockWithAnEvent(int theSleeps, std::function<void()> theEvent)
       : itsSleepsLeft(theSleeps), itsEvent(std::move(theEvent)), itsPrevious(SystemClock::Replace(this))
   {}
   ~ClockWithAnEvent() { SystemClock::Replace(itsPrevious); }
   ClockWithAnEvent(const ClockWithAnEvent&) = delete;
   ClockWithAnEvent& operator=(const ClockWithAnEvent&) = delete;

   INT64 WallMilliseconds() override { return itsTime; }
   INT64 MonotonicMilliseconds() override { return itsTime; }
   void Sleep(UINT64 theMilliseconds) override
   {
      itsTime += static_cast<INT64>(theMilliseconds);
      if (--itsSleepsLeft == 0)
      {
         itsEvent();
      }
   }

   INT64 Elapsed() const { return itsTime; }

private:
   INT64 itsTime = 0;
   int itsSleepsLeft;
   std::function<void()> itsEvent;
   SystemClock* itsPrevious;
};

// Another process that holds a lock on a file until it is told to end.
class LockingProcess
{
public:
   LockingProcess(const char* theName, bool isExclusive)
   {
      int aReady[2];
      int anEnd[2];
      EXPECT_EQ(::pipe(aReady) + ::pipe(anEnd), 0);
      itsProcess = ::fork();
      if (itsProcess == 0)
      {
         ::close(anEnd[1]);
         TNPlatform::FileHandle aFile;
         char aByte = aFile.Open(theName, TNPlatform::FileHandle::kRead) &&
                      aFile.TryLock(isExclusive) == TNPlatform::FileHandle::kLocked;
         const bool isTold = ::write(aReady[1], &aByte, 1) == 1 && ::read(anEnd[0], &aByte, 1) >= 0;
         ::_exit(isTold ? 0 : 1);
      }
      ::close(aReady[1]);
      ::close(anEnd[0]);
      char isLocked = 0;
      EXPECT_EQ(::read(aReady[0], &isLocked, 1), 1);
      EXPECT_EQ(isLocked, 1);
      ::close(aReady[0]);
      itsEnd = anEnd[1];
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
   LFStreamFileID aLocked = FileID(5);
   aLocked.SetShared(1);
   aLocked.IncrementLockCount();
   EXPECT_TRUE(aLocked == FileID(5));
   EXPECT_EQ(aLocked.DecrementLockCount(), 0);
}

TEST(LFStreamLockTable, ManySharedOrOneExclusiveLockForEachFile)
{
   LFStreamLockTable aTable;
   EXPECT_TRUE(aTable.Acquire(FileID(1), true));
   EXPECT_TRUE(aTable.Acquire(FileID(1), true));
   EXPECT_FALSE(aTable.Acquire(FileID(1), false));
   EXPECT_TRUE(aTable.Acquire(FileID(2), false));
   EXPECT_FALSE(aTable.Acquire(FileID(2), true));
   EXPECT_EQ(aTable.GetSize(), 2U);
   aTable.Release(FileID(1));
   EXPECT_FALSE(aTable.Acquire(FileID(1), false));
   aTable.Release(FileID(1));
   EXPECT_TRUE(aTable.Acquire(FileID(1), false));
   aTable.Release(FileID(3)); // never locked
   aTable.Release(FileID(1));
   aTable.Release(FileID(2));
   EXPECT_EQ(aTable.GetSize(), 0U);
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
   EXPECT_EQ(aFirst.Unlock(), 1);
   EXPECT_EQ(ErrorOf(aThird.LockNB(kExclusive)), EDEADLK);
   EXPECT_EQ(aSecond.Unlock(), 1);
   EXPECT_EQ(aThird.LockNB(kExclusive), 1);
   EXPECT_EQ(ErrorOf(aFirst.LockNB(kShared)), EDEADLK);
   aThird.close();
   EXPECT_EQ(aFirst.LockNB(kShared), 1);
   EXPECT_EQ(aSecond.LockNB(7), 1); // whatever is not exclusive is shared
}

TEST(LFStream, ALockedStreamIsNotLockedTwiceNorAnUnlockedOneUnlocked)
{
   TemporaryFile aFile("x");
   LFStream aStream(aFile.Name(), std::ios::in);
   EXPECT_EQ(aStream.Unlock(), 0);
   EXPECT_EQ(aStream.Lock(), 1);
   EXPECT_EQ(aStream.IsLocked(), 1);
   EXPECT_EQ(ErrorOf(aStream.Lock(0, kShared)), EDEADLK);
   EXPECT_EQ(ErrorOf(aStream.LockNB(kShared)), EDEADLK);
   EXPECT_EQ(aStream.Unlock(), 1);
   EXPECT_EQ(aStream.Unlock(), 0);
}

TEST(LFStream, AStreamThatIsNotOpenCannotBeLocked)
{
   LFStream aStream;
   EXPECT_EQ(aStream.fd(), -1);
   EXPECT_EQ(ErrorOf(aStream.LockNB(kShared)), EBADF);
   EXPECT_EQ(ErrorOf(aStream.Lock(5, kExclusive)), EBADF);
   aStream.close();
   EXPECT_TRUE(aStream.fail());
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
      ClockWithAnEvent aClock(5, [&] { aHolder.Unlock(); });
      EXPECT_EQ(aWaiter.Lock(aWait, kShared), 1) << aWait;
      EXPECT_EQ(aClock.Elapsed(), 5000) << aWait;
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

TEST(LFStream, AnotherProcessKeepsTheLock)
{
   TemporaryFile aFile("x");
   LFStream aStream(aFile.Name(), std::ios::in | std::ios::out);
   LockingProcess aProcess(aFile.Name(), true);
   EXPECT_EQ(ErrorOf(aStream.LockNB(kShared)), EDEADLK);
   {
      FakeClock aClock;
      EXPECT_EQ(ErrorOf(aStream.Lock(1, kExclusive)), EDEADLK);
      EXPECT_EQ(aClock.Slept(), 2000U);
   }
   ClockWithAnEvent aClock(2, [&] { aProcess.End(); });
   EXPECT_EQ(aStream.Lock(9, kExclusive), 1);
   EXPECT_EQ(aClock.Elapsed(), 2000);
}

TEST(LFStream, SharesWithAnotherProcess)
{
   TemporaryFile aFile("x");
   LockingProcess aProcess(aFile.Name(), false);
   LFStream aStream(aFile.Name(), std::ios::in);
   EXPECT_EQ(aStream.LockNB(kShared), 1);
   EXPECT_EQ(aStream.Unlock(), 1);
   EXPECT_EQ(ErrorOf(aStream.LockNB(kExclusive)), EDEADLK);
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
   EXPECT_EQ(aWriter.LockNB(kExclusive), 0);
   EXPECT_EQ(aFile.Contents(), "precious");
   aReader.close();
   ASSERT_EQ(aWriter.LockNB(kExclusive), 1);
   UINT64 aLength = 0;
   ASSERT_TRUE(aWriter.GetFileLength(aLength));
   EXPECT_EQ(aLength, 8U);
   ASSERT_TRUE(aWriter.Truncate(0));
   aWriter << "new";
   aWriter.close();
   EXPECT_TRUE(aWriter.good());
   EXPECT_EQ(aFile.Contents(), "new");
}

TEST(LFStream, TheSizeOfTheBufferIsChosenByTheConstructor)
{
   struct SizeCase
   {
      const char* itsName;
      std::function<std::unique_ptr<LFStream>(const char*)> itsMake;
      std::size_t itsWrittenAhead; // bytes in the file after 20 were written and none flushed
   };
   const auto kOut = std::ios::out;
   const SizeCase kCases[] = {
       {"number 0 is unbuffered", [&](const char* n) { return std::make_unique<LFStream>(n, kOut, 64, 0U); }, 20},
       {"number 16 is small", [&](const char* n) { return std::make_unique<LFStream>(n, kOut, 64, 16U); }, 20},
       {"the default is large", [&](const char* n) { return std::make_unique<LFStream>(n, kOut); }, 0},
       {"BufferSize 0 is the default",
        [&](const char* n) {
           auto aStream = std::make_unique<LFStream>(LFStream::BufferSize());
           aStream->open(n, kOut);
           return aStream;
        },
        0},
   };
   for (const SizeCase& aCase : kCases)
   {
      TemporaryFile aFile;
      const auto aStream = aCase.itsMake(aFile.Name());
      aStream->write("12345678901234567890", 20);
      EXPECT_EQ(aFile.Contents().size(), aCase.itsWrittenAhead) << aCase.itsName;
   }
}

// Every thread adds one to a number in the file under an exclusive lock; none may be lost.
TEST(LFStream, ThreadsTakeTurns)
{
   TemporaryFile aFile("0");
   const auto aWork = [&] {
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
   };
   std::vector<std::thread> aThreads;
   for (int i = 0; i < 4; ++i)
   {
      aThreads.emplace_back(aWork);
   }
   for (std::thread& aThread : aThreads)
   {
      aThread.join();
   }
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
   EXPECT_EQ(aStream.CanSeek(), 1);
   EXPECT_EQ(aStream.Length(), -1);
   EXPECT_EQ(aStream.GetPushbackLimit(), 0U);
   EXPECT_EQ(aStream.GetPreferredInputBlockSize(), 4096U);
}

TEST(LFInputStream, PrefersNoBlockSizeWhenFilesAreUnbuffered)
{
   LFStream::SetDefaultBufferSize(0);
   EXPECT_EQ(LFInputStream().GetPreferredInputBlockSize(), 0xFFFFFFFFU);
   LFStream::SetDefaultBufferSize(4096);
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

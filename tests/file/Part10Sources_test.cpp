// The sources of Part 10 streams: memory, other streams and files under lock.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include "support/CapturedErrorLog.h"
#include "support/FakeClock.h"
#include "support/FileBytes.h"
#include "support/PiecewiseInputStream.h"
#include "support/StreamErrors.h"
#include "support/TemporaryFile.h"
#include "talvenor/file/LockedOpen.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/file/Part10InputStreamInputStream.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/io/LFStream.h"

namespace
{
const std::string kDataset = Bytes("\x08\x00\x60\x00"
                                   "CS\x02\x00"
                                   "CT");
const std::string kFile = FileHeader(kExplicitLittle) + kDataset;
const StreamError kNothingThrown{"(nothing was thrown)", TN_NO_ERROR};

// The same for every source: what is read, where it stands, what happens after Close.
void ReadsTheDataset(Part10InputStream& theStream)
{
   EXPECT_EQ(theStream.GetHeaderSize(), kFile.size() - kDataset.size());
   EXPECT_EQ(ReadText(theStream, 100), kDataset);
   EXPECT_EQ(theStream.GetStreamPosition(), kFile.size());
   EXPECT_EQ(ReadText(theStream, 1), "");
}

void SeeksTheMagic(Part10InputStream& theStream)
{
   EXPECT_EQ(theStream.CanSeek(), 1);
   EXPECT_EQ(theStream.GetFileSize(), kFile.size());
   theStream.Seek(128);
   EXPECT_EQ(ReadText(theStream, 4), "DICM");
}

void FailsWhenClosed(Part10InputStream& theStream, const std::string& theText)
{
   theStream.Close();
   EXPECT_EQ(StreamErrorOf([&] { ReadText(theStream, 1); }), (StreamError{theText, TN_INVALID_FILE_HANDLE}));
   theStream.Close(); // once more is nothing
}

TEST(Part10MemoryInputStream, ReadsSeeksAndCloses)
{
   const auto aStream = OpenBytes(kFile);
   ReadsTheDataset(*aStream);
   SeeksTheMagic(*aStream);
   aStream->Seek(100000);
   EXPECT_EQ(ReadText(*aStream, 4), "");
   FailsWhenClosed(*aStream, "Part10MemoryInputStream::Read(): Stream is not open");
}

TEST(Part10MemoryInputStream, OwnsWhatItIsGivenAndLeavesWhatIsLent)
{
   // The leak checker sees what is not freed, and what is freed twice.
   const auto aCopy = [] {
      auto* const aBytes = new unsigned char[kFile.size()];
      std::copy(kFile.begin(), kFile.end(), aBytes);
      return aBytes;
   };
   const auto aSize = static_cast<UINT32>(kFile.size());
   {
      Part10MemoryInputStream aClosed(aCopy(), aSize);
      aClosed.Close();
      Part10MemoryInputStream aDestroyed(aCopy(), aSize);
   }
   EXPECT_THROW(Part10MemoryInputStream(aCopy(), 8), StreamIOException);

   const std::unique_ptr<const unsigned char[]> aLent(aCopy());
   const unsigned char* const anAddress = aLent.get();
   Part10MemoryInputStream aStream(aSize, anAddress);
   aStream.Close();
   EXPECT_EQ(aLent[128], 'D');
}

TEST(Part10MemoryInputStream, ClosingForgetsWhatWasPushedBack)
{
   const auto aStream = OpenBytes(kDataset + std::string(200, ' ')); // bare: 144 bytes are pushed back
   FailsWhenClosed(*aStream, "Part10MemoryInputStream::Read(): Stream is not open");
}

TEST(Part10MemoryInputStream, RefusesNullForBytes)
{
   const auto aWhy = [](auto theOperation) -> std::string {
      try
      {
         theOperation();
         return "";
      }
      catch (const TNRuntimeException& anException)
      {
         return anException.why();
      }
   };
   const std::string aText = ": Invalid buffer address or length (memory at least partially unreadable by this "
                             "process): Buffer address = 0x0 Length = ";
   const unsigned char* const aNull = nullptr;
   EXPECT_EQ(aWhy([&] { Part10MemoryInputStream(9, aNull); }),
             "Part10MemoryInputStream::Part10MemoryInputStream" + aText + "9");
   EXPECT_EQ(aWhy([] { Part10MemoryInputStream(static_cast<unsigned char*>(nullptr), 8); }),
             "Part10MemoryInputStream::Part10MemoryInputStream" + aText + "8");
   const auto aStream = OpenBytes(kFile);
   ReadText(*aStream, 2); // what had been pushed back
   EXPECT_EQ(aWhy([&] { aStream->Read(nullptr, 3); }), "Part10MemoryInputStream::ReadImpl" + aText + "3");
}

std::vector<unsigned char> BytesOf(const std::string& theText)
{
   return {theText.begin(), theText.end()};
}

TEST(Part10InputStreamInputStream, ReadsFromAStreamOfUnknownLengthInPieces)
{
   for (const unsigned int aPiece : {1u, 143u, 1000u})
   {
      PiecewiseInputStream aSource(BytesOf(kFile), aPiece);
      Part10InputStreamInputStream aStream;
      aStream.Open(aSource);
      EXPECT_EQ(aStream.CanSeek(), 0);
      EXPECT_EQ(aStream.GetFileSize(), 0u);
      ReadsTheDataset(aStream);
      EXPECT_FALSE(aSource.IsClosed());
      FailsWhenClosed(aStream, "Part10InputStreamInputStream::Read(): Stream is not open");
      EXPECT_TRUE(aSource.IsClosed());
   }
}

TEST(Part10InputStreamInputStream, NeedsAHeaderWhenTheLengthIsUnknown)
{
   PiecewiseInputStream aSource(BytesOf(kFile.substr(0, 143)));
   Part10InputStreamInputStream aStream;
   EXPECT_EQ(StreamErrorOf([&] { aStream.Open(aSource); }),
             (StreamError{"Part10InputStream::Open(): read header: EOF before entire header read", TN_END_OF_FILE}));
}

TEST(Part10InputStreamInputStream, OpensAgain)
{
   PiecewiseInputStream aBad(BytesOf(kPreambleAndMagic + kGroupLength + kDataset));
   PiecewiseInputStream aBare(BytesOf(kDataset + std::string(200, ' ')));
   PiecewiseInputStream aGood(BytesOf(kFile)), anotherGood(BytesOf(kFile));
   Part10InputStreamInputStream aStream;
   EXPECT_NE(StreamErrorOf([&] { aStream.Open(aBad); }), kNothingThrown);
   aStream.Open(aGood);
   ReadsTheDataset(aStream);
   aStream.Open(aBare);
   EXPECT_EQ(aStream.GetPart10Header(), nullptr);
   EXPECT_EQ(aStream.GetHeaderSize(), 0u);
   EXPECT_EQ(ReadText(aStream, 10), kDataset);
   aStream.Open(anotherGood); // 134 bytes of the bare one are still pushed back
   ReadsTheDataset(aStream);
}

// Sets the wait time and listens to the file trace.
class FileStreams : public testing::Test
{
protected:
   FileStreams() : itsWaitTime(LFStream::GetDefaultLockWaitTime())
   {
      LFStream::SetDefaultLockWaitTime(3);
      gTNTracer.On(itsTrace);
   }
   ~FileStreams() override
   {
      LFStream::SetDefaultLockWaitTime(itsWaitTime);
      gTNTracer.ClearTrace(TNTrace::TNTraceFileIO);
      gTNTracer.Off();
   }

   // A line in the trace is a text with a line end; what the log puts in front of an entry does not matter.
   static std::size_t Count(const std::string& theText, const std::string& thePart)
   {
      std::size_t aCount = 0;
      for (std::size_t aPlace = 0; (aPlace = theText.find(thePart, aPlace)) != std::string::npos; ++aPlace)
      {
         ++aCount;
      }
      return aCount;
   }

   std::string LinePrefix() const { return "DICOMObject::LoadFromFile(\"" + RWCString(itsFile.Name()) + "\"): "; }
   std::string OpenText() const { return "Part10FileInputStream::Open(" + RWCString(itsFile.Name()) + "): "; }
   StreamError OpenError() const
   {
      return StreamErrorOf([&] { Part10FileInputStream aStream(itsFile.Name()); });
   }

   TemporaryFile itsFile{kFile};
   CapturedErrorLog itsErrorLog;
   std::ostringstream itsTrace;

private:
   unsigned int itsWaitTime;
};

TEST_F(FileStreams, ReadSeekAndClose)
{
   EXPECT_EQ(OpenError(), kNothingThrown);
   EXPECT_EQ(itsTrace.str(), "") << "without the flag";
   EXPECT_EQ(itsErrorLog.Text(), "");
   gTNTracer.SetTrace(TNTrace::TNTraceFileIO);
   Part10FileInputStream aStream(itsFile.Name());
   ReadsTheDataset(aStream);
   SeeksTheMagic(aStream);
   aStream.Close();
   EXPECT_EQ(StreamErrorOf([&] { ReadText(aStream, 1); }).itsCode, TN_INVALID_FILE_HANDLE);
   EXPECT_EQ(StreamErrorOf([&] { aStream.Seek(0); }),
             (StreamError{"Part10FileInputStream::Seek: file is not open", TN_INVALID_FILE_HANDLE}));
   aStream.Close();

   const std::string aTrace = itsTrace.str();
   const std::size_t anAttempt = aTrace.find(LinePrefix() + "Attempting to lock file.\n");
   const std::size_t aLocked = aTrace.find(LinePrefix() + "File is locked.\n");
   const std::string aClosing = "Part10FileInputStream::Close() (\"" + RWCString(itsFile.Name()) + "\"): ";
   const std::size_t anUnlocked = aTrace.find(aClosing + "File is unlocked.\n");
   EXPECT_LT(anAttempt, aLocked);
   EXPECT_LT(aLocked, anUnlocked);
   EXPECT_NE(anUnlocked, std::string::npos) << aTrace;
   EXPECT_EQ(Count(aTrace, "File is unlocked."), 1u);
}

TEST_F(FileStreams, HeldFileIsTriedAsOftenAsTheWaitTimeSays)
{
   gTNTracer.SetTrace(TNTrace::TNTraceFileIO);
   const FakeClock aClock;
   LFStream aWriter(itsFile.Name(), std::ios_base::in | std::ios_base::out | std::ios_base::binary);
   {
      const Part10FileInputStream aReader(itsFile.Name());
      EXPECT_EQ(OpenError(), kNothingThrown) << "readers share";
      EXPECT_EQ(aWriter.LockNB(LFStream::Exclusive), 0);
   }
   ASSERT_EQ(aWriter.LockNB(LFStream::Exclusive), 1);
   for (const unsigned int anAttempts : {3u, 1u})
   {
      LFStream::SetDefaultLockWaitTime(anAttempts);
      itsTrace.str("");
      const UINT64 aBefore = aClock.Slept();
      EXPECT_EQ(OpenError(), (StreamError{OpenText() + "File open failed", TN_LOCK_WAIT_TIMED_OUT, EDEADLK}));
      EXPECT_EQ(aClock.Slept() - aBefore, (anAttempts - 1) * 1000u);
      EXPECT_EQ(Count(itsTrace.str(), LinePrefix() + "Unable to open locked file. errno = 35 Try again.\n"),
                anAttempts);
      EXPECT_EQ(Count(itsErrorLog.Text(),
                      LinePrefix() + "Unable to open after " + std::to_string(anAttempts) + " tries. errno = 35\n"),
                1u)
          << itsErrorLog.Text();
   }
}

TEST_F(FileStreams, WaitTimeZeroIsWithoutLimit)
{
   LFStream aWriter(itsFile.Name(), std::ios_base::in | std::ios_base::out | std::ios_base::binary);
   ASSERT_EQ(aWriter.LockNB(LFStream::Exclusive), 1);
   LFStream::SetDefaultLockWaitTime(0);
   FakeClock aClock;
   aClock.OnceSlept(50000, [&] { aWriter.Unlock(); });
   EXPECT_EQ(OpenError(), kNothingThrown);
   EXPECT_EQ(aClock.Slept(), 50000u);
}

TEST_F(FileStreams, WriterWaitsForReadersBeforeItEmptiesTheFile)
{
   const RWCString aPath = itsFile.Name();
   const LockedOpen aWriting{"Writer", "Writer", LFStream::Exclusive, aPath};
   {
      const FakeClock aClock;
      const Part10FileInputStream aReader(aPath);
      LFStream aStream;
      EXPECT_EQ(StreamErrorOf([&] { aWriting.Open(aStream); }),
                (StreamError{"Writer::Open(" + aPath + "): File open failed", TN_LOCK_WAIT_TIMED_OUT, EDEADLK}));
      EXPECT_FALSE(aStream.is_open());
      EXPECT_EQ(itsFile.Contents(), kFile);
   }
   LFStream aStream;
   aWriting.Open(aStream);
   EXPECT_TRUE(aStream.IsLocked());
   EXPECT_EQ(itsFile.Contents(), "");
}

TEST_F(FileStreams, ManyThreadsReadOneFile)
{
   std::vector<std::jthread> aThreads;
   std::atomic<int> aWhole = 0;
   for (int i = 0; i < 8; ++i)
   {
      aThreads.emplace_back([&] {
         for (int j = 0; j < 20; ++j)
         {
            Part10FileInputStream aStream(itsFile.Name());
            aWhole += ReadText(aStream, 100) == kDataset;
         }
      });
   }
   aThreads.clear();
   EXPECT_EQ(aWhole, 160);
}

TEST_F(FileStreams, WhatWaitingDoesNotMendIsNotWaitedFor)
{
   const FakeClock aClock;
   itsFile.Write("");
   EXPECT_EQ(OpenError(), (StreamError{OpenText() + "Empty file", TN_PARSE_TO_OBJECT_FAILED}));
   std::filesystem::remove(itsFile.Name());
   EXPECT_EQ(OpenError(), (StreamError{OpenText() + "File open failed", TN_SYSTEM_CALL_FAILED, ENOENT}));
   EXPECT_EQ(Count(itsErrorLog.Text(), LinePrefix() + "Unable to open file. errno = 2\n"), 1u) << itsErrorLog.Text();
   EXPECT_EQ(StreamErrorOf([] { Part10FileInputStream("/"); }),
             (StreamError{"Part10FileInputStream::Read(): itsLockStream->read failed", TN_SYSTEM_CALL_FAILED, EISDIR}));
   EXPECT_EQ(aClock.Slept(), 0u);
}
} // namespace

#include "talvenor/platform/FileHandle.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <string>

#include "support/TemporaryFile.h"

using TNPlatform::FileHandle;

TEST(FileHandle, ReadsAndWritesAtOffsets)
{
   TemporaryFile aFile("0123456789");
   FileHandle aHandle;
   ASSERT_TRUE(aHandle.Open(aFile.Name(), FileHandle::kRead | FileHandle::kWrite));
   char aBytes[8];
   EXPECT_EQ(aHandle.ReadAt(aBytes, 8, 6), 4);
   EXPECT_EQ(std::string(aBytes, 4), "6789");
   EXPECT_EQ(aHandle.WriteAt("ab", 2, "cd", 2, 9), 4);
   EXPECT_EQ(aHandle.Read(aBytes, 2), 2); // the descriptor's own offset has not moved
   EXPECT_EQ(std::string(aBytes, 2), "01");
   EXPECT_TRUE(aHandle.Close());
   EXPECT_EQ(aFile.Contents(), "012345678abcd");
}

TEST(FileHandle, RefusesToOpenWithTheReasonInErrno)
{
   TemporaryFile aFile("x");
   FileHandle aHandle;
   EXPECT_FALSE(aHandle.Open(nullptr, FileHandle::kRead));
   EXPECT_EQ(errno, EINVAL);
   ASSERT_TRUE(aHandle.Open(aFile.Name(), FileHandle::kRead));
   EXPECT_FALSE(aHandle.Open(aFile.Name(), FileHandle::kRead));
   EXPECT_EQ(errno, EBUSY);
   EXPECT_EQ(aHandle.WriteAt("x", 1, 0), -1);
   EXPECT_EQ(errno, EBADF);
}

TEST(FileHandle, ClosesWhenItEnds)
{
   TemporaryFile aFile("x");
   int aDescriptor = -1;
   {
      FileHandle aHandle;
      ASSERT_TRUE(aHandle.Open(aFile.Name(), FileHandle::kRead));
      aDescriptor = aHandle.GetDescriptor();
   }
   FileHandle aNext;
   ASSERT_TRUE(aNext.Open(aFile.Name(), FileHandle::kRead));
   EXPECT_EQ(aNext.GetDescriptor(), aDescriptor); // the system gives the lowest one that is free
}

// Exclusive on a handle that may only read, shared on one that may only write.
TEST(FileHandle, LocksDoNotDependOnTheAccessMode)
{
   TemporaryFile aFile("x");
   FileHandle aReader;
   FileHandle aWriter;
   ASSERT_TRUE(aReader.Open(aFile.Name(), FileHandle::kRead));
   ASSERT_TRUE(aWriter.Open(aFile.Name(), FileHandle::kWrite));
   EXPECT_EQ(aReader.TryLock(true), FileHandle::kLocked);
   EXPECT_EQ(aWriter.TryLock(false), FileHandle::kHeldElsewhere);
   EXPECT_TRUE(aReader.Unlock());
   EXPECT_EQ(aWriter.Lock(false), FileHandle::kLocked);
   EXPECT_EQ(aReader.TryLock(false), FileHandle::kLocked);
}

#include "talvenor/io/FileStream.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "support/StreamErrors.h"
#include "support/TemporaryFile.h"

namespace
{

const unsigned char kBytes[] = {'a', 'b', 'c', 'd', 'e'};

struct DefaultBufferSize
{
   explicit DefaultBufferSize(unsigned int theSize) { FileStream::SetDefaultBufferSize(theSize); }
   ~DefaultBufferSize() { FileStream::SetDefaultBufferSize(4096); }
};

} // namespace

TEST(FileStream, WritesAndReadsAFileWhateverTheBuffer)
{
   for (const unsigned int aSize : {0U, 3U, 4096U})
   {
      const DefaultBufferSize aSetting(aSize);
      TemporaryFile aFile;
      {
         FileStream aStream(aFile.Name(), std::ios::out | std::ios::binary, 64);
         aStream.Write(kBytes, 5);
         aStream.Flush();
         EXPECT_EQ(aFile.Contents(), "abcde");
         aStream << "fg"; // as a standard stream
         aStream.Close();
      }
      FileStream aStream(aFile.Name(), std::ios::in | std::ios::binary);
      unsigned char aBytes[10];
      EXPECT_EQ(aStream.Read(aBytes, 4), 4U);
      EXPECT_EQ(aStream.Skip(1), 1U);
      EXPECT_EQ(aStream.Read(aBytes, 10), 2U);
      EXPECT_EQ(aBytes[1], 'g');
      EXPECT_TRUE(aStream.eof());
      EXPECT_EQ(aStream.Read(aBytes, 10), 0U);
   }
}

TEST(FileStream, FailuresCarryTheSystemsErrorNumber)
{
   unsigned char aByte = 0;
   FileStream aMissing("/nonexistent/file", std::ios::in);
   EXPECT_TRUE(aMissing.fail());
   EXPECT_EQ(StreamErrorOf([&] { aMissing.Read(&aByte, 1); }),
             (StreamError{"FileStream::Read(): fstream::read failed", TN_SYSTEM_CALL_FAILED, EBADF}));

   FileStream aFull("/dev/full", std::ios::out);
   EXPECT_EQ(StreamErrorOf([&] { aFull.Write(kBytes, 5), aFull.Flush(); }),
             (StreamError{"FileStream::Flush(): fstream::flush() failed", TN_SYSTEM_CALL_FAILED, ENOSPC}));
   const std::string aLarge(10000, 'x');
   EXPECT_EQ(StreamErrorOf([&] { aFull.Write(reinterpret_cast<const unsigned char*>(aLarge.data()), 10000); }),
             (StreamError{"FileStream::Write(): fstream::write failed", TN_SYSTEM_CALL_FAILED, ENOSPC}));
   EXPECT_EQ(StreamErrorOf([&] { aFull.Close(); }),
             (StreamError{"FileStream::Flush(): fstream::flush() failed", TN_SYSTEM_CALL_FAILED, ENOSPC}));
   EXPECT_FALSE(aFull.is_open());
   aFull.Close(); // nothing is left to close
}

#include "apps/tn/archive/SpoolFile.h"

#include <string>
#include <vector>

#include <fcntl.h>

#include <gtest/gtest.h>

#include "support/PiecewiseInputStream.h"
#include "support/TemporaryDirectory.h"

namespace
{
std::vector<unsigned char> Numbers(std::size_t theCount)
{
   std::vector<unsigned char> aBytes(theCount);
   for (std::size_t i = 0; i < theCount; ++i)
   {
      aBytes[i] = static_cast<unsigned char>(i * 31 + i / 251);
   }
   return aBytes;
}

class SpoolFileTest : public testing::Test
{
protected:
   TemporaryDirectory itsFolder;
   Descriptor itsDescriptor{::open(itsFolder.Path().c_str(), O_RDONLY | O_DIRECTORY)};
   SpoolBuffer itsBuffer;
};

// Whatever the sizes of the pieces: what is read is what came, and the file has all of it.
TEST_F(SpoolFileTest, WhatIsReadOrSkippedIsInTheFile)
{
   constexpr unsigned int kBuffer = SpoolBuffer::kSize;
   const struct
   {
      const char* itsName;
      std::size_t itsSize;
      std::size_t itsHead; // written before the stream
      unsigned int itsPiece;
      unsigned int itsRead; // turns of reading and skipping; both 0: all is left to TakeRest
      unsigned int itsSkip;
   } kCases[] = {
       {"nothing", 0, 0, 100, 10, 10},
       {"a head only", 0, 300, 100, 10, 10},
       {"small pieces", 10000, 300, 7, 100, 33},
       {"bytes", 3000, 1, kBuffer, 1, 1},
       {"a whole buffer", kBuffer, 0, kBuffer, 1000, 0},
       {"a buffer and a byte", kBuffer, 1, kBuffer, 0, kBuffer},
       {"several buffers", 5 * kBuffer + 17, 333, 131072, 5000, 300000},
       {"skips longer than the buffer", 3 * kBuffer, 333, 60000, 1, 2 * kBuffer},
       {"beyond the end", 1000, 0, 64, 900, 900},
       {"all at the end", 2 * kBuffer + 5, 500, 10000, 0, 0},
   };
   for (const auto& aCase : kCases)
   {
      const std::vector<unsigned char> aHead = Numbers(aCase.itsHead);
      const std::vector<unsigned char> aBytes = Numbers(aCase.itsSize);
      PiecewiseInputStream aSource(aBytes, aCase.itsPiece);
      SpoolFile aFile(itsDescriptor, itsBuffer);
      aFile.Write(aHead.data(), aHead.size());
      SpoolingStream aStream(aSource, aFile);
      std::size_t aDone = 0;
      for (unsigned int aPart = 1; aPart != 0 && aCase.itsRead + aCase.itsSkip != 0;)
      {
         std::vector<unsigned char> aRead(aCase.itsRead);
         aPart = aStream.Read(aRead.data(), aCase.itsRead);
         ASSERT_TRUE(aDone + aPart <= aBytes.size() &&
                     std::equal(aRead.begin(), aRead.begin() + aPart, aBytes.begin() + static_cast<long>(aDone)))
             << aCase.itsName << " at " << aDone;
         aDone += aPart;
         const unsigned int aSkipped = aStream.Skip(aCase.itsSkip);
         aDone += aSkipped;
         aPart += aSkipped;
      }
      EXPECT_EQ(aDone, aCase.itsRead + aCase.itsSkip != 0 ? aBytes.size() : 0) << aCase.itsName;
      aStream.TakeRest();
      aFile.Finish();
      aFile.Synchronise();
      EXPECT_EQ(aFile.GetSize(), aHead.size() + aBytes.size()) << aCase.itsName;
      ASSERT_TRUE(aFile.MoveTo(itsDescriptor, "whole", true)) << aCase.itsName;
      std::string anExpected(aHead.begin(), aHead.end());
      anExpected.append(aBytes.begin(), aBytes.end());
      EXPECT_TRUE(ReadFile(itsFolder.File("whole")) == anExpected) << aCase.itsName;
   }
}

TEST_F(SpoolFileTest, AFileWithoutNameVanishesAndNoneIsWrittenOverUnasked)
{
   {
      SpoolFile aFile(itsDescriptor, itsBuffer);
      aFile.Write(reinterpret_cast<const unsigned char*>("one"), 3);
      aFile.Finish();
      EXPECT_EQ(itsFolder.FileCount(), 1u);
   }
   EXPECT_EQ(itsFolder.FileCount(), 0u);
   WriteFile(itsFolder.File("name"), "other");
   {
      SpoolFile aFile(itsDescriptor, itsBuffer);
      aFile.Write(reinterpret_cast<const unsigned char*>("one"), 3);
      aFile.Finish();
      EXPECT_FALSE(aFile.MoveTo(itsDescriptor, "name", false));
      EXPECT_EQ(ReadFile(itsFolder.File("name")), "other");
      EXPECT_TRUE(aFile.MoveTo(itsDescriptor, "name", true));
   }
   EXPECT_EQ(ReadFile(itsFolder.File("name")), "one");
   EXPECT_EQ(itsFolder.FileCount(), 1u);
}
} // namespace

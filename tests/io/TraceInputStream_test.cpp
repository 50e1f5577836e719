#include "talvenor/io/TraceInputStream.h"

#include <gtest/gtest.h>
#include <sstream>

#include "talvenor/io/MemoryStreams.h"

namespace
{

const unsigned char kBytes[] = {'A', 'B', 0x00, 0xFF, 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L'};

} // namespace

TEST(TraceInputStream, WritesEveryByteReadOrSkipped)
{
   MemoryInputStream aSource(kBytes, sizeof kBytes);
   std::ostringstream aTrace;
   aTrace << std::hex; // must neither matter nor change
   TraceInputStream aStream(aSource, 4, &aTrace);
   unsigned char aBytes[12];
   EXPECT_EQ(aStream.Read(aBytes, 2), 2U);
   EXPECT_EQ(aStream.Skip(2), 2U);
   EXPECT_EQ(aTrace.str(), "0 (0x0): 0x41 (65)\n"
                           "1 (0x1): 0x42 (66)\n"
                           "2 (0x2): 0x0 (0)\n"
                           "3 (0x3): 0xff (255)\n");
   aTrace.str("");
   aTrace << 255;
   EXPECT_EQ(aTrace.str(), "ff");
}

TEST(TraceInputStream, KeepsTheLastBytesWithTheirOffsets)
{
   struct HistoryCase
   {
      const char* itsName;
      unsigned int itsHistory;
      std::vector<unsigned int> itsReads;
      const char* itsExpected;
   };
   const HistoryCase kCases[] = {
       {"one read of more", 2, {12}, "10 (0xa): 0x4b (75)\n11 (0xb): 0x4c (76)\n"},
       {"across reads", 2, {5, 1, 1}, "5 (0x5): 0x46 (70)\n6 (0x6): 0x47 (71)\n"},
       {"none", 0, {5}, ""},
   };
   for (const HistoryCase& aCase : kCases)
   {
      MemoryInputStream aSource(kBytes, sizeof kBytes);
      TraceInputStream aStream(aSource, aCase.itsHistory);
      unsigned char aBytes[12];
      for (const unsigned int aCount : aCase.itsReads)
      {
         aStream.Read(aBytes, aCount);
      }
      std::ostringstream aHistory;
      aStream.printHistory(aHistory);
      EXPECT_EQ(aHistory.str(), aCase.itsExpected) << aCase.itsName;
   }
}

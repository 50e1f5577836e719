#include "talvenor/foundation/TNTrace.h"

#include <sstream>

#include <gtest/gtest.h>

#include "support/OnAnotherThread.h"

namespace
{

// The flags that are set, as a bit set; bits of numbers that do not exist would show too.
unsigned int Flags(const TNTrace& theTrace)
{
   unsigned int someFlags = 0;
   for (unsigned int aFlag = 0; aFlag < 32; ++aFlag)
   {
      someFlags |= unsigned(theTrace(aFlag)) << aFlag;
   }
   return someFlags;
}

} // namespace

TEST(TNTrace, IgnoresUnknownNumbersAndNames)
{
   TNTrace aTrace;
   aTrace.SetTrace(TNTrace::TNTracePDU);
   aTrace.SetTrace(18);
   aTrace.SetTrace(32 + 1);
   aTrace.ClearTrace(25);
   aTrace.ClearTrace(32 + 6);
   aTrace.SetTrace("TNTrace");
   aTrace.SetTrace("");
   aTrace.SetTrace("TNTracePDUx");
   EXPECT_EQ(Flags(aTrace), 1u << 6);
   aTrace.ClearTrace("tntracepdu");
   EXPECT_EQ(Flags(aTrace), 0u);
}

TEST(TNTrace, SetsAListOfNamesAndClearsNothing)
{
   struct ListCase
   {
      const char* itsList;
      unsigned int itsFlags;
   };
   const ListCase kCases[] = {
       {",,,", 0},
       {"TNTraceSocket,,TNTRACEPDU,Foo", 1u << 1 | 1u << 6},
       {"tntracedulstream", 1u << 17},
       {",TNTraceNone,TNTraceFileIO,", 1u << 0 | 1u << 14},
       {"TNTraceSocket, TNTracePDU", 1u << 1}, // blanks belong to the name
   };
   for (const ListCase& aCase : kCases)
   {
      TNTrace aTrace;
      aTrace.SetTrace(TNTrace::TNTraceThreads);
      aTrace.SetList(aCase.itsList);
      EXPECT_EQ(Flags(aTrace), aCase.itsFlags | 1u << 15) << aCase.itsList;
   }
}

TEST(TNTrace, FlagsMayChangeWhileOthersTestThem)
{
   std::ostringstream anOutput;
   TNTrace aTrace;
   aTrace.On(anOutput);
   OnThreads(3, [&](int theThread) {
      for (int aRound = 0; aRound < 1000; ++aRound)
      {
         if (theThread == 2 && aTrace(TNTrace::TNTracePDU))
         {
            LogEntry(aTrace) << "text\n";
         }
         else if (theThread < 2)
         {
            aTrace.ClearTrace(theThread ? TNTrace::TNTracePDU : TNTrace::TNTraceSocket);
            aTrace.SetTrace(theThread ? TNTrace::TNTracePDU : TNTrace::TNTraceSocket);
         }
      }
   });
   EXPECT_EQ(Flags(aTrace), 1u << 6 | 1u << 1);
}

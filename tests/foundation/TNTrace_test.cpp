#include "talvenor/foundation/TNTrace.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

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

TEST(TNTrace, KnowsEveryFlagByNumberAndName)
{
   const char* const kNames[] = {
       "TNTraceNone",
       "TNTraceSocket",
       "TNTraceSocketErrors",
       "TNTraceSocketOpenClose",
       "TNTraceSocketEOF",
       "TNTraceSocketBytesRead",
       "TNTracePDU",
       "TNTracePDUDicomObjects",
       "TNTracePDataTF",
       "TNTracePDUVerbose",
       "TNTraceDimsec",
       "TNTraceDimsecDicomObjects",
       "TNTraceDimsen",
       "TNTraceAssociation",
       "TNTraceFileIO",
       "TNTraceThreads",
       "TNTracePresentationContextManager",
       "TNTraceDULStream",
   };
   for (unsigned int aFlag = 0; aFlag < std::size(kNames); ++aFlag)
   {
      std::string aName = kNames[aFlag];
      TNTrace aTrace;
      aTrace.SetTrace(aName);
      EXPECT_EQ(Flags(aTrace), 1u << aFlag) << aName;
      std::transform(aName.begin(), aName.end(), aName.begin(), [](unsigned char c) { return char(std::tolower(c)); });
      aTrace.ClearTrace(aName);
      EXPECT_EQ(Flags(aTrace), 0u) << aName;
      aTrace.SetTrace(aFlag);
      EXPECT_EQ(Flags(aTrace), 1u << aFlag) << aName;
   }
   EXPECT_EQ(int(TNTrace::TNTraceDULStream), 17);
}

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
   aTrace.Clear();
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
       {"", 0},
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
   std::thread aTracer([&] {
      for (int aRound = 0; aRound < 2000; ++aRound)
      {
         if (aTrace(TNTrace::TNTracePDU))
         {
            LogEntry(aTrace) << "text\n";
         }
      }
   });
   std::thread anotherSetter([&] {
      for (int aRound = 0; aRound < 500; ++aRound)
      {
         aTrace.SetTrace(TNTrace::TNTraceSocket);
         aTrace.ClearTrace(TNTrace::TNTraceSocket);
      }
   });
   for (int aRound = 0; aRound < 500; ++aRound)
   {
      aTrace.ClearTrace(TNTrace::TNTracePDU);
      aTrace.SetTrace(TNTrace::TNTracePDU);
   }
   aTracer.join();
   anotherSetter.join();
   EXPECT_EQ(Flags(aTrace), 1u << 6);
}

TEST(TNTrace, TheGlobalStreamsAreOffAtLoad)
{
   for (const TNTrace* aTrace : {&gTNTracer, &gTNErrorLog})
   {
      EXPECT_EQ(Flags(*aTrace), 0u);
      EXPECT_FALSE(aTrace->IsOn());
   }
}

#include "talvenor/foundation/TNXInitializer.h"

#include <filesystem>
#include <iostream>

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{

// Works in a directory of its own and leaves the tracer as it was at load.
class TNXInitializerTest : public testing::Test
{
protected:
   TNXInitializerTest() { std::filesystem::current_path(itsDirectory.Path()); }
   ~TNXInitializerTest() override
   {
      gTNTracer.Off();
      gTNTracer.Clear();
      std::filesystem::current_path(itsFormerPath);
   }

   const std::filesystem::path itsFormerPath = std::filesystem::current_path();
   TemporaryDirectory itsDirectory;
};

} // namespace

TEST_F(TNXInitializerTest, TracesToTheStandardStreamsByTheirExactNames)
{
   TNXInitializer::SetTraceOn("cerr");
   EXPECT_EQ(gTNTracer.rdbuf(), std::cerr.rdbuf());
   TNXInitializer::SetTraceOn("cout");
   EXPECT_EQ(gTNTracer.rdbuf(), std::cout.rdbuf());
   EXPECT_EQ(itsDirectory.FileCount(), 0u);
}

TEST_F(TNXInitializerTest, TracesToAFileByAnyOtherName)
{
   WriteFile("COUT", "old\n");
   TNXInitializer::SetTraceOn("COUT");
   EXPECT_EQ(gTNTracer.GetFilename(), "COUT");
   gTNTracer << "new\n";
   TNXInitializer::SetTraceOn("missing/file");
   EXPECT_FALSE(gTNTracer.IsOn());
   EXPECT_EQ(ReadFile("COUT"), "old\nnew\n");
}

TEST_F(TNXInitializerTest, AddsTraceFlags)
{
   TNXInitializer::SetTraceFlags("TNTraceDimsec,TNTraceDimsecDicomObjects");
   for (unsigned int aFlag = 0; aFlag < TNTrace::itsFlagCount; ++aFlag)
   {
      EXPECT_EQ(gTNTracer(aFlag), aFlag == 10 || aFlag == 11) << aFlag;
   }
   TNXInitializer::SetTraceFlags("TNTraceSocket");
   EXPECT_TRUE(gTNTracer(1) && gTNTracer(10) && gTNTracer(11));
}

TEST_F(TNXInitializerTest, SetsTheDefaultTitle)
{
   EXPECT_EQ(AETitle::GetDefaultAETitle(), "");
   TNXInitializer::SetDefaultAETitle("ARCHIVE");
   EXPECT_EQ(AETitle::GetDefaultAETitle(), "ARCHIVE");
   TNXInitializer::SetDefaultAETitle("");
}

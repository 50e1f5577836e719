#include "talvenor/foundation/TNXInitializer.h"

#include <filesystem>
#include <iostream>

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
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
      std::filesystem::current_path(itsFormerPath);
   }

   const std::filesystem::path itsFormerPath = std::filesystem::current_path();
   TemporaryDirectory itsDirectory;
};

} // namespace

TEST_F(TNXInitializerTest, TracesToAStandardStreamByItsExactNameAndElseToAFile)
{
   TNXInitializer::SetTraceOn("cout");
   EXPECT_EQ(gTNTracer.rdbuf(), std::cout.rdbuf());
   WriteFile("COUT", "old\n");
   TNXInitializer::SetTraceOn("COUT");
   gTNTracer << "new\n";
   TNXInitializer::SetTraceOn("missing/file");
   EXPECT_FALSE(gTNTracer.IsOn());
   EXPECT_EQ(ReadFile("COUT"), "old\nnew\n");
}

#include "talvenor/foundation/TNResult.h"

#include <gtest/gtest.h>
#include <set>

namespace
{

struct DescribeCase
{
   int itsCode;
   const char* itsText;
};

const DescribeCase kCases[] = {
    {0, "No error."},
    {1, "Failed system call."},
    {5, "Host down, network down, or connection refused; try Again."},
    {49, "Association contains no presentation context supporting required abstract syntax and transfer syntax."},
    {72, "DICOM status in response indicates that an error occurred"},
    {73, "Unknown result code."},
    {-1, "Unknown result code."},
};

TEST(TNResult, DescribesEveryCodeAndNothingElse)
{
   for (const DescribeCase& aCase : kCases)
   {
      EXPECT_EQ(TNResult::Describe(static_cast<TNResultCode>(aCase.itsCode)), aCase.itsText) << aCase.itsCode;
   }
   std::set<RWCString> aTexts;
   for (int i = 0; i <= TN_ERROR_STATUS; ++i)
   {
      aTexts.insert(TNResult::Describe(static_cast<TNResultCode>(i)));
   }
   EXPECT_EQ(aTexts.size(), 73u) << "two codes share a text";
}

} // namespace

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
    {25, "Max length specified in PDU > 0 and < 8."},
    {49, "Association contains no presentation context supporting required abstract syntax and transfer syntax."},
    {50, "Address not found while looking up by host name (DNS)"},
    {52, "Error while looking up host name or address (DNS)"},
    {53, "GetUID() returned FALSE indicating SOP Class not supported."},
    {54, "Operation-in-progress cancelled by user request."},
    {55, "Previous PDV not fully read when attempting read new PDV"},
    {61, "Invalid data encoding (e.g. encapsulated pixels for non-lee syntax)"},
    {72, "DICOM status in response indicates that an error occurred"},
    {73, "Unknown result code."},
    {1000, "Unknown result code."},
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

// Hosts store the numbers: a code inserted in the middle would renumber those behind it.
TEST(TNResult, NumbersAreFixed)
{
   EXPECT_EQ(TN_TIMED_OUT, 8);
   EXPECT_EQ(TN_CLOSED_BY_PEER, 20);
   EXPECT_EQ(TN_ALL_CONTEXTS_REJECTED, 34);
   EXPECT_EQ(TN_CANCELLED, 54);
   EXPECT_EQ(TN_ERROR_STATUS, 72);
}

} // namespace

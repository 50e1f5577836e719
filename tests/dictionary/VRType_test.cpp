#include "talvenor/dictionary/VRType.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace
{
// The codes out of all 65536 for which the test holds, as text.
template <class Test>
std::set<std::string> CodesWhere(Test theTest)
{
   std::set<std::string> aCodes;
   for (unsigned int aCode = 0; aCode <= 0xFFFF; ++aCode)
   {
      if (theTest(static_cast<UINT16>(aCode)))
      {
         aCodes.insert({static_cast<char>(aCode >> 8), static_cast<char>(aCode & 0xFF)});
      }
   }
   return aCodes;
}
} // namespace

TEST(VRType, KnowsTheTwentySevenCodesAndNoOther)
{
   EXPECT_EQ(CodesWhere(IsKnownVRCode),
             (std::set<std::string>{"AE", "AS", "AT", "CS", "DA", "DS", "DT", "FL", "FD", "IS", "LO", "LT", "OB", "OF",
                                    "OW", "PN", "SH", "SL", "SQ", "SS", "ST", "TM", "UI", "UL", "UN", "US", "UT"}));
   EXPECT_EQ(VRCode::UI, 0x5549);
}

TEST(VRType, SixCodesHaveTheLongHeader)
{
   EXPECT_EQ(CodesWhere(HasLongHeaderVRCode), (std::set<std::string>{"OB", "OF", "OW", "SQ", "UN", "UT"}));
}

TEST(VRType, StringsAreTheCharacterRepresentations)
{
   EXPECT_EQ(CodesWhere(IsStringVRCode), (std::set<std::string>{"AE", "AS", "CS", "DA", "DS", "DT", "IS", "LO", "LT",
                                                                "PN", "SH", "ST", "TM", "UI", "UT"}));
}

TEST(VRType, BinaryNumbersAreSwappedByTheirSize)
{
   EXPECT_EQ(CodesWhere([](UINT16 theCode) { return PrimitiveSizeOfVRCode(theCode) == 2; }),
             (std::set<std::string>{"AT", "OW", "SS", "US"}));
   EXPECT_EQ(CodesWhere([](UINT16 theCode) { return PrimitiveSizeOfVRCode(theCode) == 4; }),
             (std::set<std::string>{"FL", "OF", "SL", "UL"}));
   EXPECT_EQ(CodesWhere([](UINT16 theCode) { return PrimitiveSizeOfVRCode(theCode) == 8; }),
             (std::set<std::string>{"FD"}));
}

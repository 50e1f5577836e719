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

// PS3.5 6.2 and 7.1.2
TEST(VRType, EveryCodeHasTheTraitsOfItsRepresentation)
{
   using Codes = std::set<std::string>;
   EXPECT_EQ(CodesWhere(IsKnownVRCode),
             (Codes{"AE", "AS", "AT", "CS", "DA", "DS", "DT", "FL", "FD", "IS", "LO", "LT", "OB", "OF",
                    "OW", "PN", "SH", "SL", "SQ", "SS", "ST", "TM", "UI", "UL", "UN", "US", "UT"}));
   EXPECT_EQ(CodesWhere(HasLongHeaderVRCode), (Codes{"OB", "OF", "OW", "SQ", "UN", "UT"}));
   EXPECT_EQ(CodesWhere(IsStringVRCode),
             (Codes{"AE", "AS", "CS", "DA", "DS", "DT", "IS", "LO", "LT", "PN", "SH", "ST", "TM", "UI", "UT"}));
   const auto aSized = [](unsigned int theSize) {
      return CodesWhere([=](UINT16 theCode) { return PrimitiveSizeOfVRCode(theCode) == theSize; });
   };
   EXPECT_EQ(aSized(2), (Codes{"AT", "OW", "SS", "US"}));
   EXPECT_EQ(aSized(4), (Codes{"FL", "OF", "SL", "UL"}));
   EXPECT_EQ(aSized(8), (Codes{"FD"}));
}

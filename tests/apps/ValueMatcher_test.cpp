#include "apps/tn/answers/ValueMatcher.h"

#include <gtest/gtest.h>

#include "talvenor/dictionary/VRType.h"

namespace
{
struct Row
{
   UINT16 itsType;
   const char* itsKey;
   const char* itsValue;
   bool itsMatches;
};

const Row kRows[] = {
    // universal
    {VRCode::LO, "", "anything", true},
    {VRCode::LO, "", "", true},
    {VRCode::UI, "*", "1.2", true},
    {VRCode::DA, "*", "", true},
    // single values
    {VRCode::LO, "4711", "4711", true},
    {VRCode::LO, "4711", "4711 ", true},
    {VRCode::LO, "4711", "47110", false},
    {VRCode::LO, "Ab", "ab", false},
    {VRCode::CS, "MR", "CT\\MR", true},
    {VRCode::CS, "CT\\MR", "MR", true},
    {VRCode::CS, "CT", "", false},
    {VRCode::LT, "a\\b", "b", false},
    {VRCode::IS, "7", "007", true},
    {VRCode::IS, "7", "+7 ", true},
    {VRCode::DS, "1.5", "15e-1", true},
    {VRCode::IS, "7", "8", false},
    {VRCode::UI, "1.2.3", "1.2.3", true},
    {VRCode::UI, "1.2.*", "1.2.3", false},
    {VRCode::UI, "1.2.3\\1.2.4", "1.2.4", true},
    {VRCode::UI, "1.2.3\\1.2.4", "1.2", false},
    // wild cards
    {VRCode::LO, "*b*d", "abcd", true},
    {VRCode::LO, "*b*d", "abcde", false},
    {VRCode::LO, "a?c", "a\u00E9c", true},
    {VRCode::LO, "a?c", "ac", false},
    {VRCode::SH, "?*", "", false},
    {VRCode::SH, "a**", "a", true},
    // names
    {VRCode::PN, "smith^john", "Smith^John^^^", true},
    {VRCode::PN, "Smith^John^", "SMITH^JOHN", true},
    {VRCode::PN, "Smith", "Smith^John", false},
    {VRCode::PN, "Smith*", "Smith^John", true},
    {VRCode::PN, "*^John", "Smith^John", true},
    {VRCode::PN, "m\u00DCller*", "M\u00FCller^Hans", true},
    {VRCode::PN, "\u5C71\u7530*", "Yamada^Tarou=\u5C71\u7530^\u592A\u90CE", true},
    {VRCode::PN, "=\u5C71\u7530*", "Yamada^Tarou=\u5C71\u7530^\u592A\u90CE", true},
    {VRCode::PN, "=\u5C71\u7530*", "\u5C71\u7530^Tarou", false},
    // dates and times
    {VRCode::DA, "20240131", "20240131", true},
    {VRCode::DA, "20240131", "2024.01.31", true},
    {VRCode::DA, "20240101-20240131", "20240131", true},
    {VRCode::DA, "20240101-20240131", "20240201", false},
    {VRCode::DA, "20240101-", "20231231", false},
    {VRCode::DA, "-20240101", "19700101", true},
    {VRCode::DA, "-20240101", "", false},
    {VRCode::DA, "20240101-", "nonsense", false},
    {VRCode::TM, "10-12", "125959.5", true},
    {VRCode::TM, "10-12", "13", false},
    {VRCode::TM, "1030", "103000.000", true},
    {VRCode::TM, "-0800", "07", true},
    {VRCode::DT, "20240101-20240131", "20240131235959", true},
    {VRCode::DT, "2024-2025", "202506", true},
    {VRCode::DT, "202401011200-0500", "202401011200", true},
    {VRCode::DT, "202401011200-0500-202401011300-0500", "2024010112301", false}, // no moment: an odd number of digits
    {VRCode::DT, "202401011200-0500-202401011300-0500", "20240101123015", true},
};
} // namespace

TEST(ValueMatcher, Rules)
{
   for (const Row& aRow : kRows)
   {
      EXPECT_EQ(ValueMatcher(aRow.itsType, aRow.itsKey).Matches(aRow.itsValue), aRow.itsMatches)
          << "\"" << aRow.itsKey << "\" and \"" << aRow.itsValue << "\"";
   }
}

TEST(ValueMatcher, RefusesWhatIsNoDateOrTime)
{
   for (const char* const aKey :
        {"2024", "20240101-2", "-", "--", "20240101-20240102-20240103", "' OR 1=1", "2024010a"})
   {
      EXPECT_THROW(ValueMatcher(VRCode::DA, aKey), ValueMatcher::BadKey) << aKey;
   }
}

// Time is bounded by the product of the lengths, whatever the number of stars.
TEST(ValueMatcher, EndsSoonForManyStars)
{
   std::string aKey;
   for (int aCount = 0; aCount < 5000; ++aCount)
   {
      aKey += "*a";
   }
   EXPECT_FALSE(ValueMatcher(VRCode::LO, aKey + "b").Matches(std::string(2000, 'a')));
}

TEST(ValueMatcher, SaysWhatAnIndexCanLookUp)
{
   EXPECT_EQ(ValueMatcher(VRCode::UI, "1.2\\1.3").GetExactValues(), (std::vector<std::string>{"1.2", "1.3"}));
   EXPECT_TRUE(ValueMatcher(VRCode::LO, "1*").GetExactValues().empty());
   EXPECT_TRUE(ValueMatcher(VRCode::LO, "").GetExactValues().empty());
   EXPECT_TRUE(ValueMatcher(VRCode::PN, "a").GetExactValues().empty());
}

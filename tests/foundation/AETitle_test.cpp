#include "talvenor/foundation/AETitle.h"

#include <gtest/gtest.h>

TEST(AETitle, KeepsSixteenPaddedCharacters)
{
   const struct
   {
      const char* itsText;
      const char* itsCharacters;
      const char* itsTitle;
   } kCases[] = {
       {nullptr, "                ", ""},
       {"                     ", "                ", ""},
       {"   A B  ", "A B             ", "A B"},
       {"  0123456789ABCDEFG", "0123456789ABCDEF", "0123456789ABCDEF"},
   };
   for (const auto& aCase : kCases)
   {
      const AETitle aTitle(aCase.itsText);
      EXPECT_STREQ(static_cast<const char*>(aTitle), aCase.itsCharacters) << aCase.itsCharacters;
      EXPECT_EQ(aTitle.GetTitle(), aCase.itsTitle) << aCase.itsCharacters;
      EXPECT_EQ(aTitle.IsNull(), *aCase.itsTitle == '\0') << aCase.itsCharacters;
   }
   EXPECT_EQ(AETitle(std::string("AB\0CD", 5)).GetTitle(), "AB");
}

TEST(AETitle, ComparesNormalisedTexts)
{
   const AETitle aTitle("STORE");
   EXPECT_TRUE(aTitle == "  STORE     ");
   EXPECT_TRUE(aTitle != "store");
   EXPECT_TRUE(aTitle != static_cast<const char*>(nullptr));
   EXPECT_FALSE(AETitle() == static_cast<const char*>(nullptr));
}

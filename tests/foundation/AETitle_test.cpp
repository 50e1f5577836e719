#include "talvenor/foundation/AETitle.h"

#include <gtest/gtest.h>

TEST(AETitle, KeepsSixteenPaddedCharacters)
{
   struct TitleCase
   {
      const char* itsName;
      const char* itsText;
      const char* itsCharacters;
      const char* itsTitle;
   };
   const TitleCase kCases[] = {
       {"null pointer", nullptr, "                ", ""},
       {"blank", "                     ", "                ", ""},
       {"blanks around and inside", "   A B  ", "A B             ", "A B"},
       {"cut behind leading blanks", "  0123456789ABCDEFG", "0123456789ABCDEF", "0123456789ABCDEF"},
   };
   for (const TitleCase& aCase : kCases)
   {
      const AETitle aTitle(aCase.itsText);
      EXPECT_STREQ(static_cast<const char*>(aTitle), aCase.itsCharacters) << aCase.itsName;
      EXPECT_EQ(aTitle.GetTitle(), aCase.itsTitle) << aCase.itsName;
      EXPECT_EQ(aTitle.IsNull(), *aCase.itsTitle == '\0') << aCase.itsName;
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

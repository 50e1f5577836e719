#include "talvenor/dictionary/UID.h"

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "talvenor/dictionary/MUIDDictionary.h"

using namespace std::string_literals;

TEST(UID, IsSetFromText)
{
   const std::string aLongest(64, '1');
   struct
   {
      const char* itsName;
      std::string itsText;
      int itsLength;
      std::string itsExpected;
      unsigned int itsSize;
   } const kCases[] = {
       {"odd length", "1.2.840.10008.1.2", -1, "1.2.840.10008.1.2", 18},
       {"pad NUL", "1.2.3\0"s, 6, "1.2.3", 6},
       {"pad of another kind", "1.2.3x", 6, "1.2.3", 6},
       {"only one pad of another kind", "1.2.3xx", 7, "1.2.3x", 6},
       {"pad of another kind stays in a text", "1.2.3x", -1, "1.2.3x", 6},
       {"text ends at a NUL", "1.2\0.3"s, 6, "1.2", 4},
       {"no length", "1.2.3", 0, "", 0},
       {"letter first", "a1.2", -1, "", 0},
       {"only spaces", "  ", 2, "", 0},
       {"64 characters", aLongest, 64, aLongest, 64},
       {"65 characters and their number", aLongest + "1", 65, "", 0},
       {"65 characters of text", aLongest + "1", -1, aLongest, 64},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      UID aUID("9.9.9.9.9");
      aUID.Set(aCase.itsText.c_str(), aCase.itsLength);
      EXPECT_EQ(aUID.ToString(), aCase.itsExpected);
      EXPECT_EQ(aUID.GetSize(), aCase.itsSize);
      EXPECT_EQ(aUID.IsNull(), aCase.itsExpected.empty());
   }
   UID aUID("1.2.3");
   aUID.Set(static_cast<const char*>(aUID) + 2, -1); // from itself
   EXPECT_EQ(aUID, "2.3");
   aUID.Set(nullptr, -1);
   EXPECT_TRUE(aUID.IsNull());
}

TEST(UID, LengthCutsTheTextAndForgetsTheRest)
{
   UID aUID("1.2.345");
   aUID.SetLength(5);
   EXPECT_EQ(aUID, "1.2.3");
   aUID.SetLength(100); // no stale characters come back
   EXPECT_EQ(aUID, "1.2.3");
   EXPECT_EQ(aUID.GetSize(), 64u);
}

TEST(UID, KeepsItsDictionaryToItself)
{
   TemporaryDirectory aDirectory;
   WriteFile(aDirectory.File("uid.dic"), "SC,1.2.3,Example,An example\n");
   WriteFile(aDirectory.File("bad.dic"), "SC,1.2.3\n");
   UID aUID("1.2.3");
   EXPECT_EQ(aUID.GetUIDDictionary(), &MUIDDictionary::GetDefaultUIDDictionary());
   ASSERT_EQ(aUID.SetUIDDictionary(aDirectory.File("uid.dic")), 1);
   ASSERT_NE(aUID.GetUIDDictionary(), nullptr);
   EXPECT_NE(aUID.GetUIDDictionary()->FindUID("1.2.3"), nullptr);

   const UID aCopy(aUID);
   EXPECT_EQ(aCopy.GetUIDDictionary(), &MUIDDictionary::GetDefaultUIDDictionary());
   EXPECT_EQ(aUID.SetUIDDictionary(aDirectory.File("bad.dic")), 0);
   EXPECT_EQ(aUID.GetUIDDictionary(), nullptr);
}

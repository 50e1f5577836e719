#include "talvenor/dictionary/MPrivateDataDictionary.h"

#include <gtest/gtest.h>
#include <sstream>

namespace
{
MPrivateDataDictionary Loaded(const std::string& theText)
{
   std::istringstream aStream(theText);
   return MPrivateDataDictionary(aStream);
}
} // namespace

TEST(MPrivateDataDictionary, FindsByTagOffsetAndName)
{
   const MPrivateDataDictionary aDictionary = Loaded("PrivateCreator = EXAMPLE\n0029,0034,DS,d,Example,1,1\n");
   const MDDEntry* anEntry = aDictionary.Find("Example");
   ASSERT_NE(anEntry, nullptr);
   EXPECT_EQ(aDictionary.Find(MAttributeTag(0x0029, 0x1234)), anEntry); // any block
   EXPECT_EQ(aDictionary.Find(0x34), anEntry);
   EXPECT_EQ(aDictionary.Find(MAttributeTag(0x0031, 0x1234)), nullptr);
   EXPECT_EQ(aDictionary.Find(0x0134), nullptr); // not an offset
}

// The group of a private dictionary may lie among those of curves and overlays; there it means itself.
TEST(MPrivateDataDictionary, RepeatingGroupsMeanThemselves)
{
   const MPrivateDataDictionary aDictionary = Loaded("PrivateCreator = EXAMPLE\n6001,0010,DS,d,Example,1,1\n");
   EXPECT_NE(aDictionary.Find(MAttributeTag(0x6001, 0x1010)), nullptr);
   EXPECT_EQ(aDictionary.Find(MAttributeTag(0x6003, 0x1010)), nullptr);
}

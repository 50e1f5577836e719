#include "talvenor/dictionary/MAttributeTag.h"

#include <gtest/gtest.h>
#include <sstream>

#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

TEST(MAttributeTag, IsOrderedByGroupThenElement)
{
   const MAttributeTag aTag(0x0010, 0xFFFF);
   EXPECT_LT(aTag, MAttributeTag(0x0011, 0x0000));
   EXPECT_GT(aTag, MAttributeTag(0x0010, 0xFFFE));
   EXPECT_LE(aTag, MAttributeTag(0x0010, 0xFFFF));
   EXPECT_NE(aTag, MAttributeTag(0xFFFF, 0x0010));
   EXPECT_EQ(aTag.GetTag(), 0x0010FFFFu);
}

TEST(MAttributeTag, HashFollowsTheSettersAndIsNeverZero)
{
   MAttributeTag aTag;
   EXPECT_NE(aTag.Hash(), 0u);
   aTag.Hash();
   aTag.SetTag(0x7FE0, 0x0010);
   EXPECT_EQ(aTag.Hash(), MAttributeTag(0x7FE0, 0x0010).Hash());
   aTag.Group(0x0008);
   aTag.Element(0x0016);
   EXPECT_EQ(MAttributeTag::hash(aTag), MAttributeTag(0x0008, 0x0016).Hash());
}

TEST(MAttributeTag, NumericTextHasLeadingZerosAndLowerCase)
{
   EXPECT_EQ(MAttributeTag(0x0008, 0x0016).AsNumericString(), "0008, 0016");
   EXPECT_EQ(MAttributeTag(0x7FE0, 0x0A0F).AsNumericString(), "7fe0, 0a0f");
}

TEST(MAttributeTag, TextIsTheNameInTheDictionaryOrTheNumbers)
{
   std::istringstream aStream("0010,0010,PN,\"Patient's Name\",PatientName,1,1\n");
   const MDataDictionary aDictionary(aStream);
   const PrivateDataDictionaryCatalog aCatalog;
   const InstanceSpecificDataDictionary anInstance(aDictionary, aCatalog);
   EXPECT_EQ(MAttributeTag(0x0010, 0x0010).AsString(anInstance), "PatientName");
   EXPECT_EQ(MAttributeTag(0x0010, 0x0020).AsString(anInstance), "0010, 0020");
}

TEST(MAttributeTag, TextWithoutDictionaryAsksTheDefaultOne)
{
   EXPECT_EQ(MAttributeTag(0x0010, 0x0010).AsString(), "0010, 0010");
   std::istringstream aStream("0010,0010,PN,\"Patient's Name\",PatientName,1,1\n");
   MDataDictionary::SetDefaultDataDictionary(aStream);
   EXPECT_EQ(MAttributeTag(0x0010, 0x0010).AsString(), "PatientName");
   MDataDictionary::GetDefaultDataDictionary().Unload();
}

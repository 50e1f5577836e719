#include "talvenor/dictionary/MAttributeTag.h"

#include <gtest/gtest.h>

#include "support/DefaultDictionary.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

TEST(MAttributeTag, HashFollowsTheSettersAndIsNeverZero)
{
   MAttributeTag aTag;
   EXPECT_NE(aTag.Hash(), 0u);
   aTag.SetTag(0x7FE0, 0x0010);
   EXPECT_EQ(aTag.Hash(), MAttributeTag(0x7FE0, 0x0010).Hash());
   aTag.Group(0x0008);
   aTag.Element(0x0016);
   EXPECT_EQ(MAttributeTag::hash(aTag), MAttributeTag(0x0008, 0x0016).Hash());
}

TEST(MAttributeTag, TextIsTheNameInTheDictionaryOrTheNumbers)
{
   const DefaultDictionary aDictionary("0010,0010,PN,\"Patient's Name\",PatientName,1,1\n");
   const MDataDictionary anEmpty;
   const PrivateDataDictionaryCatalog aCatalog;
   const InstanceSpecificDataDictionary anInstance(anEmpty, aCatalog);
   EXPECT_EQ(MAttributeTag(0x0010, 0x0010).AsString(), "PatientName");
   EXPECT_EQ(MAttributeTag(0x0010, 0x0010).AsString(anInstance), "0010, 0010");
   EXPECT_EQ(MAttributeTag(0x7FE0, 0x0A0F).AsString(), "7fe0, 0a0f");
}

#include "talvenor/foundation/TNXInitializer.h"

#include <sstream>

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDDEntry.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MUIDDictionary.h"

TEST(TNXInitializer, LoadsTheDefaultDictionaries)
{
   const TemporaryDirectory aDirectory;
   const std::string aFile = aDirectory.File("tags.dic");
   WriteFile(aFile, "0010,0010,PN,\"Patient's Name\",PatientName,1,1\n");
   EXPECT_TRUE(TNXInitializer::SetDataDictionary(aFile));
   EXPECT_FALSE(TNXInitializer::SetDataDictionary(aDirectory.File("missing.dic"))); // keeps what was there
   const InstanceSpecificDataDictionary& aDictionary =
       InstanceSpecificDataDictionary::GetDefaultInstanceSpecificDataDictionary();
   EXPECT_NE(aDictionary.Find(MAttributeTag(0x0010, 0x0010)), nullptr);

   std::istringstream aStream("0010,0020,LO,\"Patient ID\",PatientID,1,1\n");
   EXPECT_TRUE(TNXInitializer::SetDataDictionary(aStream)); // replaces it
   EXPECT_EQ(aDictionary.Find(MAttributeTag(0x0010, 0x0010)), nullptr);
   EXPECT_NE(aDictionary.Find(MAttributeTag(0x0010, 0x0020)), nullptr);
   MDataDictionary::GetDefaultDataDictionary().Unload();
}

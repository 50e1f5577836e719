#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"

#include <gtest/gtest.h>

#include "support/Dictionaries.h"
#include "talvenor/dictionary/PrivateAllocation.h"

namespace
{
class InstanceSpecificDataDictionaryTest : public testing::Test, protected Dictionaries
{
protected:
   InstanceSpecificDataDictionaryTest()
       : Dictionaries("0010,0010,PN,d,PatientName,1,1\n0029,1234,LO,d,Misplaced,1,1\n"
                      "0007,0010,SH,d,OddButPublic,1,1\nFFFF,1000,SH,d,LastGroup,1,1\n"
                      "0010,0020,UN,d,ListedAsUN,1,1\n",
                      "PrivateCreator = EXAMPLE\n0029,0034,DS,d,ExampleValue,1,1\n")
   {}

   int Register(const char* theCreator, UINT16 theGroup, UINT16 theElement)
   {
      return itsDictionary.RegisterPrivateCreator(theCreator, MAttributeTag(theGroup, theElement));
   }
};
using ISDD = InstanceSpecificDataDictionary;
} // namespace

TEST(PrivateTags, AreValidByGroupAndElement)
{
   struct
   {
      UINT16 itsGroup, itsElement;
      bool itsIsPrivateGroup, itsIsCreator;
   } const kCases[] = {
       {0x0009, 0x0010, true, true},   {0x0029, 0x00FF, true, true},   {0xFFFD, 0x0010, true, true},
       {0x0029, 0x000F, true, false},  {0x0029, 0x0100, true, false},  {0x0008, 0x0010, false, false},
       {0x0007, 0x0010, false, false}, {0xFFFF, 0x0010, false, false}, {0x1021, 0x0010, true, false},
   };
   for (const auto& aCase : kCases)
   {
      const MAttributeTag aTag(aCase.itsGroup, aCase.itsElement);
      SCOPED_TRACE(aTag.AsNumericString());
      EXPECT_EQ(ISDD::IsValidPrivateGroup(aCase.itsGroup), aCase.itsIsPrivateGroup);
      EXPECT_EQ(ISDD::IsValidPrivateCreatorAllocation(aTag), aCase.itsIsCreator);
   }
}

TEST(PrivateTags, IdentifiersAreShortAndPrintable)
{
   EXPECT_TRUE(ISDD::IsValidPrivateCreatorIdentifier(std::string(64, ' ')));
   EXPECT_FALSE(ISDD::IsValidPrivateCreatorIdentifier(std::string(65, 'A')));
   EXPECT_FALSE(ISDD::IsValidPrivateCreatorIdentifier(""));
   for (const char aCharacter : {'\t', '\0', '\x1F', '\x7F', '\xC4'})
   {
      EXPECT_FALSE(ISDD::IsValidPrivateCreatorIdentifier(std::string("A") + aCharacter));
   }
}

TEST_F(InstanceSpecificDataDictionaryTest, ABlockHasOneCreatorAndACreatorOneBlockOfAGroup)
{
   EXPECT_EQ(Register("  EXAMPLE ", 0x0029, 0x0010), 1);
   EXPECT_EQ(Register("EXAMPLE", 0x0029, 0x0010), 1); // again
   EXPECT_EQ(Register("EXAMPLE", 0x0029, 0x0011), 0); // a second block
   EXPECT_EQ(Register("OTHER", 0x0029, 0x0010), 0);   // somebody's block
   EXPECT_EQ(Register("EXAMPLE", 0x0031, 0x0011), 1); // another group
   EXPECT_EQ(Register("OTHER", 0x0029, 0x00FF), 1);
   ASSERT_NE(itsDictionary.FindPrivateAllocation(" EXAMPLE", 0x0029), nullptr);
   EXPECT_EQ(*itsDictionary.FindPrivateAllocation("EXAMPLE", 0x0029), MAttributeTag(0x0029, 0x0010));
   ASSERT_NE(itsDictionary.FindBlockOwner(0x0029, 0xFF01), nullptr);
   EXPECT_EQ(itsDictionary.FindBlockOwner(0x0029, 0xFF01)->GetPrivateCreatorID(), "OTHER");
}

TEST_F(InstanceSpecificDataDictionaryTest, PrivateTagsAreFoundThroughTheirBlock)
{
   ASSERT_EQ(Register("EXAMPLE", 0x0029, 0x0012), 1);
   const MDDEntry* anEntry = itsDictionary.Find(MAttributeTag(0x0029, 0x1234));
   ASSERT_NE(anEntry, nullptr);
   EXPECT_EQ(anEntry->Name(), "ExampleValue"); // not what the public dictionary has for the tag
   EXPECT_EQ(itsDictionary.Find(MAttributeTag(0x0029, 0x1334)), nullptr);
   EXPECT_EQ(itsDictionary.Find("ExampleValue", "EXAMPLE"), anEntry);
   EXPECT_EQ(itsDictionary.Find("ExampleValue", ""), nullptr);
   EXPECT_EQ(itsDictionary.GetPrivateBlockGroup("OTHER"), -1);
}

TEST_F(InstanceSpecificDataDictionaryTest, PublicTagsAreThoseOutsidePrivateGroups)
{
   EXPECT_NE(itsDictionary.Find(MAttributeTag(0x0007, 0x0010)), nullptr);
   EXPECT_NE(itsDictionary.Find(MAttributeTag(0xFFFF, 0x1000)), nullptr);
   EXPECT_EQ(itsDictionary.Find("PatientName", ""), itsPublic.Find("PatientName"));
   EXPECT_EQ(itsDictionary.Find(MAttributeTag(0x0029, 0x1234)), nullptr); // listed, but in a private group
   EXPECT_EQ(itsDictionary.TypeCodeOf(0x0010, 0x0020), VRCode::UN);       // listed so
   EXPECT_EQ(itsDictionary.TypeCodeOf(0x0010, 0x0030), VRCode::None);
}

TEST_F(InstanceSpecificDataDictionaryTest, AllocatesTheFirstFreeBlock)
{
   ASSERT_EQ(Register("A", 0x0029, 0x0010), 1);
   ASSERT_EQ(Register("B", 0x0029, 0x0011), 1);
   struct
   {
      const char* itsName;
      const char* itsCreator;
      MAttributeTag itsTag;
      int itsResult;
      UINT16 itsElement;
   } const kCases[] = {
       {"below the first block", "NEW", {0x0029, 0x0000}, 1, 0x0012},
       {"there already", " NEW ", {0x0029, 0x00FF}, 1, 0x0012},
       {"from a given block on", "NEXT", {0x0029, 0x0080}, 1, 0x0080},
       {"the last block", "LAST", {0x0029, 0x00FF}, 1, 0x00FF},
       {"beyond the last block", "C", {0x0029, 0x0100}, 0, 0x0100},
       {"nothing from there on", "C", {0x0029, 0x00FF}, 0, 0x00FF},
       {"group without blocks", "C", {0x1021, 0x0000}, 0, 0x0000},
       {"not a creator", "", {0x0029, 0x0000}, 0, 0x0000},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      MAttributeTag aTag = aCase.itsTag;
      EXPECT_EQ(itsDictionary.GetPrivateAllocation(aCase.itsCreator, aTag), aCase.itsResult);
      EXPECT_EQ(aTag, MAttributeTag(aCase.itsTag.Group(), aCase.itsElement));
   }
}

TEST_F(InstanceSpecificDataDictionaryTest, CopiesStandAlone)
{
   ASSERT_EQ(Register("EXAMPLE", 0x0029, 0x0012), 1);
   auto aSource = std::make_unique<InstanceSpecificDataDictionary>(itsDictionary);
   const InstanceSpecificDataDictionary aCopy(*aSource);
   InstanceSpecificDataDictionary anAssigned(itsPublic, itsCatalog);
   anAssigned.RegisterPrivateCreator("GONE", MAttributeTag(0x0029, 0x0010));
   anAssigned = aCopy;
   anAssigned = *&anAssigned;
   aSource.reset();
   itsDictionary.ClearPrivateCreators();
   for (const InstanceSpecificDataDictionary* aDictionary : {&aCopy, &std::as_const(anAssigned)})
   {
      EXPECT_NE(aDictionary->Find(MAttributeTag(0x0029, 0x1234)), nullptr);
      ASSERT_NE(aDictionary->FindBlockOwner(0x0029, 0x1234), nullptr);
      EXPECT_EQ(aDictionary->FindBlockOwner(0x0029, 0x1234)->GetPrivateCreatorID(), "EXAMPLE");
      EXPECT_FALSE(aDictionary->ContainsCreatorAllocation("GONE", 0x0029));
   }
}

// Private elements, PS3.5 7.8.1: the creator element (gggg,00bb) reserves (gggg,bb00) to (gggg,bbFF).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Dictionaries.h"
#include "support/Elements.h"

using testing::ElementsAre;

namespace
{
const char kAcme[] = "PrivateCreator = ACME 1.0\n"
                     "0029,10,US,Weight,Weight,1,1\n"
                     "0029,11,LO,Label,Label,1,1\n"
                     "0029,12,UN,Blob,Blob,1,1\n";

class DICOMObjectPrivate : public testing::Test, protected Dictionaries
{
protected:
   DICOMObjectPrivate() : Dictionaries("", kAcme)
   {
      itsSet.SetDataDictionary(new InstanceSpecificDataDictionary(itsPublic, itsCatalog));
   }

   VR* Weight(UINT16 theType = VRCode::US) { return NumberElement<UINT16>(0x00290010, theType, 70); }

   DICOMDataObject itsSet;
};
} // namespace

TEST_F(DICOMObjectPrivate, TheFirstElementOfACreatorAllocatesABlock)
{
   EXPECT_EQ(itsSet.Push("ACME 1.0", Weight(VRCode::None)), 1);
   EXPECT_THAT(TagsOf(itsSet), ElementsAre(0x00290010u, 0x00291010u));
   const VR* aCreator = itsSet.GetVR(0x0029, 0x0010);
   EXPECT_EQ(aCreator->GetTypeCode(), VRCode::LO);
   EXPECT_EQ(std::string(aCreator->GetData(), aCreator->GetData() + aCreator->GetLength()), "ACME 1.0");
   EXPECT_EQ(itsSet.GetVR(0x0029, 0x1010)->GetTypeCode(), VRCode::US) << "typed by the private dictionary";

   EXPECT_EQ(itsSet.Push("ACME 1.0", TextElement(0x0029FF11, "label")), 1) << "the low byte counts";
   EXPECT_THAT(TagsOf(itsSet), ElementsAre(0x00290010u, 0x00291010u, 0x00291011u));
   EXPECT_EQ(itsSet.ReplaceVR("ACME 1.0", TextElement(0x00290011, "other")), 1);
   EXPECT_EQ(TextOf(itsSet, 0x00291011), "other");
}

TEST_F(DICOMObjectPrivate, WhatIsRefusedIsDestroyed)
{
   int aCount = 0;
   const auto Watched = [&](UINT32 theTag, UINT16 theType = VRCode::None) {
      VR* aVR = new WatchedVR(theTag, aCount);
      aVR->SetTypeCode(theType);
      return aVR;
   };
   const struct
   {
      const char* itsName;
      int itsResult;
   } kCases[] = {
       {"no creator", itsSet.Push("", Watched(0x00290010))},
       {"no element", itsSet.Push("ACME 1.0", nullptr)},
       {"an unknown creator", itsSet.Push("NOBODY", Watched(0x00290010))},
       {"another group", itsSet.Push("ACME 1.0", Watched(0x002B0010))},
       {"no name", itsSet.Push("ACME 1.0", "", Watched(0x00290010))},
       {"an unknown name", itsSet.Push("ACME 1.0", "Wait", Watched(0x00290010))},
       {"a name in another group", itsSet.Push("ACME 1.0", "Weight", Watched(0x002B0010))},
       {"no creator of the name", itsSet.Push("", "Weight", Watched(0x00290010))},
       {"another type than the dictionary's", itsSet.Push("ACME 1.0", Watched(0x00290010, VRCode::FD))},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(aCase.itsResult, 0) << aCase.itsName;
   }
   EXPECT_EQ(aCount, 0);
   EXPECT_FALSE(itsSet.HasAttribute("ACME 1.0", "Weight"));
}

TEST_F(DICOMObjectPrivate, AnOwnTypeStaysWhereTheDictionaryKnowsNone)
{
   struct Case
   {
      const char* itsName;
      UINT32 itsTag;
      UINT16 itsType, itsExpected;
   };
   const Case kCases[] = {
       {"listed as UN", 0x00290012, VRCode::OB, VRCode::OB},
       {"not listed", 0x00290077, VRCode::FD, VRCode::FD},
       {"UN gives way", 0x00290010, VRCode::UN, VRCode::US},
   };
   for (const Case& aCase : kCases)
   {
      EXPECT_EQ(itsSet.Push("ACME 1.0", BytesElement(aCase.itsTag, aCase.itsType, "ab")), 1) << aCase.itsName;
      const VR* aVR = itsSet.GetVR("ACME 1.0", static_cast<UINT16>(aCase.itsTag), 0x0029);
      EXPECT_EQ(aVR->GetTypeCode(), aCase.itsExpected) << aCase.itsName;
   }
}

TEST_F(DICOMObjectPrivate, BlocksInUseAreLeftAlone)
{
   itsSet.Push(TextElement(0x00290010, "OTHER"));
   itsSet.Push(TextElement(0x00290011, std::string("PADDED\0", 7))); // a text that cannot be registered
   EXPECT_EQ(itsSet.Push("ACME 1.0", Weight()), 1);
   EXPECT_EQ(TextOf(itsSet, 0x00290010), "OTHER");
   EXPECT_TRUE(itsSet.HasAttribute(0x0029, 0x1210));
   EXPECT_EQ(TextOf(itsSet, 0x00290012), "ACME 1.0");
}

// A dictionary that was set later has not seen the creators that the dataset holds.
TEST_F(DICOMObjectPrivate, StoredCreatorsHoldTheirBlocksUnderANewDictionary)
{
   itsSet.Push(TextElement(0x00290010, "OTHER"));
   itsSet.Push(TextElement(0x00290020, "ACME 1.0"));
   itsSet.SetDataDictionary(new InstanceSpecificDataDictionary(itsPublic, itsCatalog));
   EXPECT_EQ(itsSet.Push("ACME 1.0", Weight()), 1);
   EXPECT_THAT(TagsOf(itsSet), ElementsAre(0x00290010u, 0x00290020u, 0x00292010u));
}

TEST_F(DICOMObjectPrivate, ASecondBlockOrASecondOwnerIsRefusedOnlyInPlaceOfAnElement)
{
   EXPECT_EQ(itsSet.Push(TextElement(0x00290010, "ACME 1.0")), 1);
   EXPECT_EQ(itsSet.Push(TextElement(0x00290010, "ACME 1.0 ")), 1) << "the same again";
   EXPECT_EQ(itsSet.Push(TextElement(0x00290010, "OTHER")), 0) << "the block has an owner";
   EXPECT_EQ(TextOf(itsSet, 0x00290010), "ACME 1.0");
   EXPECT_EQ(itsSet.Push(TextElement(0x00290011, "ACME 1.0")), 1) << "a second block: stored, not registered";
   EXPECT_EQ(itsSet.Push("ACME 1.0", Weight()), 1);
   EXPECT_TRUE(itsSet.HasAttribute(0x0029, 0x1010));
}

TEST_F(DICOMObjectPrivate, AFullGroupTakesNoMoreCreators)
{
   for (UINT32 aBlock = 0x10; aBlock <= 0xFF; ++aBlock)
   {
      itsSet.Push(TextElement(0x00290000 | aBlock, "CREATOR " + std::to_string(aBlock)));
   }
   EXPECT_EQ(itsSet.Push("ACME 1.0", Weight()), 0);
   EXPECT_EQ(itsSet.Entries(), 240u);
}

TEST_F(DICOMObjectPrivate, DictionariesAreAdoptedCopiedOrBorrowed)
{
   InstanceSpecificDataDictionary aDictionary(itsPublic, itsCatalog);
   aDictionary.RegisterPrivateCreator("OTHER", MAttributeTag(0x0029, 0x0010));

   itsSet.SetDataDictionary(aDictionary); // a non-const lvalue is borrowed
   EXPECT_EQ(&itsSet.GetDataDictionary(), &aDictionary);
   itsSet.Reset();
   EXPECT_TRUE(itsSet.HasPrivateBlock("OTHER", 0x0029)) << "a borrowed one keeps its creators";

   itsSet.SetDataDictionary(std::as_const(aDictionary));
   EXPECT_NE(&itsSet.GetDataDictionary(), &aDictionary);
   EXPECT_TRUE(itsSet.HasPrivateBlock("OTHER", 0x0029));

   InstanceSpecificDataDictionary* anOwnOne = &itsSet.GetDataDictionary();
   itsSet.SetDataDictionary(anOwnOne); // each must leave it alive
   itsSet.SetDataDictionary(*anOwnOne);
   EXPECT_EQ(&itsSet.GetDataDictionary(), anOwnOne);
   itsSet.SetDataDictionary(std::as_const(*anOwnOne)); // from itself
   EXPECT_TRUE(itsSet.HasPrivateBlock("OTHER", 0x0029));
   itsSet.Reset();
   EXPECT_FALSE(itsSet.HasPrivateBlock("OTHER", 0x0029)) << "an own one forgets its creators";
}

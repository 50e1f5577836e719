#include "talvenor/dataset/DICOMObjectIterator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Elements.h"
#include "talvenor/dataset/DICOMCommandObject.h"

using testing::ElementsAre;

TEST(DICOMObjectIterator, GroupLengthsStandWhereTheTypeWantsThem)
{
   DICOMDataObject aSet;
   Fill(aSet, {0x00020010, 0x00080016, 0x00080018, 0x00100010});
   const std::vector<UINT32> kEveryGroup = {0x00020000, 0x00020010, 0x00080000, 0x00080016,
                                            0x00080018, 0x00100000, 0x00100010};
   const std::vector<UINT32> kLowGroups = {0x00020000, 0x00020010, 0x00080016, 0x00080018, 0x00100010};
   EXPECT_EQ(TagsOf(aSet, ImplicitWithGroupLength), kEveryGroup);
   EXPECT_EQ(TagsOf(aSet, ExplicitWithGroupLength), kEveryGroup);
   EXPECT_EQ(TagsOf(aSet, ImplicitNoGroupLength), kLowGroups);
   EXPECT_EQ(TagsOf(aSet, ExplicitNoGroupLength), kLowGroups);
}

TEST(DICOMObjectIterator, AGroupLengthIsAnULInTheByteOrderOfTheDataset)
{
   DICOMDataObject aSet(TNEndian::BigEndian);
   Fill(aSet, {0x00080018});
   DICOMObjectIterator aWalk(aSet, ExplicitWithGroupLength);
   const VR* aVR = aWalk.First();
   EXPECT_EQ(aVR->GetTag(), 0x00080000u);
   EXPECT_EQ(aVR->GetTypeCode(), VRCode::UL);
   EXPECT_EQ(aVR->GetDataEndian(), TNEndian::BigEndian);
   EXPECT_EQ(std::string(aVR->GetData(), aVR->GetData() + aVR->GetLength()), std::string("\x00\x00\x00\x0E", 4));
}

TEST(DICOMObjectIterator, NextWithoutFirstStartsAtTheBeginningAndFirstStartsAgain)
{
   DICOMCommandObject aCommand;
   Fill(aCommand, {0x00000002, 0x00000100});
   DICOMObjectIterator aWalk(aCommand, ImplicitNoGroupLength);
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00000000u);
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00000002u);
   EXPECT_EQ(aWalk.First()->GetTag(), 0x00000000u);
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00000002u);
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00000100u);
   EXPECT_EQ(aWalk.Next(), nullptr);
   EXPECT_EQ(aWalk.Next(), nullptr);
}

TEST(DICOMObjectIterator, TheDatasetsOwnOneSwitchesItsTypeOnly)
{
   DICOMDataObject aSet;
   Fill(aSet, {0x00080018, 0x00100010});
   DICOMObjectIterator& anOwnOne = aSet.GetIterator(ExplicitNoGroupLength);
   EXPECT_EQ(anOwnOne.First()->GetTag(), 0x00080018u);
   EXPECT_TRUE(aSet.ValueEquals(aSet)); // a walk of its own
   EXPECT_EQ(&aSet.GetIterator(ExplicitWithGroupLength), &anOwnOne);
   EXPECT_EQ(anOwnOne.Next()->GetTag(), 0x00100000u);
   EXPECT_EQ(anOwnOne.Next()->GetTag(), 0x00100010u);
   EXPECT_EQ(anOwnOne.Next(), nullptr);
}

// What is returned next is decided by the dataset as it is then; nothing removed is ever returned.
TEST(DICOMObjectIterator, ElementsMayComeAndGoDuringAWalk)
{
   DICOMDataObject aSet;
   Fill(aSet, {0x00080016, 0x00080018, 0x00100010, 0x00200010});
   DICOMObjectIterator aWalk(aSet, ExplicitWithGroupLength);
   EXPECT_EQ(aWalk.First()->GetTag(), 0x00080000u);
   delete aSet.RemoveVR(0x0008, 0x0016); // the element behind the group length
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00080018u);
   delete aSet.RemoveVR(0x0008, 0x0018);             // the one returned last
   Fill(aSet, {0x00080008, 0x00080020, 0x00100005}); // before and behind the walk
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00080020u);
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00100000u);
   aSet.RemoveGroup(0x0010);
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00200000u);
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00200010u);
   EXPECT_EQ(aWalk.Next(), nullptr);
   Fill(aSet, {0x00200011});
   EXPECT_EQ(aWalk.Next()->GetTag(), 0x00200011u) << "pushed after the end was seen";
}

TEST(DICOMObjectIterator, TheHighestTagEndsTheWalk)
{
   DICOMDataObject aSet;
   Fill(aSet, {0xFFFFFFFE, 0xFFFFFFFF});
   EXPECT_THAT(TagsOf(aSet), ElementsAre(0xFFFFFFFEu, 0xFFFFFFFFu));
   EXPECT_THAT(TagsOf(aSet, ImplicitWithGroupLength), ElementsAre(0xFFFF0000u, 0xFFFFFFFEu, 0xFFFFFFFFu));
}

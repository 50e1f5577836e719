#include "talvenor/dataset/DICOMNode.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/NodeElements.h"

namespace
{

using testing::ElementsAre;

void InsertAll(DICOMNode& theNode, const std::vector<UINT32>& theTags)
{
   for (const UINT32 aTag : theTags)
   {
      ASSERT_EQ(1, theNode.Insert(new CountedVR(aTag)));
   }
}

std::vector<UINT32> Groups(const DICOMNode& theNode, int theLow, int theHigh, bool theSkipOdd)
{
   std::vector<int> aGroups;
   theNode.ListGroupsInRange(aGroups, theLow, theHigh, theSkipOdd);
   return {aGroups.begin(), aGroups.end()};
}

// Against std::map. Few groups and many elements, so that blocks fill, split, run empty and go.
TEST(DICOMNode, BehavesLikeAMapUnderRandomChanges)
{
   std::mt19937 aRandom(4);
   std::map<UINT32, int> aModel;
   {
      DICOMNode aNode;
      for (int aStep = 1; aStep <= 60000; ++aStep)
      {
         const UINT32 aTag = aRandom() % 5 << 16 | aRandom() % 500;
         const UINT32 anAction = aRandom() % 1000;
         const bool isGrowing = aStep % 20000 < 12000;
         if (anAction == 0)
         {
            const auto aFirst = aModel.lower_bound(aTag & 0xFFFF0000);
            const auto anEnd = aModel.upper_bound(aTag | 0xFFFF);
            ASSERT_EQ(aFirst != anEnd, aNode.RemoveGroup(static_cast<UINT16>(aTag >> 16)) != 0) << aStep;
            aModel.erase(aFirst, anEnd);
         }
         else if (anAction < (isGrowing ? 800u : 200u))
         {
            ASSERT_EQ(1, aNode.Insert(new CountedVR(aTag, aStep)));
            aModel[aTag] = aStep;
         }
         else
         {
            const std::unique_ptr<VR> aRemoved(aNode.Remove(aTag));
            ASSERT_EQ(aModel.count(aTag) != 0, aRemoved != nullptr) << aStep;
            ASSERT_TRUE(!aRemoved || CountedVR::NumberOf(aRemoved.get()) == aModel[aTag]) << aStep;
            aModel.erase(aTag);
         }
         ASSERT_EQ(aModel.size(), aNode.Entries()) << aStep;
         if (aStep % 250 == 0)
         {
            DICOMNodeCursor aCursor(aNode);
            for (const auto& [anExpectedTag, aNumber] : aModel)
            {
               const VR* aVR = aCursor.Next();
               ASSERT_TRUE(aVR != nullptr && aVR->GetTag() == anExpectedTag) << aStep;
               ASSERT_EQ(aNumber, CountedVR::NumberOf(aVR)) << aStep;
               ASSERT_EQ(aVR, aNode.Find(anExpectedTag)) << aStep;
            }
            ASSERT_EQ(nullptr, aCursor.Next()) << aStep;
            ASSERT_EQ(static_cast<int>(aModel.size()), CountedVR::GetLiving()) << aStep;
         }
      }
   }
   EXPECT_EQ(0, CountedVR::GetLiving());
}

TEST(DICOMNode, ReplacesAndDestroysTheElementOfATag)
{
   DICOMNode aNode;
   InsertAll(aNode, {0x00100010, 0x00100020});
   auto* aSecond = new CountedVR(0x00100010, 2);
   EXPECT_EQ(1, aNode.Insert(aSecond));
   EXPECT_EQ(aSecond, aNode.Find(0x00100010));
   EXPECT_EQ(2, CountedVR::GetLiving());

   EXPECT_EQ(1, aNode.Insert(aSecond)); // by itself
   EXPECT_EQ(aSecond, aNode.Find(0x00100010));
   EXPECT_EQ(2, CountedVR::GetLiving());
   EXPECT_EQ(2u, aNode.Entries());
}

TEST(DICOMNode, TakesTheLowestAndTheHighestTag)
{
   DICOMNode aNode;
   InsertAll(aNode, {0xFFFFFFFF, 0});
   EXPECT_THAT(TagsOf(aNode), ElementsAre(0u, 0xFFFFFFFF));
   EXPECT_THAT(Groups(aNode, 0, 0xFFFF, false), ElementsAre(0u, 0xFFFFu));

   DICOMNodeCursor aCursor(aNode);
   aCursor.Seek(0xFFFFFFFF);
   EXPECT_EQ(aNode.Find(0xFFFFFFFF), aCursor.Next());
   EXPECT_EQ(nullptr, aCursor.Next());
   InsertAll(aNode, {5});
   EXPECT_EQ(nullptr, aCursor.Next()); // not again from the start

   EXPECT_EQ(1, aNode.RemoveGroup(0xFFFF));
   EXPECT_THAT(TagsOf(aNode), ElementsAre(0u, 5u));
}

struct ChangeCase
{
   const char* itsName;
   std::function<void(DICOMNode&)> itsChange; // after 0x10 to 0x40, of 0x10 to 0x60, have been returned
   std::vector<UINT32> itsRest;
};
const ChangeCase kChangeCases[] = {
    {"insert behind",
     [](DICOMNode& theNode) {
        InsertAll(theNode, {0x41, 0x55, 0x70});
     },
     {0x41, 0x50, 0x55, 0x60, 0x70}},
    {"remove the returned one", [](DICOMNode& theNode) { delete theNode.Remove(0x40); }, {0x50, 0x60}},
    {"remove the next one", [](DICOMNode& theNode) { delete theNode.Remove(0x50); }, {0x60}},
    {"clear and fill again",
     [](DICOMNode& theNode) {
        theNode.Clear();
        InsertAll(theNode, {0x05, 0x45, 0x65});
     },
     {0x45, 0x65}},
    {"many before, in more than one block",
     [](DICOMNode& theNode) {
        theNode.RemoveGroup(0);
        for (UINT32 i = 0; i < 1000; ++i)
        {
           theNode.Insert(new CountedVR(0xFFFF0000 - i));
        }
        delete theNode.Remove(0xFFFF0000 - 500);
        theNode.RemoveGroup(0xFFFE);
        InsertAll(theNode, {0x40, 0x50});
     },
     {0x50, 0xFFFF0000}},
};

TEST(DICOMNodeCursor, GoesOnBehindTheLastTagWhateverHasChanged)
{
   for (const ChangeCase& aCase : kChangeCases)
   {
      SCOPED_TRACE(aCase.itsName);
      DICOMNode aNode;
      InsertAll(aNode, {0x10, 0x20, 0x30, 0x40, 0x50, 0x60});
      DICOMNodeCursor aCursor(aNode);
      for (int i = 0; i < 4; ++i)
      {
         aCursor.Next();
      }
      aCase.itsChange(aNode);
      std::vector<UINT32> aRest;
      while (const VR* aVR = aCursor.Next())
      {
         aRest.push_back(aVR->GetTag());
      }
      EXPECT_EQ(aCase.itsRest, aRest);
   }
}

TEST(DICOMNodeCursor, SeeksAndRewindsWithoutDisturbingAnother)
{
   DICOMNode aNode;
   InsertAll(aNode, {0x10, 0x20, 0x30});
   DICOMNodeCursor aCursor(aNode);
   DICOMNodeCursor anOther(aNode);
   EXPECT_EQ(0x10u, anOther.Next()->GetTag());
   aCursor.Seek(0x11);
   EXPECT_EQ(0x20u, aCursor.Next()->GetTag());
   EXPECT_EQ(0x20u, aCursor.GetTag());
   aCursor.Seek(0x30);
   EXPECT_EQ(0x30u, aCursor.Next()->GetTag());
   EXPECT_EQ(nullptr, aCursor.Next());
   aCursor.Rewind();
   EXPECT_EQ(0x10u, aCursor.Next()->GetTag());
   EXPECT_EQ(0x20u, anOther.Next()->GetTag());
   InsertAll(aNode, {0x40});
   aCursor.Seek(0x31);
   EXPECT_EQ(0x40u, aCursor.Next()->GetTag());
}

TEST(DICOMNode, RemovesAWholeGroupAndNoNeighbour)
{
   DICOMNode aNode;
   InsertAll(aNode, {0x0008FFFF, 0x00100000, 0x00100010, 0x0010FFFF, 0x00110000});
   EXPECT_EQ(0, aNode.RemoveGroup(0x0009));
   for (UINT32 i = 0; i < 3000; ++i) // several blocks whole, two in part
   {
      aNode.Insert(new CountedVR(0x00100000 + i * 7));
   }
   EXPECT_EQ(1, aNode.RemoveGroup(0x0010));
   EXPECT_THAT(TagsOf(aNode), ElementsAre(0x0008FFFFu, 0x00110000u));
   EXPECT_EQ(1, aNode.RemoveGroup(0x0011));
   EXPECT_EQ(1, aNode.RemoveGroup(0x0008));
   EXPECT_EQ(0u, aNode.Entries());
   EXPECT_EQ(0, CountedVR::GetLiving());
   InsertAll(aNode, {0x00100010, 0x00100008});
   EXPECT_THAT(TagsOf(aNode), ElementsAre(0x00100008u, 0x00100010u));
}

// An element whose tag was changed while the node holds it stays where it was put, and no walk goes astray.
TEST(DICOMNode, GoesByTheTagThatAnElementHadWhenItCame)
{
   DICOMNode aNode;
   InsertAll(aNode, {0x00080018, 0x00100010, 0x00200010});
   aNode.Find(0x00100010)->SetGroup(0x0001);
   EXPECT_THAT(Groups(aNode, 0, 0xFFFF, false), ElementsAre(0x0008u, 0x0010u, 0x0020u));
   EXPECT_EQ(nullptr, aNode.Find(0x00010010));
   const std::unique_ptr<VR> aVR(aNode.Remove(0x00100010));
   EXPECT_NE(nullptr, aVR);
}

} // namespace

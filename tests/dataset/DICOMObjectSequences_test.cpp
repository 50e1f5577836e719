// Sequences and their items, PS3.5 7.5.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Elements.h"
#include "talvenor/dataset/DICOMCluster.h"
#include "talvenor/dataset/SequenceVR.h"

namespace
{
// A dataset that tells when it goes.
class WatchedItem : public DICOMDataObject
{
public:
   explicit WatchedItem(int& theCount) : itsCount(theCount) { ++itsCount; }
   WatchedItem(const WatchedItem&) = delete;
   ~WatchedItem() override { --itsCount; }

private:
   int& itsCount;
};

std::size_t ItemsAt(const DICOMObject& theSet, UINT32 theTag)
{
   VR* aVR = theSet.GetVR(MAttributeTag(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag)));
   const SequenceVR* aSequence = aVR != nullptr ? aVR->GetAsSequenceVR() : nullptr;
   const SequenceVR::Items* anItems = aSequence != nullptr ? aSequence->GetSequenceArray() : nullptr;
   return anItems != nullptr ? anItems->size() : 0;
}
} // namespace

TEST(DICOMObjectSequences, ItemsGoToTheSequencePushedLast)
{
   DICOMDataObject aSet;
   auto* aSequence = new SequenceVR(0x0040, 0xA730);
   aSequence->SetLength(99); // which the items will change
   aSet.Push(aSequence);
   EXPECT_EQ(aSet.Push(new DICOMDataObject), 1);
   EXPECT_EQ(aSequence->GetLength(), 0u);
   aSet.Push(new SequenceVR(0x0008, 0x1140)); // stands before the other one
   EXPECT_EQ(aSet.Push(new DICOMDataObject), 1);
   EXPECT_EQ(aSet.Push(new DICOMDataObject), 1);
   EXPECT_EQ(ItemsAt(aSet, 0x0040A730), 1u);
   EXPECT_EQ(ItemsAt(aSet, 0x00081140), 2u);
}

// However the sequence leaves the dataset, an item must not follow it into freed memory.
TEST(DICOMObjectSequences, AnItemWithoutASequencePushedLastIsDestroyed)
{
   struct Case
   {
      const char* itsName;
      void (*itsPrepare)(DICOMDataObject& theSet);
   };
   const Case kCases[] = {
       {"nothing pushed", [](DICOMDataObject& theSet) { theSet.Reset(); }},
       {"another element pushed", [](DICOMDataObject& theSet) { Fill(theSet, {0x00100010}); }},
       {"replaced", [](DICOMDataObject& theSet) { Fill(theSet, {0x0040A730}); }},
       {"removed", [](DICOMDataObject& theSet) { delete theSet.RemoveVR(0x0040, 0xA730); }},
       {"removed by list", [](DICOMDataObject& theSet) { theSet.RemoveVRList({MAttributeTag(0x0040, 0xA730)}); }},
       {"popped", [](DICOMDataObject& theSet) { delete theSet.Pop(); }},
       {"removed with its group", [](DICOMDataObject& theSet) { theSet.RemoveGroup(0x0040); }},
       {"assigned away", [](DICOMDataObject& theSet) { theSet = DICOMDataObject(); }},
   };
   for (const Case& aCase : kCases)
   {
      int aCount = 0;
      DICOMDataObject aSet;
      aSet.Push(new SequenceVR(0x0040, 0xA730));
      aCase.itsPrepare(aSet);
      EXPECT_EQ(aSet.Push(new WatchedItem(aCount)), 0) << aCase.itsName;
      EXPECT_EQ(aCount, 0) << aCase.itsName;
   }
}

TEST(DICOMObjectSequences, AnItemDoesNotFollowASequenceThatBecameShared)
{
   DICOMCluster aCluster;
   DICOMDataObject aSet;
   Fill(aSet, {0x0020000D, 0x0020000E});
   aSet.Push(new SequenceVR(0x0008, 0x1110)); // moves to the study
   ASSERT_TRUE(aCluster.Normalize(aSet.GetNode()));
   EXPECT_EQ(aSet.Push(new DICOMDataObject), 0);
   EXPECT_EQ(ItemsAt(aSet, 0x00081110), 0u);
}

TEST(DICOMObjectSequences, AnItemIsMadeOfAListOfElements)
{
   DICOMDataObject aSet(TNEndian::BigEndian);
   std::forward_list<VR*> aList = {TextElement(0x00080104, "first"), TextElement(0x00080100, "c"),
                                   TextElement(0x00080104, "second")};
   aSet.AddSequenceItem(0x0040, 0xA730, aList);
   EXPECT_TRUE(aList.empty());
   ASSERT_EQ(ItemsAt(aSet, 0x0040A730), 1u);
   const DICOMDataObject& anItem = *(*aSet.GetVR(0x0040, 0xA730)->GetAsSequenceVR()->GetSequenceArray())[0];
   EXPECT_EQ(anItem.GetEndian(), TNEndian::BigEndian);
   EXPECT_EQ(anItem.Entries(), 2u);
   EXPECT_EQ(TextOf(anItem, 0x00080104), "second");
   aSet.AddSequenceItem(0x0040, 0xA730, aList);
   EXPECT_EQ(ItemsAt(aSet, 0x0040A730), 2u) << "an empty list is an empty item";
}

TEST(DICOMObjectSequences, AnElementThatIsNoSequenceIsLeftAlone)
{
   int aCount = 0;
   DICOMDataObject aSet;
   Fill(aSet, {0x0040A730});
   std::forward_list<VR*> aList = {new WatchedVR(0x00080104, aCount)};
   aSet.AddSequenceItem(0x0040, 0xA730, aList);
   aSet.AddReferenceSequence(0x0040, 0xA730, "1.2", "1.2.3");
   EXPECT_EQ(TextOf(aSet, 0x0040A730), "value");
   EXPECT_EQ(aCount, 1) << "the list keeps its elements";
   delete aList.front();
}

TEST(DICOMObjectSequences, AReferenceIsAddedOnce)
{
   DICOMDataObject aSet;
   const struct
   {
      const char* itsName;
      const char* itsClass;
      const char* itsInstance;
      std::size_t itsItems;
   } kCases[] = {
       {"the first", "1.2.840.10008.3.1.2.3.1", "1.2.3", 1},        {"the same", "1.2.840.10008.3.1.2.3.1", "1.2.3", 1},
       {"another instance", "1.2.840.10008.3.1.2.3.1", "1.2.4", 2}, {"another class", "1.2.4", "1.2.3", 3},
       {"the second again", "1.2.840.10008.3.1.2.3.1", "1.2.4", 3},
   };
   for (const auto& aCase : kCases)
   {
      aSet.AddReferenceSequence(0x0008, 0x1111, aCase.itsClass, aCase.itsInstance);
      EXPECT_EQ(ItemsAt(aSet, 0x00081111), aCase.itsItems) << aCase.itsName;
   }
   const DICOMDataObject& anItem = *(*aSet.GetVR(0x0008, 0x1111)->GetAsSequenceVR()->GetSequenceArray())[0];
   const VR* anInstance = anItem.GetVR(0x0008, 0x1155);
   EXPECT_EQ(anInstance->GetTypeCode(), VRCode::UI);
   EXPECT_EQ(std::string(anInstance->GetData(), anInstance->GetData() + 6), std::string("1.2.3\0", 6));
}

TEST(DICOMObjectSequences, ASharedSequenceIsCopiedBeforeItGrows)
{
   DICOMCluster aCluster;
   DICOMDataObject aFirst;
   DICOMDataObject aSecond;
   for (DICOMDataObject* aSet : {&aFirst, &aSecond})
   {
      Fill(*aSet, {0x0020000D, 0x0020000E});
      aSet->AddReferenceSequence(0x0008, 0x1110, "1.2", "1.2.3");
      ASSERT_TRUE(aCluster.Normalize(aSet->GetNode()));
   }
   aSecond.AddReferenceSequence(0x0008, 0x1110, "1.2", "1.2.3");
   EXPECT_EQ(aSecond.GetVR(0x0008, 0x1110), aFirst.GetVR(0x0008, 0x1110)) << "nothing to add, nothing to copy";
   aSecond.AddReferenceSequence(0x0008, 0x1110, "1.2", "1.2.4");
   EXPECT_EQ(ItemsAt(aSecond, 0x00081110), 2u);
   EXPECT_EQ(ItemsAt(aFirst, 0x00081110), 1u);
}

#include "talvenor/dataset/DICOMObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Elements.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/foundation/StreamIOException.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
// An element whose value is "still in a stream": it produces what it was given.
class StreamedVR : public VR
{
public:
   StreamedVR(VR* theValue, bool theFails) : itsValue(theValue), itsFails(theFails) {}
   StreamedVR(const StreamedVR&) = delete;
   int IsStreamBuffered() const override { return 1; }
   std::unique_ptr<VR> Materialise(std::exception_ptr& theFailure) override
   {
      if (itsFails)
      {
         theFailure = std::make_exception_ptr(StreamIOException("cut", TN_END_OF_FILE, 0));
      }
      return std::move(itsValue);
   }

private:
   std::unique_ptr<VR> itsValue;
   bool itsFails;
};
} // namespace

TEST(DICOMObject, GroupLengthsAreTakenAndNotStored)
{
   int aCount = 0;
   DICOMDataObject aSet;
   for (UINT32 aTag : {0x00000000u, 0x00080000u, 0x00090000u, 0xFFFF0000u})
   {
      EXPECT_EQ(aSet.Push(new WatchedVR(aTag, aCount)), 1) << std::hex << aTag;
      EXPECT_EQ(aSet.HasAttribute(static_cast<UINT16>(aTag >> 16), 0x0000), 0) << std::hex << aTag;
   }
   EXPECT_EQ(aCount, 0);
   EXPECT_TRUE(aSet.IsEmpty());
}

TEST(DICOMObject, NothingAndUndefinedLengthsArePushed)
{
   DICOMDataObject aSet;
   EXPECT_EQ(aSet.Push(static_cast<VR*>(nullptr)), 0);
   EXPECT_EQ(aSet.Push(static_cast<DICOMDataObject*>(nullptr)), 0);
   VR* aVR = new VR(0x0008, 0x1140);
   aVR->SetLength(VR::kUndefinedLength);
   EXPECT_EQ(aSet.Push(aVR), 1);
   EXPECT_EQ(aVR->GetLength(), 0u);
}

TEST(DICOMObject, StreamedElementsAreReadWhenTheyArePushedAsFarAsTheyCome)
{
   DICOMDataObject aSet;
   EXPECT_EQ(aSet.Push(new StreamedVR(TextElement(0x00081030, "Knee"), false)), 1);
   EXPECT_EQ(TextOf(aSet, 0x00081030), "Knee");
   EXPECT_EQ(aSet.Push(new StreamedVR(nullptr, false)), 0) << "nothing came";
   EXPECT_EQ(aSet.Push(new StreamedVR(new StreamedVR(TextElement(0x00081032, "Twice"), false), false)), 1);
   EXPECT_EQ(TextOf(aSet, 0x00081032), "Twice");
   EXPECT_THROW(aSet.Push(new StreamedVR(TextElement(0x00081030, "Kn"), true)), StreamIOException);
   EXPECT_EQ(TextOf(aSet, 0x00081030), "Kn");
   EXPECT_THROW(aSet.Push(new StreamedVR(nullptr, true)), StreamIOException);
   EXPECT_EQ(aSet.Entries(), 2u);
}

TEST(DICOMObject, RemovedElementsBelongToTheCaller)
{
   DICOMDataObject aSet;
   Fill(aSet, {0x00080018, 0x00100010, 0x00100020});
   const std::unique_ptr<VR> aByTag(aSet.RemoveVR(MAttributeTag(0x0010, 0x0010)));
   ASSERT_NE(aByTag, nullptr);
   EXPECT_EQ(aByTag->GetTag(), 0x00100010u);
   EXPECT_EQ(aSet.RemoveVR(0x0010, 0x0010), nullptr);
   const std::unique_ptr<VR> aFirst(aSet.Pop());
   EXPECT_EQ(aFirst->GetTag(), 0x00080018u);
   const std::unique_ptr<VR> aSecond(aSet.Pop());
   EXPECT_EQ(aSecond->GetTag(), 0x00100020u);
   EXPECT_EQ(aSet.Pop(), nullptr);
}

TEST(DICOMObject, ListsAndGroupsOfElementsAreDestroyed)
{
   int aCount = 0;
   DICOMDataObject aSet;
   for (UINT32 aTag : {0x00080018u, 0x00100010u, 0x00100020u, 0x00100030u, 0x00110001u, 0x00200010u})
   {
      aSet.Push(new WatchedVR(aTag, aCount));
   }
   aSet.RemoveVRList({MAttributeTag(0x0008, 0x0018), MAttributeTag(0x0008, 0x0018), MAttributeTag(0x4000, 0x0010)});
   EXPECT_EQ(aCount, 5);
   EXPECT_EQ(aSet.RemoveGroup(0x0010), 1);
   EXPECT_EQ(aSet.RemoveGroup(0x0010), 0);
   EXPECT_EQ(aCount, 2);
   EXPECT_THAT(TagsOf(aSet), ElementsAre(0x00110001u, 0x00200010u));
   aSet.Reset();
   EXPECT_EQ(aCount, 0);
}

TEST(DICOMObject, GroupsAreListedWithinTheirBounds)
{
   DICOMDataObject aSet;
   Fill(aSet, {0x00020010, 0x00080016, 0x00080018, 0x00090010, 0x00100010, 0x00200010, 0xFFFE0001});
   struct Case
   {
      const char* itsName;
      int itsLow, itsHigh;
      bool itsSkipOdd;
      std::vector<int> itsExpected;
   };
   const Case kCases[] = {
       {"bounds included, no odd ones", 0x0008, 0x0010, true, {0x0008, 0x0010}},
       {"odd ones", 0x0008, 0x0010, false, {0x0008, 0x0009, 0x0010}},
       {"beyond both ends", -5, 0x20000, true, {0x0002, 0x0008, 0x0010, 0x0020, 0xFFFE}},
       {"between groups", 0x0011, 0x001F, false, {}},
       {"reversed", 0x0010, 0x0008, false, {}},
       {"above all numbers", 0x10000, 0x20000, false, {}},
       {"below all numbers", -9, -1, false, {}},
   };
   for (const Case& aCase : kCases)
   {
      std::vector<int> aGroups(1000, 7); // what stood there goes, with its memory
      aSet.ListGroupsInRange(aGroups, aCase.itsLow, aCase.itsHigh, aCase.itsSkipOdd);
      EXPECT_EQ(aGroups, aCase.itsExpected) << aCase.itsName;
      EXPECT_LE(aGroups.capacity(), 64u) << aCase.itsName;
   }
}

TEST(DICOMObject, EqualityIsByTagAndValue)
{
   DICOMDataObject aLeft;
   DICOMDataObject aRight;
   Fill(aLeft, {0x00080018, 0x00100010, 0x7FE00010});
   Fill(aRight, {0x7FE00010, 0x00100010});
   EXPECT_FALSE(aLeft.ValueEquals(aRight)) << "one is missing";
   EXPECT_FALSE(aRight.ValueEquals(aLeft)) << "one too many";
   Fill(aRight, {0x00080018});
   EXPECT_TRUE(aLeft.ValueEquals(aRight)) << "another order of pushing";
   aRight.Push(TextElement(0x00100010, "other"));
   EXPECT_FALSE(aLeft.ValueEquals(aRight)) << "another value";
   delete aRight.RemoveVR(0x0010, 0x0010);
   aRight.Push(TextElement(0x00100011, "value"));
   EXPECT_FALSE(aLeft.ValueEquals(aRight)) << "another tag";
}

TEST(DICOMObject, CopiesAreDeepAndWhole)
{
   DICOMDataObject aSource(TNEndian::BigEndian);
   Fill(aSource, {0x00080018, 0x00090010, 0x00091001});
   aSource.Push(new SequenceVR(0x0040, 0xA730));
   auto* anItem = new DICOMDataObject;
   Fill(*anItem, {0x00080100});
   aSource.Push(anItem);
   aSource.PutScratchpadValue("name", "note");
   aSource.SetRedColorPalette(new ColorPalette('R', 4, -2, 8));
   aSource.GetDataDictionary().RegisterPrivateCreator("another", MAttributeTag(0x0009, 0x0011));

   const DICOMDataObject aCopy(aSource);
   EXPECT_TRUE(aCopy.ValueEquals(aSource));
   EXPECT_EQ(aCopy.GetEndian(), TNEndian::BigEndian);
   EXPECT_TRUE(aCopy.HasPrivateBlock("value", 0x0009));
   EXPECT_TRUE(aCopy.HasPrivateBlock("another", 0x0009)) << "registered and not stored";
   RWCString aNote;
   EXPECT_FALSE(aCopy.GetScratchpadValue("name", aNote));
   ASSERT_NE(aCopy.GetRedColorPalette(), nullptr);
   EXPECT_NE(aCopy.GetRedColorPalette(), aSource.GetRedColorPalette());
   EXPECT_TRUE(*aCopy.GetRedColorPalette() == *aSource.GetRedColorPalette());
   EXPECT_EQ(aCopy.GetBlueColorPalette(), nullptr);

   Fill(*anItem, {0x00080104});
   EXPECT_FALSE(aCopy.ValueEquals(aSource));
   EXPECT_NE(&aCopy.GetDataDictionary(), &aSource.GetDataDictionary());
}

TEST(DICOMObject, AssignmentReplacesEverything)
{
   DICOMDataObject aSource(TNEndian::BigEndian);
   Fill(aSource, {0x00080018});
   DICOMDataObject aTarget;
   Fill(aTarget, {0x00090010, 0x00100010});
   aTarget.SetGreenColorPalette(new ColorPalette('G', 4, 0, 8));
   aTarget = aSource;
   EXPECT_THAT(TagsOf(aTarget), ElementsAre(0x00080018u));
   EXPECT_EQ(aTarget.GetEndian(), TNEndian::BigEndian);
   EXPECT_FALSE(aTarget.HasPrivateBlock("value", 0x0009));
   EXPECT_EQ(aTarget.GetGreenColorPalette(), nullptr);
}

TEST(DICOMObject, ADatasetCanBeAssignedFromItsOwnItem)
{
   DICOMDataObject aSet;
   aSet.Push(new SequenceVR(0x0040, 0xA730));
   auto* anItem = new DICOMDataObject;
   Fill(*anItem, {0x00080100, 0x00080104});
   anItem->SetBlueColorPalette(new ColorPalette('B', 4, 0, 8));
   aSet.Push(anItem);
   aSet = *anItem;
   EXPECT_THAT(TagsOf(aSet), ElementsAre(0x00080100u, 0x00080104u));
   EXPECT_NE(aSet.GetBlueColorPalette(), nullptr);
}

TEST(DICOMObject, ResetKeepsByteOrderAndDictionary)
{
   DICOMDataObject aSet(TNEndian::BigEndian);
   Fill(aSet, {0x00090010, 0x00091001});
   aSet.PutScratchpadValue("name", "note");
   aSet.SetRedColorPalette(new ColorPalette('R', 4, 0, 8));
   const InstanceSpecificDataDictionary* aDictionary = &aSet.GetDataDictionary();
   aSet.Reset();
   EXPECT_THAT(TagsOf(aSet), IsEmpty());
   EXPECT_EQ(aSet.GetEndian(), TNEndian::BigEndian);
   EXPECT_EQ(&aSet.GetDataDictionary(), aDictionary);
   EXPECT_FALSE(aSet.HasPrivateBlock("value", 0x0009));
   RWCString aNote;
   EXPECT_FALSE(aSet.GetScratchpadValue("name", aNote));
   EXPECT_EQ(aSet.GetRedColorPalette(), nullptr);
}

TEST(DICOMObject, PalettesChangeHands)
{
   DICOMDataObject aSet;
   auto* aPalette = new ColorPalette('R', 4, 0, 8);
   aSet.SetRedColorPalette(aPalette);
   aSet.SetRedColorPalette(aPalette); // the same again must not destroy it
   EXPECT_EQ(aSet.GetRedColorPalette()->GetNumberOfEntries(), 4);
   const std::unique_ptr<ColorPalette> aMine(aSet.RemoveRedColorPalette());
   EXPECT_EQ(aMine.get(), aPalette);
   EXPECT_EQ(aSet.GetRedColorPalette(), nullptr);
}

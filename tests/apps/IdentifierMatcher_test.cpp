#include "apps/tn/answers/IdentifierMatcher.h"

#include <gtest/gtest.h>

#include "support/Elements.h"
#include "talvenor/dataset/SequenceVR.h"

namespace
{
constexpr UINT32 kPatientName = 0x00100010;
constexpr UINT32 kPatientID = 0x00100020;
constexpr UINT32 kStudyDate = 0x00080020;
constexpr UINT32 kSteps = 0x00400100;
constexpr UINT32 kModality = 0x00080060;
constexpr UINT32 kStation = 0x00400001;

DICOMDataObject* Step(const std::string& theModality, const std::string& theStation)
{
   auto* const anItem = new DICOMDataObject;
   anItem->Push(TextElement(kModality, theModality, VRCode::CS));
   anItem->Push(TextElement(kStation, theStation, VRCode::AE));
   return anItem;
}

SequenceVR* Steps(std::initializer_list<DICOMDataObject*> theItems)
{
   auto* const aSequence = new SequenceVR(0x0040, 0x0100);
   for (DICOMDataObject* const anItem : theItems)
   {
      aSequence->AddSequenceItem(anItem);
   }
   return aSequence;
}

std::size_t CountSteps(const DICOMObject& theDataset)
{
   const auto* const anItems = theDataset.GetVR(0x0040, 0x0100)->GetAsSequenceVR()->GetSequenceArray();
   return anItems == nullptr ? 0 : anItems->size();
}

// A worklist item with two steps, in Latin 1.
class IdentifierMatcherTest : public testing::Test
{
protected:
   void SetUp() override
   {
      itsDataset.Push(TextElement(0x00080005, "ISO_IR 100", VRCode::CS));
      itsDataset.Push(TextElement(kPatientName, "M\xFCller^Hans", VRCode::PN));
      itsDataset.Push(TextElement(kPatientID, "4711"));
      itsDataset.Push(Steps({Step("CT", "ONE"), Step("MR", "TWO")}));
   }

   bool Matches(std::initializer_list<VR*> theKeys) const
   {
      DICOMDataObject anIdentifier;
      for (VR* const aVR : theKeys)
      {
         anIdentifier.Push(aVR);
      }
      return IdentifierMatcher(anIdentifier).Matches(itsDataset);
   }

   DICOMDataObject itsDataset;
};
} // namespace

TEST_F(IdentifierMatcherTest, EveryKeyMustMatch)
{
   EXPECT_TRUE(Matches({TextElement(kPatientID, "47*"), TextElement(kPatientName, "", VRCode::PN)}));
   EXPECT_FALSE(Matches({TextElement(kPatientID, "4711"), TextElement(kPatientName, "X*", VRCode::PN)}));
   EXPECT_FALSE(Matches({TextElement(kStudyDate, "20240101-", VRCode::DA)})) << "the dataset has none";
   EXPECT_TRUE(Matches(
       {TextElement(0x00080005, "ISO_IR 192", VRCode::CS), TextElement(kPatientName, "M\u00DCLLER*", VRCode::PN)}));
}

TEST_F(IdentifierMatcherTest, OneItemMustMatchAllKeysOfTheItem)
{
   EXPECT_TRUE(Matches({Steps({Step("MR", "TWO")})}));
   EXPECT_FALSE(Matches({Steps({Step("MR", "ONE")})}));
   EXPECT_TRUE(Matches({Steps({Step("", "")})}));
   EXPECT_TRUE(Matches({Steps({})}));
   EXPECT_FALSE(Matches({new SequenceVR(0x0008, 0x1115), Steps({Step("US", "")})}));
}

TEST_F(IdentifierMatcherTest, AnswersWithWhatWasAskedFor)
{
   DICOMDataObject anIdentifier;
   anIdentifier.Push(TextElement(kPatientID, ""));
   anIdentifier.Push(TextElement(kStudyDate, "", VRCode::DA));
   anIdentifier.Push(Steps({Step("MR", "")}));
   const auto anAnswer = IdentifierMatcher(anIdentifier).MakeAnswer(itsDataset);
   EXPECT_EQ(TagsOf(*anAnswer), (std::vector<UINT32>{0x00080005, kStudyDate, kPatientID, kSteps}));
   EXPECT_EQ(TextOf(*anAnswer, kPatientID), "4711");
   ASSERT_EQ(CountSteps(*anAnswer), 1u);

   DICOMDataObject aWithoutItem;
   aWithoutItem.Push(Steps({}));
   EXPECT_EQ(CountSteps(*IdentifierMatcher(aWithoutItem).MakeAnswer(itsDataset)), 2u);
}

TEST_F(IdentifierMatcherTest, NamesTheKeyAtFault)
{
   try
   {
      Matches({TextElement(kStudyDate, "yesterday", VRCode::DA)});
      FAIL();
   }
   catch (const ValueMatcher::BadKey& aFault)
   {
      EXPECT_STREQ(aFault.what(), "(0008,0020): \"yesterday\" is neither a date nor a range of them");
   }
}

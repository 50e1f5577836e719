#include "talvenor/dataset/SequenceVR.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "talvenor/dataset/DICOMDataObject.h"

namespace
{

DICOMDataObject* MakeItem(const char* theName)
{
   auto* anItem = new DICOMDataObject(TNEndian::LittleEndian);
   anItem->Push(new VR(0x0010, 0x0010, theName, 0));
   return anItem;
}

std::string NameIn(const DICOMDataObject* theItem)
{
   std::string aName;
   theItem->GetString(0x0010, 0x0010, aName);
   return aName;
}

TEST(SequenceVR, TakesItemsOnlyWhileTypedSQ)
{
   SequenceVR aSequence(0x0008, 0x1140);
   EXPECT_EQ(1, aSequence.AddSequenceItem(MakeItem("A")));
   EXPECT_EQ(1, aSequence.AddSequenceItem(MakeItem("B")));
   ASSERT_EQ(2u, aSequence.GetSequenceArray()->size());
   EXPECT_EQ("B", NameIn(aSequence.GetSequenceArray()->back()));
   EXPECT_FALSE(aSequence.IsEmpty());

   aSequence.SetTypeCode(0x554E); // UN
   const std::unique_ptr<DICOMDataObject> aRefused(MakeItem("C"));
   EXPECT_EQ(0, aSequence.AddSequenceItem(aRefused.get())); // still ours, or it would be destroyed twice
   EXPECT_EQ(2u, aSequence.GetSequenceArray()->size());
}

TEST(SequenceVR, CopiesDeeply)
{
   auto anOriginal = std::make_unique<SequenceVR>(0x0008, 0x1140);
   anOriginal->AddSequenceItem(MakeItem("A"));
   anOriginal->AddSequenceItem(nullptr);
   const std::unique_ptr<VR> aCopy(anOriginal->Copy());
   SequenceVR anAssigned(0x0040, 0x0260);
   anAssigned.AddSequenceItem(MakeItem("old"));
   anAssigned = *anOriginal;

   delete (*anOriginal->GetSequenceArray())[0]->RemoveVR(0x0010, 0x0010);
   anOriginal.reset();
   for (const SequenceVR* aSequence : {aCopy->GetAsSequenceVR(), &anAssigned})
   {
      ASSERT_NE(nullptr, aSequence);
      EXPECT_EQ(0x00081140u, aSequence->GetTag());
      ASSERT_EQ(2u, aSequence->GetSequenceArray()->size());
      EXPECT_EQ("A", NameIn((*aSequence->GetSequenceArray())[0]));
      EXPECT_EQ(nullptr, (*aSequence->GetSequenceArray())[1]);
   }

   anAssigned = SequenceVR(0x0008, 0x1140);
   EXPECT_EQ(nullptr, anAssigned.GetSequenceArray());
}

TEST(SequenceVR, MayBeAssignedItselfOrWhatItHolds)
{
   SequenceVR aSequence(0x0008, 0x1140);
   auto* anInner = new SequenceVR(0x0008, 0x1199);
   anInner->AddSequenceItem(MakeItem("inner"));
   DICOMDataObject* anItem = MakeItem("outer");
   anItem->Push(anInner);
   aSequence.AddSequenceItem(anItem);

   const SequenceVR& aSame = aSequence;
   aSequence = aSame;
   ASSERT_EQ(1u, aSequence.GetSequenceArray()->size());
   aSequence = *anInner;
   ASSERT_EQ(1u, aSequence.GetSequenceArray()->size());
   EXPECT_EQ("inner", NameIn(aSequence.GetSequenceArray()->front()));
}

std::unique_ptr<VR> Sequence(const std::vector<const char*>& theNames) // a null name is a null item
{
   auto aSequence = std::make_unique<SequenceVR>(0x0008, 0x1140);
   aSequence->GetSequenceArray() = new SequenceVR::Items;
   for (const char* aName : theNames)
   {
      aSequence->AddSequenceItem(aName != nullptr ? MakeItem(aName) : nullptr);
   }
   return aSequence;
}

TEST(SequenceVR, EqualsItemByItem)
{
   const auto NoList = [] { return std::unique_ptr<VR>(std::make_unique<SequenceVR>(0x0008, 0x1140)); };
   const auto Plain = [] { return std::make_unique<VR>(0x0008, 0x1140); };
   const struct
   {
      const char* itsName;
      std::unique_ptr<VR> itsOne, itsOther;
      bool itsExpected;
   } aCases[] = {
       {"both without list", NoList(), NoList(), true},
       {"no list, empty list", NoList(), Sequence({}), false},
       {"empty list, no list", Sequence({}), NoList(), false},
       {"same items", Sequence({"A", "B"}), Sequence({"A", "B"}), true},
       {"other order", Sequence({"A", "B"}), Sequence({"B", "A"}), false},
       {"one more", Sequence({"A"}), Sequence({"A", "A"}), false},
       {"one fewer", Sequence({"A", "A"}), Sequence({"A"}), false},
       {"null items", Sequence({"A", nullptr}), Sequence({"A", nullptr}), true},
       {"null here", Sequence({nullptr}), Sequence({"A"}), false},
       {"null there", Sequence({"A"}), Sequence({nullptr}), false},
       {"not a sequence", Sequence({}), Plain(), false},
   };
   for (const auto& aCase : aCases)
   {
      EXPECT_EQ(aCase.itsExpected, aCase.itsOne->ValueEquals(*aCase.itsOther) != 0) << aCase.itsName;
   }
}

} // namespace

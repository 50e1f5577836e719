// Typing and moving elements with the dictionaries, and UIDs from elements.
#include <gtest/gtest.h>
#include <memory>

#include "support/Dictionaries.h"
#include "support/Elements.h"
#include "support/MessageOf.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
class ElementTyping : public testing::Test, protected Dictionaries
{
protected:
   ElementTyping()
       : Dictionaries("0010,0010,PN,d,PatientName,1,1\n0028,0106,US_or_SS,d,Smallest,1,1\n",
                      "PrivateCreator = EXAMPLE\n0029,0034,DS,d,ExampleValue,1,1\n")
   {}

   static std::unique_ptr<VR> Element(UINT32 theTag, const std::string& theValue)
   {
      return std::unique_ptr<VR>(TextElement(theTag, theValue));
   }
};
} // namespace

TEST_F(ElementTyping, FollowsTheDictionaries)
{
   struct
   {
      UINT16 itsGroup, itsElement, itsPublicCode, itsInstanceCode;
      bool itsPublicKnows, itsInstanceKnows;
   } const kCases[] = {
       {0x0028, 0x0106, VRCode::US, VRCode::US, true, true},
       {0x0009, 0x0010, VRCode::LO, VRCode::LO, true, true},
       {0x0123, 0x0010, VRCode::UN, VRCode::UN, false, false},
       {0x0029, 0x1234, VRCode::UN, VRCode::DS, false, true},
   };
   itsDictionary.RegisterPrivateCreator("EXAMPLE", MAttributeTag(0x0029, 0x0012));
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(MAttributeTag(aCase.itsGroup, aCase.itsElement).AsNumericString());
      VR aVR(aCase.itsGroup, aCase.itsElement);
      EXPECT_EQ(itsPublic.TypeVR(aVR), aCase.itsPublicKnows);
      EXPECT_EQ(aVR.GetTypeCode(), aCase.itsPublicCode);
      EXPECT_EQ(itsDictionary.TypeVR(aVR), aCase.itsInstanceKnows ? 1 : 0);
      EXPECT_EQ(aVR.GetTypeCode(), aCase.itsInstanceCode);
   }
}

TEST_F(ElementTyping, CreatorElementsRegisterTheirText)
{
   EXPECT_EQ(itsDictionary.RegisterPrivateCreator(*Element(0x00290010, " EXAMPLE  ")), 1);
   EXPECT_EQ(itsDictionary.RegisterPrivateCreator(*Element(0x00290012, std::string("NUL\0", 4))), 0);
   EXPECT_EQ(itsDictionary.RegisterPrivateCreator(*Element(0x00290012, "A" + std::string(65, ' '))), 0);
   EXPECT_EQ(itsDictionary.RegisterPrivateCreator(*Element(0x00291012, "VALUE ")), 0);
   const MAttributeTag* aBlock = itsDictionary.FindPrivateAllocation(*Element(0x00290055, "EXAMPLE "));
   ASSERT_NE(aBlock, nullptr);
   EXPECT_EQ(*aBlock, MAttributeTag(0x0029, 0x0010));
   EXPECT_EQ(itsDictionary.FindPrivateAllocation(VR(0x0029, 0x1034)), aBlock);
   EXPECT_EQ(itsDictionary.FindPrivateAllocation(VR(0x0029, 0x1134)), nullptr);
}

TEST_F(ElementTyping, ElementsMoveIntoTheirCreatorsBlock)
{
   itsDictionary.RegisterPrivateCreator("TAKEN", MAttributeTag(0x0029, 0x0010));
   VR aValue(0x0029, 0x1234);
   EXPECT_EQ(itsDictionary.AssignVRToPrivateBlock(aValue, " EXAMPLE "), 1); // allocated
   EXPECT_EQ(aValue.GetElement(), 0x1134);
   VR anotherValue(0x0029, 0x0001);
   EXPECT_EQ(itsDictionary.AssignVRToPrivateBlock(anotherValue, "EXAMPLE"), 0); // there already
   EXPECT_EQ(anotherValue.GetElement(), 0x1101);
   VR aCreator(0x0029, 0x0077);
   EXPECT_EQ(itsDictionary.AssignVRToPrivateBlock(aCreator, "EXAMPLE"), 0);
   EXPECT_EQ(aCreator.GetElement(), 0x0011);
   VR aPublic(0x0028, 0x1234);
   EXPECT_EQ(itsDictionary.AssignVRToPrivateBlock(aPublic, ""), 0);
   EXPECT_EQ(aPublic.GetElement(), 0x1234);
}

TEST_F(ElementTyping, ElementsThatFindNoBlockAreRefused)
{
   const auto aMessage = [this](const char* theCreator) {
      VR aVR(0x0029, 0x1234);
      return MessageOf<TNRuntimeException>([&] { itsDictionary.AssignVRToPrivateBlock(aVR, theCreator); });
   };
   EXPECT_EQ(aMessage("A\tB"), "The private creator ID \"A\tB\" is invalid");
   for (int aBlock = 0x10; aBlock <= 0xFF; ++aBlock)
   {
      ASSERT_EQ(itsDictionary.RegisterPrivateCreator("C" + std::to_string(aBlock),
                                                     MAttributeTag(0x0029, static_cast<UINT16>(aBlock))),
                1);
   }
   EXPECT_EQ(aMessage("NEW"), "Unable to allocate private block in group (41) for private creator ID \"NEW\": no more "
                              "available blocks in that group");
}

TEST_F(ElementTyping, CreatorElementsAreMadeForRegisteredBlocks)
{
   EXPECT_EQ(itsDictionary.CreatePrivateCreatorAllocationAttribute("EXAMPLE", TNEndian::LittleEndian), nullptr);
   itsDictionary.RegisterPrivateCreator("EXAMPLE", MAttributeTag(0x0027, 0x0010));
   itsDictionary.RegisterPrivateCreator("EXAMPLE", MAttributeTag(0x0029, 0x0012));
   const std::unique_ptr<VR> aVR(itsDictionary.CreatePrivateCreatorAllocationAttribute("EXAMPLE", TNEndian::BigEndian));
   ASSERT_NE(aVR, nullptr);
   EXPECT_EQ(aVR->GetTag(), 0x00290012u); // the group of its dictionary
   EXPECT_EQ(std::string(reinterpret_cast<const char*>(aVR->GetData()), aVR->GetLength()), "EXAMPLE ");
}

TEST_F(ElementTyping, UIDsComeFromElements)
{
   EXPECT_EQ(UID(*Element(0x00080016, std::string("1.2.3\0", 6))), "1.2.3");
   EXPECT_TRUE(UID(*Element(0x00080016, std::string(66, '1'))).IsNull());
   UID aUID("1.2");
   VR aVR(0x0008, 0x0016);
   aVR.SetLength(0xFFFFFFFF);
   aUID.Set(aVR);
   EXPECT_TRUE(aUID.IsNull());
}

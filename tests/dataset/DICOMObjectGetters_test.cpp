#include "talvenor/dataset/DICOMObject.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Dictionaries.h"
#include "support/Elements.h"

namespace
{
const char kPublic[] = "0028,0010,US,Rows,Rows,1,1\n"
                       "0010,0010,PN,Patient's Name,PatientName,1,1\n";

const char kPrivate[] = "PrivateCreator = ACME 1.0\n"
                        "0029,10,US,Weight,Weight,1,1\n"
                        "0029,11,LO,Label,Label,1,1\n";

class DICOMObjectGetters : public testing::Test, protected Dictionaries
{
protected:
   DICOMObjectGetters() : Dictionaries(kPublic, kPrivate) { itsSet.SetDataDictionary(itsDictionary); }

   DICOMDataObject itsSet;
};

template <class Value>
void ExpectNumber(DICOMObject& theSet, UINT32 theTag, UINT16 theType, Value theValue,
                  int (DICOMObject::*theGetter)(const MAttributeTag&, Value&) const)
{
   const MAttributeTag aTag(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag));
   for (const TNEndian::EndianType anEndian : {TNEndian::LittleEndian, TNEndian::BigEndian})
   {
      theSet.SetEndian(anEndian);
      theSet.Push(NumberElement(theTag, theType, theValue, anEndian));
      Value aValue = 0;
      EXPECT_EQ((theSet.*theGetter)(aTag, aValue), 1) << std::hex << theTag;
      EXPECT_EQ(aValue, theValue) << std::hex << theTag;
   }
}
} // namespace

TEST_F(DICOMObjectGetters, NumbersAreReadInTheByteOrderOfTheDataset)
{
   using D = DICOMObject;
   ExpectNumber<UINT16>(itsSet, 0x00280010, VRCode::US, 0x1234, &D::GetUINT16);
   ExpectNumber<INT16>(itsSet, 0x00280106, VRCode::SS, -2, &D::GetINT16);
   ExpectNumber<INT32>(itsSet, 0x00186020, VRCode::SL, -70000, &D::GetINT32);
   ExpectNumber<UINT32>(itsSet, 0x00080001, VRCode::UL, 0x12345678, &D::GetUINT32);
   ExpectNumber<FLOAT>(itsSet, 0x00109431, VRCode::FL, 1.5F, &D::GetFLOAT);
   ExpectNumber<DOUBLE>(itsSet, 0x0018602C, VRCode::FD, -0.25, &D::GetDOUBLE);
   ExpectNumber<INT64>(itsSet, 0x00286001, VRCode::UN, -5000000000, &D::GetINT64);
   ExpectNumber<UINT64>(itsSet, 0x00286002, VRCode::UN, 0x123456789A, &D::GetUINT64);
   UINT16 aRows = 0;
   EXPECT_EQ(itsSet.GetUINT16("Rows", aRows), 1);
   EXPECT_EQ(aRows, 0x1234);
}

TEST_F(DICOMObjectGetters, PrivateElementsAreFoundInTheirCreatorsBlock)
{
   itsSet.Push(TextElement(0x00290010, "OTHER"));
   itsSet.Push(TextElement(0x00290042, "ACME 1.0"));
   itsSet.Push(NumberElement<UINT16>(0x00291010, VRCode::US, 1)); // OTHER's
   itsSet.Push(NumberElement<UINT16>(0x00294210, VRCode::US, 70));
   itsSet.Push(TextElement(0x00294211, "a label"));
   itsSet.Push(TextElement(0x00294212, ""));

   UINT16 aNumber = 0;
   EXPECT_EQ(itsSet.GetUINT16("ACME 1.0", "Weight", aNumber), 1);
   EXPECT_EQ(aNumber, 70);
   EXPECT_EQ(itsSet.GetUINT16("ACME 1.0", 0xFF10, aNumber, 0x0029), 1) << "the low 8 bits count";
   EXPECT_EQ(itsSet.GetUINT16("OTHER", 0x10, aNumber, 0x0029), 1) << "no private dictionary is needed for numbers";
   EXPECT_EQ(aNumber, 1);
   RWCString aText;
   EXPECT_EQ(itsSet.GetString("ACME 1.0", "Label", aText), 1);
   EXPECT_EQ(aText, "a label");

   EXPECT_EQ(itsSet.GetVR("ACME 1.0", "Weight"), itsSet.GetVR(0x0029, 0x4210));
   EXPECT_EQ(itsSet.GetVR("ACME 1.0", 0x11, 0x0029), itsSet.GetVR(0x0029, 0x4211));
   EXPECT_TRUE(itsSet.HasAttribute("ACME 1.0", 0x12, 0x0029));
   EXPECT_FALSE(itsSet.HasNonNullAttribute("ACME 1.0", 0x12, 0x0029));
   EXPECT_TRUE(itsSet.HasNonNullAttribute("ACME 1.0", "Label"));

   const std::unique_ptr<VR> aByName(itsSet.RemoveVR("ACME 1.0", "Weight"));
   EXPECT_EQ(aByName->GetTag(), 0x00294210u);
}

TEST_F(DICOMObjectGetters, WhatIsMissingAnywhereGivesZero)
{
   itsSet.Push(TextElement(0x00290010, "ACME 1.0"));
   UINT16 aNumber = 77;
   RWCString aText = "untouched";
   const struct
   {
      const char* itsName;
      int itsResult;
   } kCases[] = {
       {"a known name without element", itsSet.GetUINT16("Rows", aNumber)},
       {"an unknown name", itsSet.GetUINT16("Rowz", aNumber)},
       {"a private name as a public one", itsSet.GetUINT16("Weight", aNumber)},
       {"a public name as a private one", itsSet.GetUINT16("ACME 1.0", "Rows", aNumber)},
       {"a block without the element", itsSet.GetUINT16("ACME 1.0", "Weight", aNumber)},
       {"an unknown creator", itsSet.GetUINT16("NOBODY", 0x10, aNumber, 0x0029)},
       {"no creator", itsSet.GetUINT16("", 0x10, aNumber, 0x0029)},
       {"another group", itsSet.GetUINT16("ACME 1.0", 0x10, aNumber, 0x002B)},
       {"the tag that means none", itsSet.GetString(0x0000, 0x0000, aText)},
       {"a value that does not fit", itsSet.GetUINT16(0x0029, 0x0010, aNumber)},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(aCase.itsResult, 0) << aCase.itsName;
   }
   EXPECT_EQ(aNumber, 77);
   EXPECT_EQ(aText, "untouched");
   EXPECT_EQ(DICOMDataObject().GetUINT16("ACME 1.0", 0x10, aNumber, 0x0029), 0) << "no dictionary yet";
}

TEST_F(DICOMObjectGetters, TextsBytesWordsAndTagsComeInEveryForm)
{
   const MAttributeTag aName(0x0010, 0x0010);
   itsSet.Push(TextElement(0x00100010, "Doe^John", VRCode::PN));
   RWCString aText;
   EXPECT_TRUE(itsSet.GetString(aName, aText) && aText == "Doe^John");
   EXPECT_TRUE(itsSet.GetString("PatientName", aText) && aText == "Doe^John");
   std::array<char, 9> aBuffer{};
   EXPECT_TRUE(itsSet.GetString(aName, aBuffer.data(), 9));
   EXPECT_STREQ(aBuffer.data(), "Doe^John");
   EXPECT_FALSE(itsSet.GetString("PatientName", aBuffer.data(), 8)) << "no room for the NUL";

   itsSet.Push(BytesElement(0x7FE00010, VRCode::OW, std::string("\x01\x02\x03\x04", 4)));
   std::array<unsigned char, 4> aBytes{};
   EXPECT_TRUE(itsSet.GetBytes(0x7FE0, 0x0010, aBytes.data(), 4));
   EXPECT_THAT(aBytes, testing::ElementsAre(1, 2, 3, 4));
   std::array<UINT16, 2> aWords{};
   EXPECT_TRUE(itsSet.GetWords(0x7FE0, 0x0010, aWords.data(), 4));
   EXPECT_THAT(aWords, testing::ElementsAre(0x0201, 0x0403));

   itsSet.Push(BytesElement(0x00280009, VRCode::AT, std::string("\x18\x00\x63\x10", 4)));
   DICOMObject::TagList aTags;
   EXPECT_TRUE(itsSet.GetAttributeList(0x0028, 0x0009, aTags));
   EXPECT_THAT(aTags, testing::ElementsAre(MAttributeTag(0x0018, 0x1063)));
}

TEST_F(DICOMObjectGetters, TheDirectFormWantsTwoBytes)
{
   EXPECT_EQ(itsSet.GetUINT16(0x0028, 0x0010), 0);
   itsSet.Push(NumberElement<UINT16>(0x00280010, VRCode::US, 512));
   EXPECT_EQ(itsSet.GetUINT16(0x0028, 0x0010), 512);
   itsSet.Push(NumberElement<UINT32>(0x00280010, VRCode::UL, 512));
   EXPECT_EQ(itsSet.GetUINT16(0x0028, 0x0010), 0);
}

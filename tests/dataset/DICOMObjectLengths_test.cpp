#include <gtest/gtest.h>

#include "support/Elements.h"
#include "talvenor/dataset/SequenceVR.h"

// PS3.5 7.1.2, 7.1.3: a header of 8 bytes, of 12 for the explicit types with a 32-bit length.
TEST(DICOMObjectLengths, EachElementIsItsHeaderAndItsPaddedValue)
{
   struct Case
   {
      const char* itsName;
      UINT16 itsType;
      unsigned int itsValue, itsImplicit, itsExplicit;
   };
   const Case kCases[] = {
       {"short text", VRCode::LO, 5, 14, 14}, {"OB", VRCode::OB, 3, 12, 16},      {"UT", VRCode::UT, 10, 18, 22},
       {"untyped", VRCode::None, 2, 10, 10},  {"empty OB", VRCode::OB, 0, 8, 12},
   };
   for (const Case& aCase : kCases)
   {
      DICOMDataObject aSet;
      aSet.Push(BytesElement(0x00080018, aCase.itsType, std::string(aCase.itsValue, 'x')));
      EXPECT_EQ(aSet.GetGroupLength(0x0008, ImplicitNoGroupLength), aCase.itsImplicit) << aCase.itsName;
      EXPECT_EQ(aSet.GetGroupLength(0x0008, ExplicitNoGroupLength), aCase.itsExplicit) << aCase.itsName;
      EXPECT_EQ(aSet.GetEncodedLength(ImplicitNoGroupLength), aCase.itsImplicit) << aCase.itsName;
      EXPECT_EQ(aSet.GetEncodedLength(ExplicitWithGroupLength), aCase.itsExplicit + 12) << aCase.itsName;
   }
}

TEST(DICOMObjectLengths, AnOddValueCountsAsTheEvenOneThatIsWritten)
{
   DICOMDataObject aSet;
   VR* aVR = TextElement(0x00080018, "1234");
   aVR->SetLength(3);
   aSet.Push(aVR);
   EXPECT_EQ(aSet.GetEncodedLength(ImplicitNoGroupLength), 12u);
}

TEST(DICOMObjectLengths, GroupLengthElementsAreCountedWhereTheTypeWantsThem)
{
   DICOMDataObject aSet;
   Fill(aSet, {0x00020010, 0x00080016, 0x00080018, 0x00100010}); // 14 bytes each
   EXPECT_EQ(aSet.GetEncodedLength(ImplicitNoGroupLength), 4u * 14 + 12);
   EXPECT_EQ(aSet.GetEncodedLength(ImplicitWithGroupLength), 4u * 14 + 3 * 12);
   EXPECT_EQ(aSet.GetGroupLength(0x0008, ImplicitWithGroupLength), 2u * 14);
   EXPECT_EQ(aSet.GetGroupLength(0x0009, ImplicitWithGroupLength), 0u);
   EXPECT_EQ(DICOMDataObject().GetEncodedLength(ExplicitWithGroupLength), 0u);
}

// PS3.5 7.5: header, item headers (8), item and sequence delimiters (8 each).
TEST(DICOMObjectLengths, SequencesCountTheirItemsAndDelimiters)
{
   DICOMDataObject anEmptyOne;
   anEmptyOne.Push(new SequenceVR(0x0008, 0x1140));
   EXPECT_EQ(anEmptyOne.GetEncodedLength(ImplicitNoGroupLength), 8u + 8);
   EXPECT_EQ(anEmptyOne.GetEncodedLength(ExplicitNoGroupLength), 12u + 8);

   DICOMDataObject aSet;
   aSet.Push(new SequenceVR(0x0008, 0x1140)); // two items, one of them empty
   auto* anItem = new DICOMDataObject;
   Fill(*anItem, {0x00080050});                               // 8 + 6 bytes
   anItem->Push(BytesElement(0x00080102, VRCode::OB, "abc")); // 8 or 12, + 4 bytes
   aSet.Push(anItem);
   aSet.Push(new DICOMDataObject);
   const unsigned int anImplicitOne = 8 + 8 + 2 * 16 + (8 + 6) + (8 + 4);
   const unsigned int anExplicitOne = 12 + 8 + 2 * 16 + (8 + 6) + (12 + 4);
   EXPECT_EQ(aSet.GetEncodedLength(ImplicitNoGroupLength), anImplicitOne);
   EXPECT_EQ(aSet.GetEncodedLength(ImplicitWithGroupLength), anImplicitOne + 12) << "items have no group lengths";
   EXPECT_EQ(aSet.GetGroupLength(0x0008, ExplicitWithGroupLength), anExplicitOne);
}

TEST(DICOMObjectLengths, ANullItemCountsAsAnEmptyOne)
{
   DICOMDataObject aSet;
   auto* aSequence = new SequenceVR(0x0008, 0x1140);
   aSequence->GetSequenceArray() = new SequenceVR::Items{nullptr};
   aSet.Push(static_cast<VR*>(aSequence));
   EXPECT_EQ(aSet.GetEncodedLength(ImplicitNoGroupLength), 8u + 8 + 16);
}

TEST(DICOMObjectLengths, SumsBeyond32BitsSaturate)
{
   DICOMDataObject aSet;
   for (UINT16 anElement : {0x0010, 0x0011})
   {
      VR* aVR = new VR(0x0008, anElement);
      aSet.Push(aVR);
      aVR->SetLength(0xFFFFFFF0); // the field alone: there is no such value
   }
   EXPECT_EQ(aSet.GetGroupLength(0x0008, ImplicitNoGroupLength), 0xFFFFFFFFu);
   EXPECT_EQ(aSet.GetEncodedLength(ExplicitWithGroupLength), 0xFFFFFFFFu);
   aSet.GetVR(0x0008, 0x0010)->SetLength(VR::kUndefinedLength);
   aSet.GetVR(0x0008, 0x0011)->SetLength(VR::kUndefinedLength);
   EXPECT_EQ(aSet.GetEncodedLength(ImplicitNoGroupLength), 16u) << "an undefined length adds nothing";
}

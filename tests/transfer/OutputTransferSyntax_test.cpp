#include "talvenor/transfer/OutputTransferSyntax.h"

#include <gtest/gtest.h>

#include "support/DefaultDictionary.h"
#include "support/Encoders.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/pixel/PixelDataFragment.h"
#include "talvenor/transfer/EncapsulationFragmentWriter.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
using namespace std::string_literals;
using namespace Encoders;

TEST(OutputTransferSyntax, ValuesArePaddedToEvenLength)
{
   const std::string aLong(10241, 'x');
   const struct
   {
      const char* itsName;
      UINT16 itsType;
      std::string itsValue;
      std::string itsPad;
   } kCases[] = {
       {"name", VRCode::PN, "A^B^C", " "},
       {"UID", VRCode::UI, "1.2.3", "\0"s},
       {"bytes", VRCode::OB, "\1\2\3", "\0"s},
       {"unknown", VRCode::UN, "\1\2\3", "\0"s},
       {"text", VRCode::UT, "abc", " "},
       {"even", VRCode::LO, "abcd", ""},
       {"empty", VRCode::LO, "", ""},
       {"longer than 10240", VRCode::LT, aLong, "\0"s},
       {"10239", VRCode::LT, aLong.substr(2), " "},
   };
   for (const auto& aCase : kCases)
   {
      for (const Encoding anEncoding : {kImplicit, kExplicit})
      {
         const std::string aType{static_cast<char>(aCase.itsType >> 8), static_cast<char>(aCase.itsType)};
         DatasetBytes anExpected(anEncoding);
         anExpected.Element(0x00204000, aType, aCase.itsValue + aCase.itsPad);
         ExpectBytes(Encode(TransferSyntaxOf(anEncoding), Saving(0x00204000, aCase.itsType, aCase.itsValue)),
                     anExpected.Bytes(), aCase.itsName);
      }
   }
}

TEST(OutputTransferSyntax, NumbersAreWrittenInTheByteOrderOfTheSyntax)
{
   const auto aSave = [](OutputTransferSyntax& theEncoder) {
      for (const auto anEndian : {TNEndian::LittleEndian, TNEndian::BigEndian})
      {
         theEncoder.SaveVR(NumberElement(0x00280010, VRCode::US, UINT16{0x0102}, anEndian));
         theEncoder.SaveVR(NumberElement(0x00189220, VRCode::FD, 2.0, anEndian)); // 4000000000000000
      }
      std::string aWords;
      for (int i = 0; i < 100; ++i) // more than goes out with its header
      {
         aWords += "\x02\x01";
      }
      theEncoder.SaveVR(BytesElement(0x00281201, VRCode::OW, aWords));
   };
   for (const Encoding anEncoding : {kImplicit, kExplicit, kBigEndian})
   {
      const bool isBig = anEncoding == kBigEndian;
      DatasetBytes anExpected(anEncoding);
      for (int i = 0; i < 2; ++i)
      {
         anExpected.Stated(0x00280010, "US", 2).Number(0x0102, 2);
         anExpected.Element(0x00189220, "FD", isBig ? "\x40\0\0\0\0\0\0\0"s : "\0\0\0\0\0\0\0\x40"s);
      }
      anExpected.Stated(0x00281201, "OW", 200);
      for (int i = 0; i < 100; ++i)
      {
         anExpected.Number(0x0102, 2);
      }
      ExpectBytes(Encode(TransferSyntaxOf(anEncoding), aSave), anExpected.Bytes());
   }
}

TEST(OutputTransferSyntax, PrivateElementsNeedTheirCreator)
{
   const auto aCreator = [](UINT32 theTag, const char* theName = "ONE") { return TextElement(theTag, theName); };
   const auto aValue = [](UINT32 theTag) { return TextElement(theTag, "v", VRCode::UN); };
   const struct
   {
      const char* itsName;
      std::vector<VR*> itsElements;
      std::vector<UINT32> itsWritten;
   } kCases[] = {
       {"illegal groups", {aValue(0x00010010), aValue(0x00070010), aValue(0xFFFF0001)}, {}},
       {"creator and value", {aCreator(0x00090010), aValue(0x00091001)}, {0x00090010, 0x00091001}},
       {"value first", {aValue(0x00091001), aCreator(0x00090010)}, {0x00090010}},
       {"other block", {aCreator(0x00090010), aValue(0x00091101)}, {0x00090010}},
       {"other group", {aCreator(0x00090010), aValue(0x000B1001)}, {0x00090010}},
       {"creator twice", {aCreator(0x00090010), aCreator(0x00090011, "ONE ")}, {0x00090010}},
       {"creator in two groups", {aCreator(0x00090010), aCreator(0x000B0010)}, {0x00090010, 0x000B0010}},
       {"two creators for a block", {aCreator(0x00090010), aCreator(0x00090010, "TWO")}, {0x00090010, 0x00090011}},
       {"no name", {aCreator(0x00090010, "  "), aValue(0x00091001)}, {}},
       {"group without creators", {aCreator(0x10210010), aValue(0x10211001)}, {}},
       {"even group", {aValue(0x00101001)}, {0x00101001}},
   };
   for (const auto& aCase : kCases)
   {
      RecordingOutputStream aStream;
      const auto anEncoder = MakeEncoder(TransferSyntaxType::TSLEExplicitUID, aStream);
      for (VR* const aVR : aCase.itsElements)
      {
         anEncoder->SaveVR(aVR);
      }
      PiecewiseInputStream anInput(aStream.Bytes());
      const auto aDecoder = MakeDecoder(TransferSyntaxType::TSLEExplicitUID, anInput);
      std::vector<UINT32> aTags;
      while (const std::unique_ptr<VR> aVR{aDecoder->NextVR()})
      {
         aTags.push_back(aVR->GetTag());
      }
      EXPECT_EQ(aTags, aCase.itsWritten) << aCase.itsName;
      EXPECT_EQ(anEncoder->GetLeftOutCount(), aCase.itsElements.size() - aCase.itsWritten.size()) << aCase.itsName;
   }
}

// One item with an element, one that is empty; in front of them a private element that every item has to explain anew.
void FillWithSequence(DICOMDataObject& theObject)
{
   auto* const aSequence = new SequenceVR(0x0040, 0xA730);
   auto* const anItem = new DICOMDataObject;
   anItem->Push(TextElement(0x00090010, "ONE"));
   anItem->Push(TextElement(0x00091001, "in", VRCode::UN));
   aSequence->AddSequenceItem(anItem);
   aSequence->AddSequenceItem(new DICOMDataObject);
   theObject.Push(TextElement(0x00090010, "ONE"));
   theObject.Push(aSequence);
   theObject.Push(new SequenceVR(0x0040, 0xA731));
}

TEST(OutputTransferSyntax, SequencesInMemoryAreOfUndefinedLength)
{
   DICOMDataObject anObject;
   FillWithSequence(anObject);
   for (const Encoding anEncoding : {kImplicit, kExplicit, kBigEndian})
   {
      DatasetBytes anExpected(anEncoding);
      anExpected.Element(0x00090010, "LO", "ONE ").Sequence(0x0040A730);
      anExpected.Item().Element(0x00090010, "LO", "ONE ").Element(0x00091001, "UN", "in").ItemEnd();
      anExpected.Item().ItemEnd().SequenceEnd().Sequence(0x0040A731).SequenceEnd();
      ExpectBytes(Encode(TransferSyntaxOf(anEncoding),
                         [&](OutputTransferSyntax& theEncoder) { theEncoder.SaveDICOMObject(anObject); }),
                  anExpected.Bytes());
   }
}

TEST(OutputTransferSyntax, WhatIsLeftOutOfItemsCounts)
{
   DICOMDataObject anObject;
   FillWithSequence(anObject);
   anObject.GetVR(0x0040, 0xA730)
       ->GetAsSequenceVR()
       ->GetSequenceArray()
       ->back()
       ->Push(TextElement(0x00091001, "v", VRCode::UN)); // the creator stands in the other item
   Encode(TransferSyntaxType::TSLEExplicitUID, [&](OutputTransferSyntax& theEncoder) {
      theEncoder.SaveDICOMObject(anObject);
      EXPECT_EQ(theEncoder.GetLeftOutCount(), 1u);
   });
}

TEST(OutputTransferSyntax, GroupLengthsStandInCommandsAndMetaInformationOnly)
{
   DICOMDataObject anObject;
   anObject.Push(TextElement(0x00020010, "1.2.840.10008.1.2.1", VRCode::UI));
   anObject.Push(TextElement(0x00020102, "ab", VRCode::None)); // becomes UN, with a header of 12 bytes
   anObject.Push(TextElement(0x00100010, "A^B ", VRCode::PN));
   DatasetBytes anExpected;
   anExpected.Stated(0x00020000, "UL", 4).Number(42, 4).Element(0x00020010, "UI", "1.2.840.10008.1.2.1 ");
   anExpected.Element(0x00020102, "UN", "ab");
   anExpected.Element(0x00100010, "PN", "A^B ");
   ExpectBytes(Encode(TransferSyntaxType::TSLEExplicitUID,
                      [&](OutputTransferSyntax& theEncoder) { theEncoder.SaveDICOMObject(anObject); }),
               anExpected.Bytes());
}

TEST(OutputTransferSyntax, UntypedElementsGetTheTypeOfTheDictionary)
{
   const DefaultDictionary aDictionary("0010,0010,PN,\"Patient's Name\",PatientName,1,1\n");
   DatasetBytes anExpected;
   anExpected.Element(0x00100010, "PN", "A^B ");
   ExpectBytes(Encode(TransferSyntaxType::TSLEExplicitUID, Saving(0x00100010, VRCode::None, "A^B ")),
               anExpected.Bytes());
}

// A sequence of one item that holds theContent.
std::string Nested(Encoding theEncoding, const DatasetBytes& theContent, bool theIsDefined = true)
{
   DatasetBytes aBytes(theEncoding);
   if (theIsDefined)
   {
      const auto aSize = static_cast<UINT32>(theContent.Size());
      aBytes.Sequence(0x0040A730, aSize + 8).Item(aSize, theContent.Bytes());
   }
   else
   {
      aBytes.Sequence(0x0040A730).Item().Raw(theContent.Bytes()).ItemEnd().SequenceEnd();
   }
   return aBytes.Bytes();
}

// What does not come out as it went in: a group length, a value of odd length, a private element without its creator,
// and lengths of sequences around them.
DatasetBytes ItemContent(Encoding theEncoding)
{
   DatasetBytes aContent(theEncoding);
   aContent.Stated(0x00080000, "UL", 4).Number(12, 4).Element(0x00080005, "CS", "ISO");
   aContent.Element(0x00091001, "UN", "lost");
   DatasetBytes anInner(theEncoding);
   anInner.Element(0x0040A160, "UT", "text");
   return aContent.Raw(Nested(theEncoding, anInner));
}

TEST(OutputTransferSyntax, LengthsAreTrueOfWhatIsWritten)
{
   const DefaultDictionary aDictionary("0008,0005,CS,\"Specific Character Set\",SpecificCharacterSet,1,1\n"
                                       "0040,A160,UT,\"Text Value\",TextValue,1,1\n"
                                       "0040,A730,SQ,\"Content Sequence\",ContentSequence,1,1\n");
   for (const Encoding aFrom : {kImplicit, kExplicit, kBigEndian})
   {
      for (const Encoding aTo : {kImplicit, kExplicit, kBigEndian})
      {
         const bool isSameForm = (aFrom == kImplicit) == (aTo == kImplicit);
         DatasetBytes anExpected(aTo);
         if (isSameForm)
         {
            anExpected.Stated(0x00080000, "UL", 4).Number(12, 4);
         }
         anExpected.Element(0x00080005, "CS", "ISO ");
         DatasetBytes anInner(aTo);
         anInner.Element(0x0040A160, "UT", "text");
         anExpected.Raw(Nested(aTo, anInner, isSameForm));
         ExpectBytes(Transcode(aFrom, aTo, Nested(aFrom, ItemContent(aFrom))), Nested(aTo, anExpected, isSameForm),
                     TransferSyntaxOf(aTo));
      }
   }
}

TEST(OutputTransferSyntax, StreamsComeOutAsTheyWentIn)
{
   DatasetBytes aSequences;
   aSequences.Sequence(0x0040A730).Item(14).Element(0x00080005, "CS", "ISO_IR").Item().ItemEnd().SequenceEnd();
   aSequences.Sequence(0x0040A731, 0);
   DatasetBytes aPixels;
   aPixels.Element(0x7FE00010, "OW", "\1\2\3\4");
   DatasetBytes anIcon;
   anIcon.Sequence(0x00880200, 24).Item(16).Raw(aPixels.Bytes()).Raw(aPixels.Bytes());
   DatasetBytes aFragments(Encoding::Compressed);
   aFragments.Stated(0x7FE00010, "OB", DatasetBytes::kUndefined);
   aFragments.Item(0).Item(3, "abc").Item(0).SequenceEnd();
   const struct
   {
      const char* itsName;
      Encoding itsEncoding;
      std::string itsBytes;
   } kCases[] = {
       {"sequences", kExplicit, aSequences.Bytes()},
       {"pixels", kExplicit, aPixels.Bytes()},
       {"pixels in an item", kExplicit, anIcon.Bytes()},
       {"fragments", Encoding::Compressed, aFragments.Bytes()},
   };
   for (const auto& aCase : kCases)
   {
      ExpectBytes(Transcode(aCase.itsEncoding, aCase.itsEncoding, aCase.itsBytes), aCase.itsBytes, aCase.itsName);
   }
}

TEST(OutputTransferSyntax, AVeryLongSequenceIsNotHeldInMemory)
{
   constexpr UINT32 kValue = 5000000;
   DatasetBytes aContent;
   aContent.Element(0x0040A160, "UT", std::string(kValue, 'x'));
   DatasetBytes anExpected;
   anExpected.Sequence(0x0040A730).Item().Raw(aContent.Bytes()).ItemEnd().SequenceEnd();
   EXPECT_TRUE(Transcode(kExplicit, kExplicit, Nested(kExplicit, aContent)).itsBytes == anExpected.Bytes());
}

TEST(OutputTransferSyntax, DroppedStreamsAreReadToTheirEnd)
{
   DatasetBytes aBytes;
   aBytes.Sequence(0x00091001).Item().Element(0x00080005, "CS", "IR").ItemEnd().SequenceEnd(); // no creator
   aBytes.Element(0x00100010, "PN", "A^B ");
   DatasetBytes anExpected;
   anExpected.Element(0x00100010, "PN", "A^B ");
   ExpectBytes(Transcode(kExplicit, kExplicit, aBytes.Bytes()), anExpected.Bytes());
}

TEST(OutputTransferSyntax, TheElementIsDestroyedWhateverHappens)
{
   int aCount = 0;
   Encode(TransferSyntaxType::TSLEExplicitUID,
          [&](OutputTransferSyntax& theEncoder) { theEncoder.SaveVR(new WatchedVR(0x00010010, aCount)); });
   const Encoded aRefused = Encode(TransferSyntaxType::TSRLEUID, [&](OutputTransferSyntax& theEncoder) {
      theEncoder.GetEncapsulationFragmentWriter()->SavePixelDataFragment(new MemoryBufferedPixelDataFragment(0), 1);
      theEncoder.SaveVR(new WatchedVR(0x00100010, aCount));
   });
   EXPECT_EQ(aRefused.itsError.itsCode, TN_INVALID_ENCODING);
   EXPECT_EQ(aCount, 0);
}
} // namespace

#include "talvenor/transfer/OutputTransferSyntax.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

#include "support/DatasetBytes.h"
#include "support/Decoding.h"
#include "support/DefaultDictionary.h"
#include "support/Elements.h"
#include "support/RecordingOutputStream.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/transfer/EncapsulationFragmentWriter.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
using namespace std::string_literals;
using Write = std::function<void(OutputTransferSyntax&)>;

constexpr Encoding kImplicit = Encoding::Implicit;
constexpr Encoding kExplicit = Encoding::Explicit;
constexpr Encoding kBigEndian = Encoding::BigEndian;

std::unique_ptr<OutputTransferSyntax> MakeEncoder(const RWCString& theUID, OutputStream& theStream)
{
   const TransferSyntaxType* aType = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theUID);
   return std::unique_ptr<OutputTransferSyntax>(aType->CreateOutputTransferSyntax(theStream));
}

struct Encoded
{
   std::string itsBytes;
   StreamError itsError;
};

Encoded Encode(const RWCString& theUID, const Write& theWrite)
{
   RecordingOutputStream aStream;
   const auto anEncoder = MakeEncoder(theUID, aStream);
   const StreamError anError = StreamErrorOf([&] { theWrite(*anEncoder); });
   return {{aStream.Bytes().begin(), aStream.Bytes().end()}, anError};
}

std::string HexOf(const std::string& theBytes)
{
   return Hex(reinterpret_cast<const unsigned char*>(theBytes.data()), theBytes.size());
}

// Decodes and encodes element by element, as a host that keeps nothing in memory does.
Encoded Transcode(Encoding theFrom, Encoding theTo, const std::string& theBytes)
{
   return Encode(TransferSyntaxOf(theTo), [&](OutputTransferSyntax& theEncoder) {
      PiecewiseInputStream aStream(Bytes(theBytes.begin(), theBytes.end()));
      const auto aDecoder = MakeDecoder(TransferSyntaxOf(theFrom), aStream);
      while (VR* const aVR = aDecoder->NextVR())
      {
         theEncoder.SaveVR(aVR);
      }
   });
}

Write Saving(UINT32 theTag, UINT16 theType, const std::string& theValue)
{
   return [=](OutputTransferSyntax& theEncoder) {
      VR* const aVR = BytesElement(theTag, theType, theValue);
      aVR->SetLength(static_cast<UINT32>(theValue.size())); // odd where the value is
      theEncoder.SaveVR(aVR);
   };
}

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
         EXPECT_EQ(
             HexOf(Encode(TransferSyntaxOf(anEncoding), Saving(0x00204000, aCase.itsType, aCase.itsValue)).itsBytes),
             HexOf(anExpected.Bytes()))
             << aCase.itsName;
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
      EXPECT_EQ(HexOf(Encode(TransferSyntaxOf(anEncoding), aSave).itsBytes), HexOf(anExpected.Bytes()));
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
      const Encoded aResult = Encode(TransferSyntaxOf(anEncoding),
                                     [&](OutputTransferSyntax& theEncoder) { theEncoder.SaveDICOMObject(anObject); });
      EXPECT_EQ(HexOf(aResult.itsBytes), HexOf(anExpected.Bytes()));
   }
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
   EXPECT_EQ(HexOf(Encode(TransferSyntaxType::TSLEExplicitUID,
                          [&](OutputTransferSyntax& theEncoder) { theEncoder.SaveDICOMObject(anObject); })
                       .itsBytes),
             HexOf(anExpected.Bytes()));
}

TEST(OutputTransferSyntax, UntypedElementsGetTheTypeOfTheDictionary)
{
   const DefaultDictionary aDictionary("0010,0010,PN,\"Patient's Name\",PatientName,1,1\n");
   DatasetBytes anExpected;
   anExpected.Element(0x00100010, "PN", "A^B ");
   EXPECT_EQ(HexOf(Encode(TransferSyntaxType::TSLEExplicitUID, Saving(0x00100010, VRCode::None, "A^B ")).itsBytes),
             HexOf(anExpected.Bytes()));
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
         const Encoded aResult = Transcode(aFrom, aTo, Nested(aFrom, ItemContent(aFrom)));
         EXPECT_EQ(HexOf(aResult.itsBytes), HexOf(Nested(aTo, anExpected, isSameForm))) << TransferSyntaxOf(aTo);
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
      EXPECT_EQ(HexOf(Transcode(aCase.itsEncoding, aCase.itsEncoding, aCase.itsBytes).itsBytes), HexOf(aCase.itsBytes))
          << aCase.itsName;
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
   EXPECT_EQ(HexOf(Transcode(kExplicit, kExplicit, aBytes.Bytes()).itsBytes), HexOf(anExpected.Bytes()));
}

TEST(OutputTransferSyntax, PixelDataIsSwappedForAnotherByteOrder)
{
   const struct
   {
      const char* itsType;
      std::string itsLittle;
      std::string itsBig;
   } kCases[] = {
       {"OB", "\1\2\3\4"s, "\1\2\3\4"s},
       {"OW", "\1\2\3\4"s, "\2\1\4\3"s},
       {"OF", "\1\2\3\4"s, "\4\3\2\1"s},
   };
   for (const auto& aCase : kCases)
   {
      DatasetBytes aLittle(kExplicit);
      aLittle.Element(0x7FE00010, aCase.itsType, aCase.itsLittle);
      DatasetBytes aBig(kBigEndian);
      aBig.Element(0x7FE00010, aCase.itsType, aCase.itsBig);
      EXPECT_EQ(HexOf(Transcode(kExplicit, kBigEndian, aLittle.Bytes()).itsBytes), HexOf(aBig.Bytes()));
      EXPECT_EQ(HexOf(Transcode(kBigEndian, kExplicit, aBig.Bytes()).itsBytes), HexOf(aLittle.Bytes()));
   }
}

// Takes blocks of a few bytes, and no more than that in one.
class SmallBlockStream : public RecordingOutputStream
{
public:
   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      RecordingOutputStream::Write(theBytes, theCount);
      itsSizes.push_back(theCount);
   }
   unsigned int GetMaximumOutputBlockSize() const override { return 9; }

   std::vector<unsigned int> itsSizes;
};

TEST(OutputTransferSyntax, PixelDataLeavesInBlocksOfWholeWords)
{
   DatasetBytes aBytes(kBigEndian);
   aBytes.Element(0x7FE00010, "OW", "abcdefghijklmnopqr");
   PiecewiseInputStream anInput(Bytes(aBytes.Bytes().begin(), aBytes.Bytes().end()), 5);
   const auto aDecoder = MakeDecoder(TransferSyntaxType::TSBEExplicitUID, anInput);
   SmallBlockStream aStream;
   MakeEncoder(TransferSyntaxType::TSLEExplicitUID, aStream)->SaveVR(aDecoder->NextVR());
   EXPECT_EQ(aStream.itsSizes, (std::vector<unsigned int>{12, 8, 8, 2}));
   EXPECT_EQ(std::string(aStream.Bytes().begin() + 12, aStream.Bytes().end()), "badcfehgjilknmporq");
}

std::unique_ptr<EncapsulatedPixelVR> MakeFragments(const std::vector<std::string>& theItems)
{
   auto aPixels = std::make_unique<EncapsulatedPixelVR>(nullptr);
   for (const std::string& anItem : theItems)
   {
      auto aFragment = std::make_unique<MemoryBufferedPixelDataFragment>(static_cast<UINT32>(anItem.size()));
      std::copy(anItem.begin(), anItem.end(), aFragment->GetData());
      aPixels->AddItem(std::move(aFragment));
   }
   return aPixels;
}

TEST(OutputTransferSyntax, OffsetTablesAreMadeFromTheFragments)
{
   const struct
   {
      const char* itsName;
      std::vector<std::string> itsItems;
      std::string itsTable;
   } kCases[] = {
       {"one fragment", {"", "abc"}, "\0\0\0\0"s},
       {"frames unknown", {"", "ab", "cd", "ef"}, ""},
       {"two frames", {"\0\0\0\0\x14\0\0\0"s, "ab", "cd", "ef"}, "\0\0\0\0\x14\0\0\0"s},
   };
   for (const auto& aCase : kCases)
   {
      DatasetBytes anExpected;
      anExpected.Stated(0x7FE00010, "OB", DatasetBytes::kUndefined);
      anExpected.Item(static_cast<UINT32>(aCase.itsTable.size()), aCase.itsTable);
      for (std::size_t i = 1; i < aCase.itsItems.size(); ++i)
      {
         anExpected.Item(static_cast<UINT32>(aCase.itsItems[i].size()), aCase.itsItems[i]);
      }
      anExpected.SequenceEnd();
      const auto aPixels = MakeFragments(aCase.itsItems);
      EXPECT_EQ(HexOf(Encode(TransferSyntaxType::TSRLEUID,
                             [&](OutputTransferSyntax& theEncoder) { theEncoder.SaveVR(*aPixels); })
                          .itsBytes),
                HexOf(anExpected.Bytes()))
          << aCase.itsName;
   }
}

std::unique_ptr<SequenceVR> MakeFragmentSequence(const std::vector<VR*>& theElements)
{
   auto aSequence = std::make_unique<SequenceVR>(0x7FE0, 0x0010);
   for (VR* const aVR : theElements)
   {
      auto* const anItem = new DICOMDataObject;
      anItem->Push(aVR);
      aSequence->AddSequenceItem(anItem);
   }
   return aSequence;
}

TEST(OutputTransferSyntax, FragmentsMayBeHeldInASequence)
{
   VR* const anOdd = BytesElement(DatasetBytes::kItem, VRCode::None, "abc");
   anOdd->SetLength(3);
   const auto aFull = MakeFragmentSequence({BytesElement(DatasetBytes::kItem, VRCode::None, ""), anOdd});
   const auto anEmpty = MakeFragmentSequence({});
   DatasetBytes anExpected;
   anExpected.Stated(0x7FE00010, "SQ", DatasetBytes::kUndefined).Item(0).Item(4, "abc\0"s).SequenceEnd();
   anExpected.Stated(0x7FE00010, "SQ", DatasetBytes::kUndefined).Item(0).SequenceEnd();
   EXPECT_EQ(HexOf(Encode(TransferSyntaxType::TSLEExplicitUID,
                          [&](OutputTransferSyntax& theEncoder) {
                             theEncoder.SaveVR(*aFull);
                             theEncoder.SaveVR(*anEmpty);
                          })
                       .itsBytes),
             HexOf(anExpected.Bytes()));
}

TEST(OutputTransferSyntax, FragmentsAreWrittenOneByOne)
{
   const struct
   {
      const RWCString& itsSyntax;
      char itsPad;
   } kCases[] = {
       {TransferSyntaxType::TSJPEG50UID, '\xFF'},   {TransferSyntaxType::TSJPEG2KLosslessUID, '\xFF'},
       {TransferSyntaxType::TSJPEG2KUID, '\0'},     {TransferSyntaxType::TSRLEUID, '\0'},
       {TransferSyntaxType::TSLEExplicitUID, '\0'},
   };
   for (const auto& aCase : kCases)
   {
      DatasetBytes anExpected;
      anExpected.Stated(0x7FE00010, "OB", DatasetBytes::kUndefined).Item(0);
      anExpected.Item(4, "abc" + std::string(1, aCase.itsPad)).Item(3, "abc").SequenceEnd();
      anExpected.Element(0x7FE00020, "LO", "ab");
      const Encoded aResult = Encode(aCase.itsSyntax, [](OutputTransferSyntax& theEncoder) {
         EncapsulationFragmentWriter& aWriter = *theEncoder.GetEncapsulationFragmentWriter();
         aWriter.FinishEncapsulation(); // nothing to finish
         aWriter.SavePixelDataFragment(new MemoryBufferedPixelDataFragment(0), 1);
         unsigned char aData[] = {'a', 'b', 'c'};
         unsigned char* aBytes = aData;
         MemoryBufferedPixelDataFragment aFragment(3, aBytes);
         aWriter.SavePixelDataFragment(aFragment, 1);
         aWriter.SavePixelDataFragment(aFragment, 0);
         EXPECT_EQ(StreamErrorOf([&] { theEncoder.SaveVR(TextElement(0x7FE00020, "ab")); }).itsCode,
                   TN_INVALID_ENCODING);
         aWriter.FinishEncapsulation();
         theEncoder.SaveVR(TextElement(0x7FE00020, "ab"));
      });
      EXPECT_EQ(HexOf(aResult.itsBytes), HexOf(anExpected.Bytes())) << aCase.itsSyntax;
   }
   RecordingOutputStream aStream;
   EXPECT_EQ(MakeEncoder(TransferSyntaxType::TSBEExplicitUID, aStream)->GetEncapsulationFragmentWriter(), nullptr);
}

Write Copying(Encoding theFrom, const DatasetBytes& theBytes)
{
   return [=](OutputTransferSyntax& theEncoder) {
      PiecewiseInputStream aStream(Bytes(theBytes.Bytes().begin(), theBytes.Bytes().end()));
      const auto aDecoder = MakeDecoder(TransferSyntaxOf(theFrom), aStream);
      theEncoder.SaveVR(aDecoder->NextVR());
   };
}

TEST(OutputTransferSyntax, WhatCannotBeWrittenIsTold)
{
   DatasetBytes aShortPixels;
   aShortPixels.Stated(0x7FE00010, "OW", 100, "abcdef");
   DatasetBytes aShortFragment;
   aShortFragment.Stated(0x7FE00010, "OB", DatasetBytes::kUndefined).Item(10, "abcd");
   DatasetBytes aTextPixels;
   aTextPixels.Element(0x7FE00010, "UT", "abcd");
   DatasetBytes anItem;
   anItem.Item(0);
   const std::shared_ptr<SequenceVR> aPixelSequence = MakeFragmentSequence({});
   const std::shared_ptr<SequenceVR> aNoFragment = MakeFragmentSequence({TextElement(0x00080005, "IR")});
   const Write aSavePixelSequence = [=](OutputTransferSyntax& theEncoder) { theEncoder.SaveVR(*aPixelSequence); };
   const struct
   {
      Encoding itsEncoding;
      Write itsWrite;
      StreamError itsError;
      std::size_t itsBytes; // that went out
   } kCases[] = {
       {kExplicit, Saving(0x00204000, VRCode::LT, std::string(32768, 'x')), kNoStreamError, 32776},
       {kExplicit,
        Saving(0x00204000, VRCode::LT, std::string(32769, 'x')),
        {"ExplicitOutputTransferSyntax::SaveVR: Length (32770) > 32768 for VR with 16 bit length; Tag = (0020, 4000)",
         TN_INVALID_ELEMENT_HEADER},
        0},
       {kImplicit, Saving(0x00204000, VRCode::LT, std::string(32769, 'x')), kNoStreamError, 32778},
       {kExplicit,
        Saving(0x00281201, VRCode::OW, "abc"),
        {"ExplicitOutputTransferSyntax::SaveVR: Odd length for VR of type OF or OW", TN_INVALID_ELEMENT_HEADER},
        15},
       {kImplicit,
        Saving(0x00281201, VRCode::OF, std::string(201, 'x')),
        {"ImplicitOutputTransferSyntax::SaveVR: Odd length for VR of type OF or OW", TN_INVALID_ELEMENT_HEADER},
        209},
       {kImplicit,
        aSavePixelSequence,
        {"ImplicitOutputTransferSyntax::SaveVR(VR&) called to save encapsulated pixel data which is invalid for "
         "implicit transfer syntax",
         TN_INTERNAL_ERROR},
        0},
       {kExplicit,
        [=](OutputTransferSyntax& theEncoder) { theEncoder.SaveVR(*aNoFragment); },
        {"ExplicitOutputTransferSyntax::SaveVR: EOF without finding a sequence item (fragment) while encoding "
         "encapsulated pixel data",
         TN_INVALID_ELEMENT_HEADER},
        12},
       {kExplicit,
        Copying(kExplicit, aShortPixels),
        {"ExplicitOutputTransferSyntax::SavePixelInputStreamVR: EOF before end of input stream (94 bytes remaining)",
         TN_END_OF_FILE},
        18},
       {kExplicit,
        Copying(kExplicit, aShortFragment),
        {"ExplicitOutputTransferSyntax::SavePixelDataFragmentInputStream: EOF before end of input stream (6 bytes "
         "remaining)",
         TN_END_OF_FILE},
        24},
       {kImplicit,
        Copying(kExplicit, aShortFragment),
        {"ImplicitOutputTransferSyntax::SavePixelDataFragmentInputStreamVR: Encapsulated pixel format with implicit "
         "transfer syntax not allowed",
         TN_INVALID_ELEMENT_HEADER},
        0},
       {kBigEndian,
        Copying(kExplicit, aTextPixels),
        {"ExplicitOutputTransferSyntax::SavePixelInputStreamVR: Unrecognized VR type code", TN_END_OF_FILE},
        12},
       {kExplicit,
        Copying(kExplicit, anItem),
        {"ExplicitOutputTransferSyntax::SaveStreamBufferedVR called to save unknown type of stream-buffered VR",
         TN_INTERNAL_ERROR},
        0},
   };
   for (const auto& aCase : kCases)
   {
      const Encoded aResult = Encode(TransferSyntaxOf(aCase.itsEncoding), aCase.itsWrite);
      EXPECT_EQ(aResult.itsError, aCase.itsError);
      EXPECT_EQ(aResult.itsBytes.size(), aCase.itsBytes) << aCase.itsError;
   }
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

// Sequences and items whose content is still in the stream: VRInputStreamVR and DICOMDataObjectInputStreamVR.
#include <gtest/gtest.h>

#include "support/Decoding.h"
#include "support/DefaultDictionary.h"
#include "support/Elements.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
const RWCString& kLEE = TransferSyntaxType::TSLEExplicitUID;
const RWCString& kBEE = TransferSyntaxType::TSBEExplicitUID;

const Bytes kFirst = {
    0x08, 0x00, 0x50, 0x11, // (0008,1150)
    'U',  'I',  0x02, 0x00, // UI, 2 bytes
    '1',  '.',
};
const Bytes kSecond = {
    0x08, 0x00, 0x55, 0x11, // (0008,1155)
    'U',  'I',  0x02, 0x00, // UI, 2 bytes
    '2',  '.',
};
const Bytes kSequence = {0x08, 0x00, 0x40, 0x11, 'S', 'Q', 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF};
const Bytes kTwoItems = kSequence + kItemOfUndefinedLength + kFirst + kSecond + kItemDelimiter +
                        kItemOfUndefinedLength + kFirst + kItemDelimiter + kSequenceDelimiter;

// A decoder and its first element, which is a sequence.
class SequenceInStream
{
public:
   explicit SequenceInStream(const Bytes& theBytes, const RWCString& theUID = kLEE)
       : itsStream(theBytes), itsDecoder(MakeDecoder(theUID, itsStream)), itsElement(itsDecoder->NextVR())
   {}

   DICOMDataObjectInputStreamVR& operator*() { return *itsElement->GetAsDICOMDataObjectInputStreamVR(); }
   DICOMDataObjectInputStreamVR* operator->() { return itsElement->GetAsDICOMDataObjectInputStreamVR(); }
   InputTransferSyntax& Decoder() { return *itsDecoder; }

private:
   PiecewiseInputStream itsStream;
   std::unique_ptr<InputTransferSyntax> itsDecoder;
   std::unique_ptr<VR> itsElement;
};

// The tags of each item.
std::vector<std::vector<UINT32>> ItemsOf(const VR& theSequence)
{
   std::vector<std::vector<UINT32>> aResult;
   const SequenceVR::Items* const anItems = theSequence.GetAsSequenceVR()->GetSequenceArray();
   for (std::size_t i = 0; anItems != nullptr && i < anItems->size(); ++i)
   {
      aResult.push_back(TagsOf(*(*anItems)[i]));
   }
   return aResult;
}

using Tags = std::vector<std::vector<UINT32>>;

TEST(DICOMDataObjectInputStreamVR, StaysAtItsEnd)
{
   SequenceInStream aSequence(kTwoItems + kFirst);
   while (const std::unique_ptr<VRInputStreamVR> anItem{aSequence->NextDICOMDataObject()})
   {
      EXPECT_EQ(anItem->GetTag(), 0xFFFEE000u);
      DatasetText().AddLevel(*anItem);
   }
   EXPECT_TRUE(aSequence->IsEmpty());
   EXPECT_EQ(aSequence->NextDICOMDataObject(), nullptr);
   EXPECT_EQ(std::unique_ptr<VR>(aSequence.Decoder().NextVR())->GetTag(), 0x00081150u) << "the element behind it";
}

TEST(DICOMDataObjectInputStreamVR, BuildsTheSequenceOnce)
{
   SequenceInStream aSequence(kTwoItems);
   const std::unique_ptr<SequenceVR> aBuilt(aSequence->GetVR());
   ASSERT_NE(aBuilt, nullptr);
   EXPECT_EQ(aBuilt->GetTag(), 0x00081140u);
   EXPECT_EQ(ItemsOf(*aBuilt), (Tags{{0x00081150, 0x00081155}, {0x00081150}}));
   EXPECT_TRUE(aSequence->IsEmpty());
   EXPECT_EQ(aSequence->GetVR(), nullptr);
   SequenceInStream aBegun(kTwoItems);
   const std::unique_ptr<VRInputStreamVR> anItem(aBegun->NextDICOMDataObject());
   EXPECT_EQ(aBegun->GetVR(), nullptr);
   EXPECT_FALSE(aBegun->IsEmpty()) << "its items can still be read";
}

TEST(DICOMDataObjectInputStreamVR, BuildsItemsInTheByteOrderOfTheirContent)
{
   const Bytes kBigEndian = {
       0x00, 0x08, 0x11, 0x40, 'S',  'Q',  0x00, 0x00, 0x00, 0x00, 0x00, 0x08, // 8 bytes
       0xFF, 0xFE, 0xE0, 0x00, 0x00, 0x00, 0x00, 0x00,
   };
   const Bytes kUnknown = {
       0x00, 0x09, 0x10, 0x01, 'U',  'N',  0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, // content in little endian
       0xFE, 0xFF, 0x00, 0xE0, 0x00, 0x00, 0x00, 0x00,                         // an empty item
       0xFE, 0xFF, 0xDD, 0xE0, 0x00, 0x00, 0x00, 0x00,
   };
   const struct
   {
      const char* itsName;
      RWCString itsSyntax;
      Bytes itsBytes;
      TNEndian::EndianType itsEndian;
   } kCases[] = {
       {"big endian", kBEE, kBigEndian, TNEndian::BigEndian},
       {"unknown in big endian", kBEE, kUnknown, TNEndian::LittleEndian},
   };
   for (const auto& aCase : kCases)
   {
      SequenceInStream aSequence(aCase.itsBytes, aCase.itsSyntax);
      const std::unique_ptr<SequenceVR> aBuilt(aSequence->GetVR());
      ASSERT_FALSE(ItemsOf(*aBuilt).empty()) << aCase.itsName;
      EXPECT_EQ(aBuilt->GetSequenceArray()->front()->GetEndian(), aCase.itsEndian) << aCase.itsName;
   }
}

// A dataset keeps what had arrived when a sequence breaks off; the failure is told all the same.
TEST(DICOMDataObjectInputStreamVR, KeepsWhatWasReadWhenItFailsMidway)
{
   const Bytes kCreator = {0x09, 0x00, 0x10, 0x00, 'L', 'O', 0x02, 0x00, 'A', 'B'};
   const Bytes kOther = {0x09, 0x00, 0x10, 0x00, 'L', 'O', 0x02, 0x00, 'C', 'D'};
   const struct
   {
      const char* itsName;
      Bytes itsBytes;
      Tags itsItems;
      StreamError itsError;
   } kCases[] = {
       {"header cut in the second item",
        kSequence + kItemOfUndefinedLength + kFirst + kItemDelimiter + kItemOfUndefinedLength + kFirst +
            First(kSecond, 4),
        {{0x00081150}, {0x00081150}},
        {"ExplicitInputTransferSyntax::NextVR(): EOF while reading type code", TN_END_OF_FILE, 0}},
       {"no item",
        kSequence + kItemOfUndefinedLength + kFirst + kItemDelimiter + kFirst,
        {{0x00081150}},
        {"DICOMDataObjectInputStreamVR::NextDICOMDataObject(): Expected VRInputStreamVR but got (0008, 1150) instead",
         TN_INVALID_DELIMITER, 0}},
       {"two creators for one block",
        kSequence + kItemOfUndefinedLength + kCreator + kOther + kItemDelimiter + kSequenceDelimiter,
        {{0x00090010}},
        {"DICOMDataObjectInputStreamVR::GetVR(): error while saving VR to DICOMDataObject", TN_PARSE_TO_OBJECT_FAILED,
         0}},
       {"failing in a sequence within",
        kSequence + kItemOfUndefinedLength + kFirst + kSequence + kItemOfUndefinedLength + kSecond + First(kFirst, 9),
        {{0x00081140, 0x00081150}},
        {ShortValue(1, 2, "0008, 1150", "UI"), TN_END_OF_FILE, 0}},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      SequenceInStream aSequence(aCase.itsBytes);
      std::exception_ptr aFailure;
      const std::unique_ptr<VR> aBuilt = aSequence->Materialise(aFailure);
      ASSERT_NE(aBuilt, nullptr);
      EXPECT_EQ(ItemsOf(*aBuilt), aCase.itsItems);
      ASSERT_TRUE(aFailure);
      EXPECT_TRUE(aSequence->IsEmpty()) << "what stands behind a failure is no item";
      EXPECT_EQ(StreamErrorOf([&] { std::rethrow_exception(aFailure); }), aCase.itsError);

      SequenceInStream anOther(aCase.itsBytes);
      EXPECT_EQ(StreamErrorOf([&] { anOther->GetVR(); }), aCase.itsError);
      EXPECT_EQ(anOther->GetVR(), nullptr) << "gone";
   }
}

TEST(VRInputStreamVR, KnowsItsEndWhenItIsMet)
{
   SequenceInStream aSequence(kSequence + Bytes{0xFE, 0xFF, 0x00, 0xE0, 0x0A, 0x00, 0x00, 0x00} + kFirst +
                              kItemOfUndefinedLength);
   std::unique_ptr<VRInputStreamVR> anItem(aSequence->NextDICOMDataObject());
   EXPECT_TRUE(std::unique_ptr<VR>(anItem->NextVR()));
   EXPECT_TRUE(anItem->HasMoreData()) << "the end is not known before it is met";
   EXPECT_EQ(anItem->NextVR(), nullptr);
   EXPECT_FALSE(anItem->HasMoreData());
   EXPECT_EQ(anItem->NextVR(), nullptr);
}

TEST(VRInputStreamVR, TakesOneElementBackUntilItHasEnded)
{
   SequenceInStream aSequence(kSequence + kItemOfUndefinedLength + kFirst + kItemDelimiter + kSequenceDelimiter);
   const std::unique_ptr<VRInputStreamVR> anItem(aSequence->NextDICOMDataObject());
   VR* const anElement = anItem->NextVR();
   anItem->Pushback(anElement);
   EXPECT_EQ(StreamErrorOf([&] { anItem->Pushback(new VR); }),
             (StreamError{"ExplicitInputTransferSyntax::Pushback(VR*): unable to do pushback", TN_INTERNAL_ERROR, 0}));
   EXPECT_EQ(std::unique_ptr<VR>(anItem->NextVR()).get(), anElement);
   EXPECT_EQ(anItem->NextVR(), nullptr);
   EXPECT_EQ(StreamErrorOf([&] { anItem->Pushback(new VR); }),
             (StreamError{"VRInputStreamVR::Pushback(VR*): unable to do pushback", TN_INTERNAL_ERROR, 0}));
}

TEST(VRInputStreamVR, OutsideASequenceIsNoElementOfADataset)
{
   PiecewiseInputStream aStream(kItemOfUndefinedLength + kFirst + kItemDelimiter);
   const std::unique_ptr<InputTransferSyntax> aDecoder = MakeDecoder(kLEE, aStream);
   DICOMDataObject anObject;
   EXPECT_FALSE(anObject.Push(aDecoder->NextVR()));
   EXPECT_EQ(anObject.Entries(), 0u);
}
} // namespace

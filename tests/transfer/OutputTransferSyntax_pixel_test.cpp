// Pixel data and its fragments, and what cannot be written.
#include "talvenor/transfer/OutputTransferSyntax.h"

#include <gtest/gtest.h>
#include <memory>

#include "support/Encoders.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/transfer/EncapsulationFragmentWriter.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
using namespace std::string_literals;
using namespace Encoders;

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
      ExpectBytes(Transcode(kExplicit, kBigEndian, aLittle.Bytes()), aBig.Bytes());
      ExpectBytes(Transcode(kBigEndian, kExplicit, aBig.Bytes()), aLittle.Bytes());
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
      ExpectBytes(
          Encode(TransferSyntaxType::TSRLEUID, [&](OutputTransferSyntax& theEncoder) { theEncoder.SaveVR(*aPixels); }),
          anExpected.Bytes(), aCase.itsName);
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
   ExpectBytes(Encode(TransferSyntaxType::TSLEExplicitUID,
                      [&](OutputTransferSyntax& theEncoder) {
                         theEncoder.SaveVR(*aFull);
                         theEncoder.SaveVR(*anEmpty);
                      }),
               anExpected.Bytes());
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
      ExpectBytes(Encode(aCase.itsSyntax,
                         [](OutputTransferSyntax& theEncoder) {
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
                         }),
                  anExpected.Bytes(), aCase.itsSyntax);
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
} // namespace

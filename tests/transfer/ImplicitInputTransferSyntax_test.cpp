// Decoding of implicit VR (PS3.5 7.1.3). What it shares with explicit VR is tested there.
#include "talvenor/transfer/ImplicitInputTransferSyntax.h"

#include <gtest/gtest.h>

#include "support/CapturedErrorLog.h"
#include "support/Decoding.h"
#include "support/DefaultDictionary.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MPrivateDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/transfer/TransferSyntaxTypes.h"

namespace
{
const RWCString& kLEI = TransferSyntaxType::TSLEImplicitUID;
const std::string kNext = "ImplicitInputTransferSyntax::NextVR(): ";

const char kDictionary[] = "0008,0005,CS,\"Specific Character Set\",SpecificCharacterSet,1,1\n"
                           "0008,1140,SQ,\"Referenced Image Sequence\",ReferencedImageSequence,1,1\n"
                           "0028,0103,US,\"Pixel Representation\",PixelRepresentation,1,1\n"
                           "0028,0106,US,\"Smallest Image Pixel Value\",SmallestImagePixelValue,1,1\n";

const Bytes kElement = {
    0x08, 0x00, 0x05, 0x00, // tag
    0x04, 0x00, 0x00, 0x00, // length
    'I',  'S',  'O',  ' ',  // value
};
const Bytes kSequenceOfUndefinedLength = {0x08, 0x00, 0x40, 0x11, 0xFF, 0xFF, 0xFF, 0xFF};

Bytes Tag(UINT32 theTag)
{
   return {static_cast<unsigned char>(theTag >> 16), static_cast<unsigned char>(theTag >> 24),
           static_cast<unsigned char>(theTag), static_cast<unsigned char>(theTag >> 8)};
}

// An element with a value of two bytes.
Bytes Word(UINT32 theTag, unsigned char theLow, unsigned char theHigh = 0)
{
   return Tag(theTag) + Bytes{0x02, 0x00, 0x00, 0x00, theLow, theHigh};
}

class ImplicitInputTransferSyntaxTest : public ::testing::Test
{
protected:
   const DefaultDictionary itsDictionary{kDictionary};
};

TEST_F(ImplicitInputTransferSyntaxTest, SaysWhereAnElementIsCut)
{
   const std::string kHeaderEnd = kNext + "EOF while reading element code or length";
   const std::string kErrors[] = {ShortRead("ReadGroup", 1, "itsGroup"),     kHeaderEnd,
                                  ShortRead("ReadElement", 1, "itsElement"), kHeaderEnd,
                                  ShortRead("ReadLength32", 1, "UINT32"),    ShortRead("ReadLength32", 2, "UINT32"),
                                  ShortRead("ReadLength32", 3, "UINT32"),    kNext + "EOF before all of data read",
                                  ShortValue(1, 4, "0008, 0005", "CS"),      ShortValue(2, 4, "0008, 0005", "CS"),
                                  ShortValue(3, 4, "0008, 0005", "CS")};
   ASSERT_EQ(std::size(kErrors), kElement.size() - 1);
   for (std::size_t aCut = 1; aCut < kElement.size(); ++aCut)
   {
      const StreamError anExpected = {kErrors[aCut - 1], TN_END_OF_FILE, 0};
      EXPECT_EQ(Decode(kLEI, First(kElement, aCut)).itsError, anExpected) << aCut;
      EXPECT_EQ(DecodeInPieces(kLEI, First(kElement, aCut), 1).itsError, anExpected) << aCut;
      const Bytes aDelimiter = First(kSequenceDelimiter, std::min<std::size_t>(aCut, 7));
      EXPECT_EQ(Decode(kLEI, aDelimiter).itsError.itsMessage, kErrors[aDelimiter.size() - 1]);
   }
}

TEST_F(ImplicitInputTransferSyntaxTest, TypesElementsByTheDictionary)
{
   ExpectDecoded({
       {"listed", kLEI, kElement, "00080005 CS 49534F20"},
       {"not listed", kLEI, Word(0x00080006, 'A', 'B'), "00080006 UN 4142"},
       {"group length", kLEI, Tag(0x00080000) + Bytes{4, 0, 0, 0, 1, 2, 3, 4}, "00080000 UN 01020304"},
       {"private creator", kLEI, Word(0x00090010, 'A', 'B'), "00090010 LO 4142"},
       {"private, of nobody known", kLEI, Word(0x00091010, 'A', 'B'), "00091010 UN 4142"},
       {"odd length", kLEI, Tag(0x00080005) + Bytes{1, 0, 0, 0, 'A'}, "00080005 CS 41"},
       {"native pixels", kLEI, Tag(0x7FE00010) + Bytes{4, 0, 0, 0, 1, 2, 3, 4}, "7FE00010 OW pixels 01020304"},
       {"sequence of defined length", kLEI, Tag(0x00081140) + Bytes{20, 0, 0, 0} + ItemOf(12, kElement) + kElement,
        "00081140 SQ(20) { item(12) { 00080005 CS 49534F20 } }; 00080005 CS 49534F20"},
       {"sequence of undefined length", kLEI,
        kSequenceOfUndefinedLength + kItemOfUndefinedLength + kElement + kItemDelimiter + ItemOf(0, {}) +
            kSequenceDelimiter + kElement,
        "00081140 SQ(u) { item(u) { 00080005 CS 49534F20 } item(0) {  } }; 00080005 CS 49534F20"},
       {"what is not listed is a sequence if its length is undefined", kLEI,
        Tag(0x00091010) + Bytes{0xFF, 0xFF, 0xFF, 0xFF} + ItemOf(12, kElement) + kSequenceDelimiter,
        "00091010 SQ(u) { item(12) { 00080005 CS 49534F20 } }"},
   });
}

TEST_F(ImplicitInputTransferSyntaxTest, RefusesWhatCannotBe)
{
   const struct
   {
      const char* itsName;
      Bytes itsBytes;
      StreamError itsError;
   } kCases[] = {
       {"text of undefined length",
        Tag(0x00080005) + Bytes{0xFF, 0xFF, 0xFF, 0xFF},
        {kNext + "Undefined length (0xffffffff) invalid for VR type CS (type from data dictionary)",
         TN_INVALID_ELEMENT_HEADER, 0}},
       {"an ambiguous type of undefined length",
        Tag(0x00283006) + Bytes{0xFF, 0xFF, 0xFF, 0xFF},
        {kNext + "Undefined length (0xffffffff) invalid for VR type OW (type from data dictionary)",
         TN_INVALID_ELEMENT_HEADER, 0}},
       {"an unknown delimiter",
        Tag(0xFFFEE00C) + Bytes{0x10, 0, 0, 0},
        {kNext + "Expected seq. item start tag but got (fffe, e00c) with length 10", TN_INVALID_DELIMITER, 0}},
       {"encapsulated pixels",
        Tag(0x7FE00010) + Bytes{0xFF, 0xFF, 0xFF, 0xFF},
        {kNext + "Encapsulated pixel data element invalid for this syntax type", TN_INVALID_ENCODING, 0}},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(Decode(kLEI, aCase.itsBytes).itsError, aCase.itsError) << aCase.itsName;
   }
}

// PS3.5 A.1: what may be US or SS follows Pixel Representation, and the tables of colours are words.
TEST_F(ImplicitInputTransferSyntaxTest, SettlesAmbiguousTypes)
{
   const UINT32 kBySign[] = {0x00280106, 0x00280107, 0x00280108, 0x00280109, 0x00280110, 0x00280111,
                             0x00280120, 0x00281101, 0x00281102, 0x00281103, 0x00281111, 0x00281112,
                             0x00281113, 0x00283002, 0x00409211, 0x00409216, 0x00609211, 0x00609216};
   const UINT32 kWords[] = {0x00283006, 0x54000110, 0x54000112, 0x5400100A, 0x54001010};
   const auto aType = [](UINT32 theTag, bool theIsSigned) {
      const Bytes aFlag = theIsSigned ? Word(0x00280103, 1) : Bytes();
      const std::string aText = Decode(kLEI, aFlag + Word(theTag, 0xFF)).itsText;
      return aText.substr(aText.rfind("FF00") - 3, 2);
   };
   for (const UINT32 aTag : kBySign)
   {
      EXPECT_EQ(aType(aTag, false), "US") << std::hex << aTag;
      EXPECT_EQ(aType(aTag, true), "SS") << std::hex << aTag;
   }
   for (const UINT32 aTag : kWords)
   {
      EXPECT_EQ(aType(aTag, false), "OW") << std::hex << aTag;
      EXPECT_EQ(aType(aTag, true), "OW") << std::hex << aTag;
   }
   EXPECT_EQ(aType(0x00280121, true), "UN") << "between two rows";
}

TEST_F(ImplicitInputTransferSyntaxTest, HoldsPixelRepresentationForWhatFollowsAtItsLevel)
{
   const Bytes kSmallest = Word(0x00280106, 5);
   const struct
   {
      const char* itsName;
      Bytes itsBytes;
      const char* itsText;
   } kCases[] = {
       {"not for what came before", kSmallest + Word(0x00280103, 1) + kSmallest,
        "00280106 US 0500; 00280103 US 0100; 00280106 SS 0500"},
       {"unsigned", Word(0x00280103, 0) + kSmallest, "00280103 US 0000; 00280106 US 0500"},
       {"any value but 0", Word(0x00280103, 0, 2) + kSmallest, "00280103 US 0002; 00280106 SS 0500"},
       {"the first value counts", Tag(0x00280103) + Bytes{4, 0, 0, 0, 0, 0, 1, 0} + kSmallest,
        "00280103 US 00000100; 00280106 US 0500"},
       {"no whole value", Tag(0x00280103) + Bytes{1, 0, 0, 0, 1} + kSmallest, "00280103 US 01; 00280106 US 0500"},
       {"never cleared", Word(0x00280103, 1) + Word(0x00280103, 0) + kSmallest,
        "00280103 US 0100; 00280103 US 0000; 00280106 SS 0500"},
       {"not in items",
        Word(0x00280103, 1) + kSequenceOfUndefinedLength + ItemOf(10, kSmallest) + kSequenceDelimiter + kSmallest,
        "00280103 US 0100; 00081140 SQ(u) { item(10) { 00280106 US 0500 } }; 00280106 SS 0500"},
       {"not out of items",
        kSequenceOfUndefinedLength + ItemOf(20, Word(0x00280103, 1) + kSmallest) + kSequenceDelimiter + kSmallest,
        "00081140 SQ(u) { item(20) { 00280103 US 0100; 00280106 SS 0500 } }; 00280106 US 0500"},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(Decode(kLEI, aCase.itsBytes).itsText, aCase.itsText) << aCase.itsName;
   }
}

TEST_F(ImplicitInputTransferSyntaxTest, CanBeToldThePixelRepresentationAndTakesOneElementBack)
{
   PiecewiseInputStream aStream(Word(0x00280106, 5));
   const std::unique_ptr<InputTransferSyntax> aMade = MakeDecoder(kLEI, aStream);
   auto& anImplicit = dynamic_cast<ImplicitInputTransferSyntax&>(*aMade);
   anImplicit.SetSignedPixelRepresentation(true);
   VR* const anElement = aMade->NextVR();
   EXPECT_EQ(anElement->GetTypeCodeAsString(), "SS");
   aMade->Pushback(anElement);
   const StreamError aRefusal = {"ImplicitInputTransferSyntax::Pushback(VR*): unable to do pushback", TN_INTERNAL_ERROR,
                                 0};
   EXPECT_EQ(StreamErrorOf([&] { aMade->Pushback(new VR(0x0008, 0x0007)); }), aRefusal);
   EXPECT_EQ(std::unique_ptr<VR>(aMade->NextVR()).get(), anElement);
}

TEST_F(ImplicitInputTransferSyntaxTest, StopsBehindTheLengthOfTheLimit)
{
   const auto Stopped = [](const Bytes& theBytes) {
      return Decode(kLEI, theBytes, [](InputTransferSyntax& theDecoder) {
         theDecoder.SetStopAtGroup(0x7FE0);
         theDecoder.SetStopAtElement(0x0010);
      });
   };
   const Decoded aStopped = Stopped(kElement + Tag(0x7FE00010) + Bytes{4, 0, 0, 0, 1, 2, 3, 4});
   EXPECT_EQ(aStopped.itsText, "00080005 CS 49534F20");
   EXPECT_EQ(aStopped.itsEnd, InputTransferSyntax::AtStopLimit);
   EXPECT_EQ(aStopped.itsConsumed, kElement.size() + 8);
   const Decoded aPassed = Stopped(Word(0x7FE10005, 1));
   EXPECT_EQ(aPassed.itsText, "7FE10005 UN 0100") << "an element below the limit in a higher group";
   EXPECT_EQ(aPassed.itsEnd, InputTransferSyntax::AtEndOfStream);
}

// The dictionary that a host installs knows its own attributes and the creators of the dataset; items start anew from
// the default dictionary.
TEST_F(ImplicitInputTransferSyntaxTest, LooksUpInTheInstalledDictionaryExceptInItems)
{
   MDataDictionary aPublic;
   std::istringstream aText("0008,0006,DS,\"Example\",Example,1,1\n0008,1140,SQ,\"Sequence\",Sequence,1,1\n");
   ASSERT_TRUE(aPublic.Load(aText));
   PrivateDataDictionaryCatalog aCatalog;
   std::istringstream aPrivateText("PrivateCreator = ACME\n0029,0010,IS,\"Private\",Private,1,1\n");
   ASSERT_TRUE(aCatalog.Add(new MPrivateDataDictionary(aPrivateText)));
   InstanceSpecificDataDictionary anInstalled(aPublic, aCatalog);
   anInstalled.RegisterPrivateCreator("ACME", MAttributeTag(0x0029, 0x0010));
   const Bytes kElements = Word(0x00080006, 1) + Word(0x00291010, 1);
   const Bytes kBytes = kElements + kSequenceOfUndefinedLength + ItemOf(20, kElements) + kSequenceDelimiter;
   EXPECT_EQ(Decode(kLEI, kBytes, [&](InputTransferSyntax& theDecoder) { theDecoder.SetDataDictionary(anInstalled); })
                 .itsText,
             "00080006 DS 0100; 00291010 IS 0100; "
             "00081140 SQ(u) { item(20) { 00080006 UN 0100; 00291010 UN 0100 } }");
}

TEST_F(ImplicitInputTransferSyntaxTest, WritesWhichElementItsHeaderFailsInToTheErrorLog)
{
   const CapturedErrorLog aLog;
   Decode(kLEI, First(kElement, 4));
   EXPECT_NE(aLog.Text().find("\n" + kNext +
                              "Exception while reading group code, element code or length while reading VR # 1\n"),
             std::string::npos)
       << aLog.Text();
}
} // namespace

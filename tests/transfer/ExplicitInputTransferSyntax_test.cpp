// Decoding of explicit VR (PS3.5 7.1.2), and what all decoders have in common.
#include "talvenor/transfer/ExplicitInputTransferSyntax.h"

#include <gtest/gtest.h>

#include "support/CapturedErrorLog.h"
#include "support/Decoding.h"
#include "support/DefaultDictionary.h"
#include "talvenor/transfer/TransferSyntaxTypes.h"

namespace
{
const RWCString& kLEE = TransferSyntaxType::TSLEExplicitUID;
const RWCString& kBEE = TransferSyntaxType::TSBEExplicitUID;

const std::string kClass = "ExplicitInputTransferSyntax::";

StreamError EndOfFile(const std::string& theText)
{
   return {theText, TN_END_OF_FILE, 0};
}

StreamError NextError(const std::string& theText, TNResultCode theCode)
{
   return {kClass + "NextVR(): " + theText, theCode, 0};
}

const Bytes kShortElement = {
    0x08, 0x00, 0x05, 0x00, // tag
    'C',  'S',              // value representation
    0x04, 0x00,             // 16-bit length
    'I',  'S',  'O',  ' ',  // value
};
const Bytes kLongElement = {
    0x08, 0x00, 0x06, 0x00, // tag
    'O',  'B',              // value representation
    0xAA, 0x55,             // reserved, ignored
    0x02, 0x00, 0x00, 0x00, // 32-bit length
    0x01, 0x02,             // value
};
const Bytes kSequenceOfUndefinedLength = {
    0x08, 0x00, 0x40, 0x11, // tag
    'S',  'Q',  0x00, 0x00, // value representation, reserved
    0xFF, 0xFF, 0xFF, 0xFF, // length
};

Bytes Sequence(unsigned char theLength, const Bytes& theContent)
{
   return Bytes{0x08, 0x00, 0x40, 0x11, 'S', 'Q', 0x00, 0x00, theLength, 0x00, 0x00, 0x00} + theContent;
}

TEST(ExplicitInputTransferSyntax, SaysWhereAnElementIsCut)
{
   const std::string kDataEnd = kClass + "NextVR(): EOF before all of data read";
   const std::string kNext = kClass + "NextVR(): ";
   const struct
   {
      const char* itsName;
      Bytes itsElement;
      std::vector<std::string> itsErrors; // for 1, 2, ... bytes
   } kCases[] = {
       {"16-bit length",
        kShortElement,
        {ShortRead("ReadGroup", 1, "itsGroup"), kNext + "EOF while reading element code",
         ShortRead("ReadElement", 1, "itsElement"), kNext + "EOF while reading type code",
         ShortRead("ReadTypeCode", 1, "itsTypeCode"), kNext + "EOF while reading element length",
         ShortRead("ReadLength16", 1, "UINT16"), kDataEnd, ShortValue(1, 4, "0008, 0005", "CS"),
         ShortValue(2, 4, "0008, 0005", "CS"), ShortValue(3, 4, "0008, 0005", "CS")}},
       {"32-bit length",
        kLongElement,
        {ShortRead("ReadGroup", 1, "itsGroup"), kNext + "EOF while reading element code",
         ShortRead("ReadElement", 1, "itsElement"), kNext + "EOF while reading type code",
         ShortRead("ReadTypeCode", 1, "itsTypeCode"), kNext + "EOF while reading 2 reserved filler bytes",
         ShortRead("ReadFiller16", 1, "UINT16"), kNext + "EOF while reading element length",
         ShortRead("ReadLength32", 1, "UINT32"), ShortRead("ReadLength32", 2, "UINT32"),
         ShortRead("ReadLength32", 3, "UINT32"), kDataEnd, ShortValue(1, 2, "0008, 0006", "OB")}},
       {"delimiter",
        kSequenceDelimiter,
        {ShortRead("ReadGroup", 1, "itsGroup"), kNext + "EOF while reading element code",
         ShortRead("ReadElement", 1, "itsElement"), kNext + "EOF while reading element length",
         ShortRead("ReadLength32", 1, "UINT32"), ShortRead("ReadLength32", 2, "UINT32"),
         ShortRead("ReadLength32", 3, "UINT32")}},
   };
   const PrepareDecoder kPreparations[] = {{}, [](InputTransferSyntax& theDecoder) {
                                              theDecoder.SetStopAtGroup(0xFFFF); // a limit not reached
                                           }};
   for (const auto& aCase : kCases)
   {
      ASSERT_EQ(aCase.itsErrors.size(), aCase.itsElement.size() - 1) << aCase.itsName;
      for (const PrepareDecoder& aPreparation : kPreparations)
      {
         for (std::size_t aCut = 1; aCut < aCase.itsElement.size(); ++aCut)
         {
            SCOPED_TRACE(std::string(aCase.itsName) + " cut after " + std::to_string(aCut));
            const Decoded aResult = Decode(kLEE, First(aCase.itsElement, aCut), aPreparation);
            EXPECT_EQ(aResult.itsError, EndOfFile(aCase.itsErrors[aCut - 1]));
            EXPECT_EQ(aResult.itsText, "");
            EXPECT_EQ(DecodeInPieces(kLEE, First(aCase.itsElement, aCut), 1, aPreparation), aResult);
         }
      }
   }
}

TEST(ExplicitInputTransferSyntax, ReadsHeadersByTheirValueRepresentation)
{
   ExpectDecoded({
       {"nothing", kLEE, {}, ""},
       {"two elements", kLEE, kShortElement + kLongElement, "00080005 CS 49534F20; 00080006 OB 0102"},
       {"big endian, 16-bit length",
        kBEE,
        {0x00, 0x08, 0x00, 0x05, 'C', 'S', 0x00, 0x02, 'A', 'B'},
        "00080005 CS 4142"},
       {"an unknown representation takes 16 bits of length",
        kLEE,
        {0x09, 0x00, 0x10, 0x00, 'X', 'X', 0x02, 0x00, 'A', 'B'},
        "00090010 XX 4142"},
       {"OF", kLEE, {0x08, 0x00, 0x05, 0x00, 'O', 'F', 0, 0, 0x01, 0, 0, 0, 0x07}, "00080005 OF 07"},
       {"no value", kLEE, {0x08, 0x00, 0x05, 0x00, 'C', 'S', 0, 0}, "00080005 CS"},
       {"an odd length", kLEE, {0x08, 0x00, 0x05, 0x00, 'C', 'S', 3, 0, 'A', 'B', 'C'}, "00080005 CS 414243"},
       {"native pixels",
        kBEE,
        {0x7F, 0xE0, 0x00, 0x10, 'O', 'W', 0, 0, 0, 0, 0, 4, 1, 2, 3, 4},
        "7FE00010 OW pixels 01020304"},
       {"native pixels of odd length",
        kLEE,
        {0xE0, 0x7F, 0x10, 0x00, 'O', 'B', 0, 0, 5, 0, 0, 0, 1, 2, 3, 4, 5},
        "7FE00010 OB pixels 010203040500"},
       {"pixels in a short header", kLEE, {0xE0, 0x7F, 0x10, 0x00, 'U', 'S', 2, 0, 1, 2}, "7FE00010 US pixels 0102"},
       {"encapsulated pixels", kLEE,
        Bytes{0xE0, 0x7F, 0x10, 0x00, 'O', 'B', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF} + ItemOf(0, {}) +
            ItemOf(2, {0xFF, 0xD8}) + kSequenceDelimiter,
        "7FE00010 OB fragments [] [FFD8]"},
   });
}

TEST(ExplicitInputTransferSyntax, ReadsSequencesAndItemsOfEitherLength)
{
   const Bytes kUndefined = kSequenceOfUndefinedLength + kItemOfUndefinedLength + kShortElement + kItemDelimiter +
                            kItemOfUndefinedLength + kItemDelimiter + kSequenceDelimiter + kLongElement;
   ExpectDecoded({
       {"undefined", kLEE, kUndefined,
        "00081140 SQ(u) { item(u) { 00080005 CS 49534F20 } item(u) {  } }; 00080006 OB 0102"},
       {"defined", kLEE, Sequence(28, ItemOf(12, kShortElement) + ItemOf(0, {})) + kLongElement,
        "00081140 SQ(28) { item(12) { 00080005 CS 49534F20 } item(0) {  } }; 00080006 OB 0102"},
       {"empty", kLEE, Sequence(0, {}) + kLongElement, "00081140 SQ(0) { }; 00080006 OB 0102"},
       {"sequence in a sequence", kLEE,
        Sequence(40, ItemOf(32, Sequence(20, ItemOf(12, kShortElement)))) + kLongElement,
        "00081140 SQ(40) { item(32) { 00081140 SQ(20) { item(12) { 00080005 CS 49534F20 } } } }; 00080006 OB 0102"},
       {"an item of defined length with a delimiter in it: the rest is skipped", kLEE,
        Sequence(28, ItemOf(20, kItemDelimiter + kShortElement)) + kLongElement,
        "00081140 SQ(28) { item(20) {  } }; 00080006 OB 0102"},
       {"a sequence of defined length with a delimiter in it: the rest is skipped", kLEE,
        Sequence(28, kSequenceDelimiter + ItemOf(12, kShortElement)) + kLongElement,
        "00081140 SQ(28) { }; 00080006 OB 0102"},
       {"the length of a delimiter is ignored", kLEE,
        kSequenceOfUndefinedLength + Bytes{0xFE, 0xFF, 0xDD, 0xE0, 0x04, 0, 0, 0} + kLongElement,
        "00081140 SQ(u) { }; 00080006 OB 0102"},
       {"pixels of an icon", kLEE,
        Sequence(22, ItemOf(14, {0xE0, 0x7F, 0x10, 0x00, 'O', 'B', 0, 0, 2, 0, 0, 0, 1, 2})) + kLongElement,
        "00081140 SQ(22) { item(14) { 7FE00010 OB pixels 0102 } }; 00080006 OB 0102"},
       {"an item without a sequence", kLEE, ItemOf(12, kShortElement) + kLongElement,
        "item(12) { 00080005 CS 49534F20 }; 00080006 OB 0102"},
   });
}

// UN is what a writer puts for what it does not know (PS3.5 6.2.2); undefined lengths under UN are sequences in
// implicit VR little endian, whatever the syntax around them.
TEST(ExplicitInputTransferSyntax, TypesUnknownElementsByTheDictionary)
{
   const DefaultDictionary aDictionary("0008,0005,CS,\"Specific Character Set\",SpecificCharacterSet,1,1\n"
                                       "0008,1140,SQ,\"Referenced Image Sequence\",ReferencedImageSequence,1,1\n");
   const Bytes kImplicitItem = {
       0xFE, 0xFF, 0x00, 0xE0, 0x0A, 0x00, 0x00, 0x00, // item of 10 bytes
       0x08, 0x00, 0x05, 0x00, 0x02, 0x00, 0x00, 0x00, // (0008,0005), 32-bit length
       'A',  'B',
   };
   ExpectDecoded({
       {"listed", kLEE, {0x08, 0x00, 0x05, 0x00, 'U', 'N', 0, 0, 2, 0, 0, 0, 'A', 'B'}, "00080005 CS 4142"},
       {"not listed", kLEE, {0x08, 0x00, 0x06, 0x00, 'U', 'N', 0, 0, 2, 0, 0, 0, 'A', 'B'}, "00080006 UN 4142"},
       {"a private creator", kLEE, {0x09, 0x00, 0x10, 0, 'U', 'N', 0, 0, 2, 0, 0, 0, 'A', 'B'}, "00090010 LO 4142"},
       {"listed as a sequence", kLEE, Bytes{0x08, 0x00, 0x40, 0x11, 'U', 'N', 0, 0, 18, 0, 0, 0} + kImplicitItem,
        "00081140 SQ(18) { item(10) { 00080005 CS 4142 } }"},
       {"undefined length, not listed", kLEE,
        Bytes{0x09, 0x00, 0x01, 0x10, 'U', 'N', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF} + kImplicitItem + kSequenceDelimiter +
            kShortElement,
        "00091001 SQ(u) { item(10) { 00080005 CS 4142 } }; 00080005 CS 49534F20"},
       {"little endian even in big endian", kBEE,
        Bytes{0x00, 0x09, 0x10, 0x01, 'U', 'N', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF} + kImplicitItem + kSequenceDelimiter +
            Bytes{0x00, 0x08, 0x00, 0x05, 'C', 'S', 0x00, 0x02, 'A', 'B'},
        "00091001 SQ(u) { item(10) { 00080005 CS 4142 } }; 00080005 CS 4142"},
   });
}

TEST(ExplicitInputTransferSyntax, RefusesWhatCannotBe)
{
   const DefaultDictionary aDictionary("0008,0005,CS,\"Specific Character Set\",SpecificCharacterSet,1,1\n");
   const struct
   {
      const char* itsName;
      RWCString itsSyntax;
      Bytes itsBytes;
      StreamError itsError;
   } kCases[] = {
       {"bytes of undefined length",
        kLEE,
        {0x08, 0x00, 0x05, 0x00, 'O', 'B', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF},
        NextError("Undefined length (0xffffffff) invalid for VR type OB (type from data dictionary)",
                  TN_INVALID_ELEMENT_HEADER)},
       {"UN of undefined length that the dictionary types",
        kLEE,
        {0x08, 0x00, 0x05, 0x00, 'U', 'N', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF},
        NextError("Undefined length (0xffffffff) invalid for VR type CS (type from data dictionary)",
                  TN_INVALID_ELEMENT_HEADER)},
       {"an unknown delimiter, told without leading zeros",
        kBEE,
        {0xFF, 0xFE, 0x00, 0x0A, 0x00, 0x00, 0xAB, 0xCD},
        NextError("Expected seq. item start tag but got (fffe, a) with length abcd", TN_INVALID_DELIMITER)},
       {"encapsulated pixels in big endian",
        kBEE,
        {0x7F, 0xE0, 0x00, 0x10, 'O', 'B', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF},
        NextError("Encapsulated pixel data element encoded with big-endian explicit syntax type", TN_INVALID_ENCODING)},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const Decoded aResult = Decode(aCase.itsSyntax, aCase.itsBytes);
      EXPECT_EQ(aResult.itsError, aCase.itsError);
      EXPECT_EQ(DecodeInPieces(aCase.itsSyntax, aCase.itsBytes, 1), aResult);
   }
}

TEST(ExplicitInputTransferSyntax, EndsALevelAtAnyDelimiterAndAtPadding)
{
   const struct
   {
      const char* itsName;
      Bytes itsEnd;
      InputTransferSyntax::LevelEnd itsLevelEnd;
   } kCases[] = {
       {"item delimiter", kItemDelimiter, InputTransferSyntax::AtDelimiter},
       {"sequence delimiter", kSequenceDelimiter, InputTransferSyntax::AtDelimiter},
       {"padding", {0xFC, 0xFF, 0xFC, 0xFF, 'O', 'B', 0, 0, 4, 0, 0, 0, 1, 2, 3, 4}, InputTransferSyntax::AtPadding},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const Decoded aResult = Decode(kLEE, kShortElement + aCase.itsEnd + kLongElement);
      EXPECT_EQ(aResult.itsText, "00080005 CS 49534F20");
      EXPECT_EQ(aResult.itsEnd, aCase.itsLevelEnd);
      EXPECT_EQ(aResult.itsConsumed, kShortElement.size() + aCase.itsEnd.size()) << "nothing behind it is read";
      EXPECT_FALSE(aResult.itsIsCut);
   }
}

TEST(ExplicitInputTransferSyntax, StopsBehindTheTagOfTheLimit)
{
   const PrepareDecoder kStopAtPixels = [](InputTransferSyntax& theDecoder) {
      theDecoder.SetStopAtGroup(0x7FE0);
      theDecoder.SetStopAtElement(0x0010);
   };
   const Bytes kHigher = {0xE1, 0x7F, 0x05, 0x00, 'L', 'O', 0x00, 0x00}; // group above, element below the limit
   const struct
   {
      const char* itsName;
      Bytes itsBefore, itsRest;
      bool itsStops;
      const char* itsText;
   } kCases[] = {
       {"at the limit", kShortElement, {0xE0, 0x7F, 0x10, 0x00, 'O', 'W'}, true, "00080005 CS 49534F20"},
       {"element below it in a higher group", kHigher, {}, false, "7FE10005 LO"},
       {"padding", {}, {0xFC, 0xFF, 0xFC, 0xFF}, true, ""},
       {"a delimiter", {}, {0xFE, 0xFF, 0x0D, 0xE0}, true, ""},
       {"not in an item",
        kSequenceOfUndefinedLength + ItemOf(8, kHigher) + ItemOf(8, {0xE1, 0x7F, 0x10, 0x10, 'L', 'O', 0, 0}) +
            kSequenceDelimiter,
        {0xE0, 0x7F, 0x10, 0x00},
        true,
        "00081140 SQ(u) { item(8) { 7FE10005 LO } item(8) { 7FE11010 LO } }"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const Decoded aResult = Decode(kLEE, aCase.itsBefore + aCase.itsRest, kStopAtPixels);
      EXPECT_EQ(aResult.itsError, kNoStreamError);
      EXPECT_EQ(aResult.itsText, aCase.itsText);
      EXPECT_EQ(aResult.itsEnd == InputTransferSyntax::AtStopLimit, aCase.itsStops);
      EXPECT_EQ(aResult.itsConsumed, aCase.itsBefore.size() + (aCase.itsStops ? 4 : 0));
      EXPECT_EQ(DecodeInPieces(kLEE, aCase.itsBefore + aCase.itsRest, 1, kStopAtPixels), aResult);
   }
   for (const Bytes& aCutTag : {Bytes{0xFF, 0xFF}, Bytes{0xE0, 0x7F, 0x10}}) // whatever would have followed
   {
      EXPECT_EQ(Decode(kLEE, aCutTag, kStopAtPixels).itsError.itsCode, TN_END_OF_FILE);
   }
}

TEST(ExplicitInputTransferSyntax, TakesOneElementBack)
{
   PiecewiseInputStream aStream(kShortElement + kLongElement);
   const std::unique_ptr<InputTransferSyntax> aDecoder = MakeDecoder(kLEE, aStream);
   VR* const aFirst = aDecoder->NextVR();
   aDecoder->SetStopAtGroup(0x0008); // does not hold for what is handed back
   aDecoder->Pushback(aFirst);
   const StreamError anExpected = {"ExplicitInputTransferSyntax::Pushback(VR*): unable to do pushback",
                                   TN_INTERNAL_ERROR, 0};
   EXPECT_EQ(StreamErrorOf([&] { aDecoder->Pushback(new VR(0x0008, 0x0007)); }), anExpected);
   const std::unique_ptr<VR> anAgain(aDecoder->NextVR());
   EXPECT_EQ(anAgain.get(), aFirst);
   EXPECT_EQ(aDecoder->NextVR(), nullptr);
   EXPECT_TRUE(aDecoder->IsAtStopAtLimit());
   aDecoder->Pushback(new VR(0x0008, 0x0007)); // goes with the decoder
}

// Every way in which a dataset can end too early, and where it is said to be.
TEST(ExplicitInputTransferSyntax, TellsACutFromAnEnd)
{
   const Bytes kOpenItem = kSequenceOfUndefinedLength + kItemOfUndefinedLength;
   const struct
   {
      const char* itsName;
      Bytes itsBytes;
      const char* itsPath;
      bool itsFails = false; // instead of being cut between two elements
   } kCases[] = {
       {"no sequence delimiter", kSequenceOfUndefinedLength, "/0008,1140"},
       {"no item delimiter in the second item",
        kSequenceOfUndefinedLength + ItemOf(0, {}) + kItemOfUndefinedLength + kShortElement, "/0008,1140[1]"},
       {"nested", kOpenItem + kOpenItem + kItemDelimiter + kItemOfUndefinedLength, "/0008,1140[0]/0008,1140[1]"},
       {"an item shorter than stated", kSequenceOfUndefinedLength + ItemOf(24, kShortElement), "/0008,1140[0]"},
       {"a sequence shorter than stated", Sequence(40, ItemOf(12, kShortElement)), "/0008,1140"},
       {"an item longer than its sequence", Sequence(20, ItemOf(24, kShortElement)) + kLongElement, "/0008,1140[0]"},
       {"an open item in a sequence of defined length", Sequence(20, kItemOfUndefinedLength + kShortElement),
        "/0008,1140[0]"},
       {"an item that ends at a delimiter before the rest of its length",
        kSequenceOfUndefinedLength + ItemOf(24, kItemDelimiter), "/0008,1140[0]"},
       {"failure at top level", First(kShortElement, 5), "", true},
       {"failure in an item",
        kSequenceOfUndefinedLength + ItemOf(0, {}) + kItemOfUndefinedLength + First(kShortElement, 9), "/0008,1140[1]",
        true},
       {"failure between items", kSequenceOfUndefinedLength + First(kItemDelimiter, 3), "/0008,1140", true},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const Decoded aResult = Decode(kLEE, aCase.itsBytes);
      EXPECT_EQ(aResult.itsError != kNoStreamError, aCase.itsFails);
      EXPECT_TRUE(aResult.itsIsCut || aCase.itsFails);
      EXPECT_EQ(aResult.itsFaultPath, aCase.itsPath);
   }
}

TEST(ExplicitInputTransferSyntax, WritesFailuresToTheErrorLog)
{
   const std::string kLong = kClass + "NextVR(): ";
   const struct
   {
      const char* itsName;
      Bytes itsBytes;
      std::string itsLine;
   } kCases[] = {
       {"header", First(kShortElement, 4),
        kLong + "Exception while reading group code, element code or length: (Errno = 0) StreamIOException: "
                "ResultCode = "},
       {"value, part of it", First(kShortElement, 9),
        kLong + "I/O Exception while reading VR data: StreamIOException: ResultCode = "},
       {"value, nothing of it", First(kShortElement, 8), kLong + "EOF before all 4 bytes of data read\n"},
       {"undefined length",
        {0x08, 0x00, 0x05, 0x00, 'O', 'B', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF},
        kLong + "Undefined length (0xffffffff) invalid for VR type OB (type from data dictionary)\n"},
   };
   for (const auto& aCase : kCases)
   {
      const CapturedErrorLog aLog;
      Decode(kLEE, aCase.itsBytes);
      EXPECT_NE(aLog.Text().find("\n" + aCase.itsLine), std::string::npos) << aCase.itsName << ":\n" << aLog.Text();
   }
}

// 256 sequences within each other are more than anybody writes; without a limit the next file overflows the stack. What
// nobody can type nests as deep: under UN all of it is implicit.
TEST(ExplicitInputTransferSyntax, LimitsHowDeepSequencesNest)
{
   const StreamError kTooDeep = {"InputTransferSyntax::NextVR(): sequences nested deeper than 256 levels",
                                 TN_INVALID_ELEMENT_HEADER, 0};
   const Bytes kUnknown = {0x09, 0x00, 0x01, 0x10, 'U', 'N', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};
   const Bytes kImplicit = {0x09, 0x00, 0x01, 0x10, 0xFF, 0xFF, 0xFF, 0xFF};
   const struct
   {
      const char* itsName;
      Bytes itsFirst, itsOthers;
      int itsTooMany;
   } kCases[] = {
       {"sequences", {}, kSequenceOfUndefinedLength + kItemOfUndefinedLength, 257},
       {"100,000 sequences", {}, kSequenceOfUndefinedLength + kItemOfUndefinedLength, 100'000},
       {"items in items", {}, kItemOfUndefinedLength, 50'000},
       {"untyped", kUnknown + kItemOfUndefinedLength, kImplicit + kItemOfUndefinedLength, 257},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const auto aDecoded = [&](int theDepth) {
         Bytes aBytes = aCase.itsFirst;
         for (int i = aBytes.empty() ? 0 : 1; i < theDepth; ++i)
         {
            aBytes.insert(aBytes.end(), aCase.itsOthers.begin(), aCase.itsOthers.end());
         }
         return Decode(kLEE, aBytes).itsError;
      };
      EXPECT_EQ(aDecoded(256), kNoStreamError);
      EXPECT_EQ(aDecoded(aCase.itsTooMany), kTooDeep);
   }
}
} // namespace

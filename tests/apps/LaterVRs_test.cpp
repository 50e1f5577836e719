// What a decoder of the earlier representations gets of datasets with later ones: each row is bytes as they come and as
// they are to go on, read whole, a byte at a time, and with what is behind the first header skipped.
#include "apps/tn/files/LaterVRs.h"

#include <gtest/gtest.h>

#include "support/FileBytes.h"
#include "support/PiecewiseInputStream.h"
#include "talvenor/foundation/StreamIOException.h"

namespace
{
const DatasetSyntax kExplicit = SyntaxOf("1.2.840.10008.1.2.1");
const DatasetSyntax kImplicit = SyntaxOf("1.2.840.10008.1.2");
const DatasetSyntax kBigEndian = SyntaxOf("1.2.840.10008.1.2.2");

const std::string kUndefined = Bytes("\xFF\xFF\xFF\xFF");
const std::string kSequence = Bytes("\x08\x00\x15\x11SQ\0\0") + kUndefined;
const std::string kItem = Bytes("\xFE\xFF\x00\xE0");
const std::string kItemEnd = Bytes("\xFE\xFF\x0D\xE0\0\0\0\0");
const std::string kSequenceEnd = Bytes("\xFE\xFF\xDD\xE0\0\0\0\0");
const std::string kCode = Bytes("\x08\x00\x19\x01UC\0\0\x02\0\0\0ab");
const std::string kCodeAsText = Bytes("\x08\x00\x19\x01UT\0\0\x02\0\0\0ab");
const std::string kUnknown = Bytes("\x09\x00\x01\x10UN\0\0") + kUndefined;
const std::string kFragments = Bytes("\xE0\x7F\x10\x00OB\0\0") + kUndefined + kItem + Bytes("\x0C\0\0\0") +
                               Bytes("\x08\x00\x19\x01UC\0\0\0\0\0\0") + kSequenceEnd;

std::string ReadAll(const std::string& theBytes, const DatasetSyntax& theSyntax, unsigned int thePiece,
                    unsigned int theSkip)
{
   PiecewiseInputStream aSource({theBytes.begin(), theBytes.end()}, thePiece);
   LaterVRStream aStream(aSource, theSyntax);
   std::string aResult(theBytes.size() + 16, '?');
   auto* const aPlace = reinterpret_cast<unsigned char*>(aResult.data());
   unsigned int aCount = aStream.Read(aPlace, 8);
   aStream.Skip(theSkip);
   aCount += aStream.Read(aPlace + aCount, static_cast<unsigned int>(aResult.size()) - aCount);
   aResult.resize(aCount);
   return aResult;
}
} // namespace

TEST(LaterVRs, GoOnUnderTheNameOfAnEarlierOneOfTheSameForm)
{
   struct Row
   {
      const char* itsName;
      std::string itsBytes;
      std::string itsResult;
      DatasetSyntax itsSyntax = kExplicit;
   };
   const std::string kNumbers = Bytes("\x72\x00\x73\x00OD\0\0\x08\0\0\0\1\2\3\4\5\6\7\x8");
   const std::string kNumbersAsUnknown = Bytes("\x72\x00\x73\x00UN\0\0\x08\0\0\0\1\2\3\4\5\6\7\x8");
   const std::string kShortForm = Bytes("\x08\x00\x20\x01UR\x04\0abcd");
   const std::string kLookAlike = Bytes("\x08\x00\x05\x00LT\x0C\0") + kCode.substr(0, 12);
   const std::string kImplicitUnknown = kUnknown + kItem + kUndefined + Bytes("\x08\x00\x05\x00\x0C\0\0\0") +
                                        kCode.substr(0, 12) + kItemEnd + kSequenceEnd;
   const Row kRows[] = {
       {"text", kCode, kCodeAsText},
       {"numbers", kNumbers + kCode, kNumbersAsUnknown + kCodeAsText},
       {"in an item of undefined length", kSequence + kItem + kUndefined + kCode + kItemEnd + kSequenceEnd + kCode,
        kSequence + kItem + kUndefined + kCodeAsText + kItemEnd + kSequenceEnd + kCodeAsText},
       {"in an item of defined length",
        Bytes("\x08\x00\x15\x11SQ\0\0\x16\0\0\0") + kItem + Bytes("\x0E\0\0\0") + kCode + kCode,
        Bytes("\x08\x00\x15\x11SQ\0\0\x16\0\0\0") + kItem + Bytes("\x0E\0\0\0") + kCodeAsText + kCodeAsText},
       {"with a length of 16 bits", kShortForm + kCode, kShortForm + kCodeAsText},
       {"a value that looks like one", kLookAlike + kCode, kLookAlike + kCodeAsText},
       {"a fragment that looks like one", kFragments + kCode, kFragments + kCodeAsText},
       {"a sequence of unknown VR that looks like one", kImplicitUnknown + kCode, kImplicitUnknown + kCodeAsText},
       {"a text in big endian", Bytes("\0\x08\x01\x19UC\0\0\0\0\0\x02") + "ab" + Bytes("\0\x08\x01\x20SH\0\x02") + "ab",
        Bytes("\0\x08\x01\x19UT\0\0\0\0\0\x02") + "ab" + Bytes("\0\x08\x01\x20SH\0\x02") + "ab", kBigEndian},
       {"implicit VR", Bytes("\x08\x00\x19\x01UC\0\0") + kCode, Bytes("\x08\x00\x19\x01UC\0\0") + kCode, kImplicit},
       {"a dataset that ends in a header", kCode + kCode.substr(0, 10),
        kCodeAsText + Bytes("\x08\x00\x19\x01UC\0\0\2\0")},
       {"one that ends in a short header", kCode + kCode.substr(0, 5), kCodeAsText + kCode.substr(0, 5)},
       {"one that ends in a value", kCode.substr(0, 13), kCodeAsText.substr(0, 13)},
   };
   for (const Row& aRow : kRows)
   {
      for (const unsigned int aPiece : {1U, 5U, 1000U})
      {
         EXPECT_EQ(ReadAll(aRow.itsBytes, aRow.itsSyntax, aPiece, 0), aRow.itsResult) << aRow.itsName;
         std::string aRest = aRow.itsResult;
         aRest.erase(8, 6);
         EXPECT_EQ(ReadAll(aRow.itsBytes, aRow.itsSyntax, aPiece, 6), aRest) << aRow.itsName << ", skipping";
      }
   }
}

TEST(LaterVRs, WhatCannotGoOnIsRefused)
{
   EXPECT_THROW(ReadAll(Bytes("\x72\x00\x73\x00OD\0\0") + kUndefined + kItem, kExplicit, 1000, 0), StreamIOException);
   EXPECT_THROW(ReadAll(Bytes("\0\x72\0\x73OD\0\0\0\0\0\x08\1\2\3\4\5\6\7\x8"), kBigEndian, 1000, 0),
                StreamIOException);
}

TEST(LaterVRs, WhatWasReadOfAHeaderCanBePutBack)
{
   PiecewiseInputStream aSource({kCode.begin(), kCode.end()}, 3);
   LaterVRStream aStream(aSource, kExplicit);
   unsigned char aBytes[14];
   ASSERT_EQ(aStream.Read(aBytes, 8), 8U);
   aStream.Pushback(aBytes, 8);
   ASSERT_EQ(aStream.Read(aBytes, 14), 14U);
   EXPECT_EQ(std::string(aBytes, aBytes + 14), kCodeAsText);
   EXPECT_THROW(aStream.Pushback(aBytes, 13), StreamIOException);
}

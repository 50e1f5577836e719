#include "talvenor/dataset/VRAccess.h"

#include <array>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "talvenor/dataset/VR.h"
#include "talvenor/dataset/VRAccessEndian.h"

namespace
{
using namespace std::string_literals;
using Bytes = std::vector<unsigned char>;

// An element with exactly these bytes, odd lengths included.
template <class Text>
VR ElementWith(const Text& theBytes)
{
   VR aVR(0x0010, 0x0020);
   aVR.SetData(theBytes.data(), static_cast<UINT32>(theBytes.size()), '#');
   aVR.SetLength(static_cast<UINT32>(theBytes.size()));
   return aVR;
}

// The getters of one type of number, with a value and its bytes in both orders.
template <class T>
struct NumberCase
{
   int (VRAccess::*itsGetOne)(T&) const;
   int (VRAccess::*itsGetAll)(T*, unsigned int) const;
   T itsValue;
   Bytes itsLittle;
};

template <class T>
void CheckNumbers(const char* theName, const NumberCase<T>& theCase)
{
   SCOPED_TRACE(theName);
   const Bytes aBig(theCase.itsLittle.rbegin(), theCase.itsLittle.rend());
   const std::pair<std::shared_ptr<VRAccess>, Bytes> anOrders[] = {
       {std::make_shared<VRAccessLE>(), theCase.itsLittle},
       {std::make_shared<VRAccessBE>(), aBig},
   };
   for (const auto& [anAccess, aBytes] : anOrders)
   {
      T aValue{};
      const VR aSingle = ElementWith(aBytes);
      *anAccess = aSingle;
      EXPECT_TRUE((*anAccess.*theCase.itsGetOne)(aValue));
      EXPECT_EQ(aValue, theCase.itsValue);

      Bytes aTwice = aBytes;
      aTwice.insert(aTwice.end(), aBytes.begin(), aBytes.end());
      const VR aDouble = ElementWith(aTwice);
      *anAccess = aDouble;
      T aValues[3] = {};
      EXPECT_FALSE((*anAccess.*theCase.itsGetOne)(aValue)) << "two values are not one";
      EXPECT_FALSE((*anAccess.*theCase.itsGetAll)(aValues, 2 * sizeof(T) - 1));
      EXPECT_EQ(aValues[0], T{});
      EXPECT_TRUE((*anAccess.*theCase.itsGetAll)(aValues, 2 * sizeof(T)));
      EXPECT_EQ(aValues[0], theCase.itsValue);
      EXPECT_EQ(aValues[1], theCase.itsValue);

      aTwice.pop_back();
      const VR aRagged = ElementWith(aTwice);
      *anAccess = aRagged;
      aValues[1] = {};
      EXPECT_TRUE((*anAccess.*theCase.itsGetAll)(aValues, sizeof aValues)) << "whole values only";
      EXPECT_EQ(aValues[0], theCase.itsValue);
      EXPECT_EQ(aValues[1], T{});
   }
}
} // namespace

TEST(VRAccess, ReadsNumbersInItsOwnByteOrder)
{
   CheckNumbers<INT16>("INT16", {&VRAccess::GetINT16, &VRAccess::GetINT16, -2, {0xFE, 0xFF}});
   CheckNumbers<UINT16>("UINT16", {&VRAccess::GetUINT16, &VRAccess::GetUINT16, 0x1234, {0x34, 0x12}});
   CheckNumbers<INT32>("INT32", {&VRAccess::GetINT32, &VRAccess::GetINT32, -2, {0xFE, 0xFF, 0xFF, 0xFF}});
   CheckNumbers<UINT32>("UINT32", {&VRAccess::GetUINT32, &VRAccess::GetUINT32, 0x89ABCDEF, {0xEF, 0xCD, 0xAB, 0x89}});
   CheckNumbers<INT64>(
       "INT64", {&VRAccess::GetINT64, &VRAccess::GetINT64, -2, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}});
   CheckNumbers<UINT64>("UINT64", {&VRAccess::GetUINT64,
                                   &VRAccess::GetUINT64,
                                   0x0123456789ABCDEF,
                                   {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}});
   // IEEE 754: 1.5 is 3FC00000 and 3FF8000000000000.
   CheckNumbers<FLOAT>("FLOAT", {&VRAccess::GetFLOAT, &VRAccess::GetFLOAT, 1.5f, {0x00, 0x00, 0xC0, 0x3F}});
   CheckNumbers<DOUBLE>(
       "DOUBLE", {&VRAccess::GetDOUBLE, &VRAccess::GetDOUBLE, 1.5, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF8, 0x3F}});
}

TEST(VRAccess, GivesTextsWithoutTrailingSpacesAndNULs)
{
   const struct
   {
      const char* itsName;
      std::string itsBytes, itsText;
   } aCases[] = {
       {"nothing to drop", "abcd", "abcd"},
       {"NUL", "1.2.3\0"s, "1.2.3"},
       {"both", "ab \0 \0"s, "ab"},
       {"NUL within", "a\0bc"s, "a\0bc"s},
       {"empty", "", ""},
   };
   for (const auto& aCase : aCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const VR aVR = ElementWith(aCase.itsBytes);
      const VRAccessLE anAccess(aVR);
      const auto aSize = static_cast<unsigned int>(aCase.itsText.size());
      RWCString aText = "old";
      EXPECT_TRUE(anAccess.GetString(aText));
      EXPECT_EQ(aText, aCase.itsText);

      std::string aBuffer(16, '#');
      EXPECT_FALSE(anAccess.GetString(aBuffer.data(), aSize)) << "no room for the NUL";
      EXPECT_EQ(aBuffer, std::string(16, '#'));
      EXPECT_TRUE(anAccess.GetString(aBuffer.data(), aSize + 1));
      EXPECT_EQ(aBuffer, aCase.itsText + '\0' + std::string(15 - aSize, '#'));

      char* aCopy = nullptr;
      ASSERT_TRUE(anAccess.GetStringCopy(aCopy));
      EXPECT_EQ(std::memcmp(aCopy, aBuffer.data(), aSize + 1), 0);
      delete[] aCopy;
   }
}

TEST(VRAccess, GivesWordsWithALastOddByteAndBytesAsTheyAre)
{
   const VR aVR = ElementWith("\1\2\3\4\5"s);
   const std::pair<std::shared_ptr<VRAccess>, std::array<UINT16, 2>> anOrders[] = {
       {std::make_shared<VRAccessLE>(aVR), {0x0201, 0x0403}},
       {std::make_shared<VRAccessBE>(aVR), {0x0102, 0x0304}},
   };
   for (const auto& [anAccess, aWords] : anOrders)
   {
      UINT16 aBuffer[3] = {};
      EXPECT_FALSE(anAccess->GetWords(aBuffer, 4));
      EXPECT_TRUE(anAccess->GetWords(aBuffer, 5));
      UINT16* aCopy = nullptr;
      ASSERT_TRUE(anAccess->GetWordsCopy(aCopy));
      EXPECT_EQ(std::memcmp(aCopy, aBuffer, 5), 0);
      delete[] aCopy;
      unsigned char aBytes[6] = {};
      EXPECT_FALSE(anAccess->GetBytes(aBytes, 4));
      EXPECT_EQ(aBytes[0], 0);
      EXPECT_TRUE(anAccess->GetBytes(aBytes, 5));
      EXPECT_EQ(std::memcmp(aBytes, "\1\2\3\4\5", 6), 0) << "as they are stored";
      unsigned char* aBytesCopy = nullptr;
      ASSERT_TRUE(anAccess->GetBytesCopy(aBytesCopy));
      EXPECT_EQ(std::memcmp(aBytesCopy, aBytes, 5), 0);
      delete[] aBytesCopy;
      EXPECT_EQ(aBuffer[0], aWords[0]);
      EXPECT_EQ(aBuffer[1], aWords[1]);
      EXPECT_EQ(reinterpret_cast<unsigned char*>(aBuffer)[4], 5);
   }
}

TEST(VRAccess, ReplacesAListOfTags)
{
   const VR aVR = ElementWith("\x10\x00\x20\x01\xE0\x7F\x10\x00\xFF\xFF"s); // two tags and a word left over
   RWTValOrderedVector<MAttributeTag> aTags(5);
   EXPECT_TRUE(VRAccessLE(aVR).GetAttributeList(aTags));
   EXPECT_EQ(aTags, (RWTValOrderedVector<MAttributeTag>{{0x0010, 0x0120}, {0x7FE0, 0x0010}}));
   EXPECT_TRUE(VRAccessBE(aVR).GetAttributeList(aTags));
   EXPECT_EQ(aTags, (RWTValOrderedVector<MAttributeTag>{{0x1000, 0x2001}, {0xE07F, 0x1000}}));
}

// An empty value is a text, but neither bytes nor numbers; an absent value of some length, and no element, are nothing.
TEST(VRAccess, FailsWithoutAValueAndLeavesWhatItDeliversIntoUnchanged)
{
   VR anEmpty(0x0010, 0x0020);
   VR anAbsent(0x0010, 0x0020);
   anAbsent.SetLength(2);
   const struct
   {
      const char* itsName;
      const VR* itsVR;
      int itsIsText;
   } aCases[] = {{"empty", &anEmpty, 1}, {"absent", &anAbsent, 0}, {"no element", nullptr, 0}};
   for (const auto& aCase : aCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const VRAccessLE anAccess(aCase.itsVR);
      RWCString aText = "old";
      char aCharacters[8] = "old";
      char* aTextCopy = nullptr;
      EXPECT_EQ(anAccess.GetString(aText), aCase.itsIsText);
      EXPECT_EQ(anAccess.GetString(aCharacters, 8), aCase.itsIsText);
      EXPECT_EQ(anAccess.GetStringCopy(aTextCopy), aCase.itsIsText);
      EXPECT_EQ(aText, aCase.itsIsText ? "" : "old");
      EXPECT_STREQ(aCharacters, aCase.itsIsText ? "" : "old");
      delete[] aTextCopy;

      unsigned char aBytes[8];
      unsigned char* aBytesCopy = nullptr;
      UINT16 aWord = 7;
      UINT16* aWordsCopy = nullptr;
      RWTValOrderedVector<MAttributeTag> aTags(1);
      EXPECT_FALSE(anAccess.GetBytes(aBytes, 8));
      EXPECT_FALSE(anAccess.GetBytesCopy(aBytesCopy));
      EXPECT_FALSE(anAccess.GetWords(&aWord, 2));
      EXPECT_FALSE(anAccess.GetWordsCopy(aWordsCopy));
      EXPECT_FALSE(anAccess.GetUINT16(aWord));
      EXPECT_FALSE(anAccess.GetUINT16(&aWord, 2));
      EXPECT_FALSE(anAccess.GetAttributeList(aTags));
      EXPECT_EQ(aWord, 7);
      EXPECT_EQ(aTags.size(), 1u);
   }
}

#include "talvenor/io/EndianHandlingReader.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

#include "support/PiecewiseInputStream.h"
#include "talvenor/io/NullStreams.h"

namespace
{

using Bytes = std::vector<unsigned char>;

constexpr auto kLittle = TNEndian::LittleEndian;
constexpr auto kBig = TNEndian::BigEndian;

class DestructionTeller : public NullInputStream
{
public:
   explicit DestructionTeller(bool& isDestroyed) : itsFlag(isDestroyed) {}
   ~DestructionTeller() override { itsFlag = true; }

private:
   bool& itsFlag;
};

// The same six values, in both orders: 1 as unsigned and -2 as signed of 16 and 32 bits, 1.0 as float and double.
const Bytes kLittleFields = {0x01, 0x00, 0xFE, 0xFF, 0x01, 0x00, 0x00, 0x00, 0xFE, 0xFF, 0xFF, 0xFF,
                             0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF0, 0x3F};
const Bytes kBigFields = {0x00, 0x01, 0xFF, 0xFE, 0x00, 0x00, 0x00, 0x01, 0xFF, 0xFF, 0xFF, 0xFE,
                          0x3F, 0x80, 0x00, 0x00, 0x3F, 0xF0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};

// The sum of what the reads return; EXPECTs the values when all bytes are there.
unsigned int ReadFields(InputStream& theStream, TNEndian::EndianType theEndian, bool isComplete)
{
   EndianHandlingReader aReader(theStream, theEndian);
   UINT16 aUS = 0;
   INT16 anSS = 0;
   UINT32 aUL = 0;
   INT32 anSL = 0;
   FLOAT anFL = 0;
   DOUBLE anFD = 0;
   unsigned int aTotal = aReader.Read(aUS);
   aTotal += aReader.Read(anSS);
   aTotal += aReader.Read(aUL);
   aTotal += aReader.Read(anSL);
   aTotal += aReader.Read(anFL);
   aTotal += aReader.Read(anFD);
   if (isComplete)
   {
      EXPECT_TRUE(aUS == 1 && anSS == -2 && aUL == 1 && anSL == -2 && anFL == 1 && anFD == 1) << theEndian;
   }
   return aTotal;
}

template <class T>
void ExpectArray(TNEndian::EndianType theEndian)
{
   std::vector<T> aValues(50001);
   Bytes aWire;
   for (std::size_t i = 0; i < aValues.size(); ++i)
   {
      aValues[i] = static_cast<T>(i * 3 + 1);
      unsigned char aField[sizeof(T)];
      TNEndian::Store(aField, aValues[i], theEndian);
      aWire.insert(aWire.end(), aField, aField + sizeof aField);
   }
   const auto aCount = static_cast<unsigned int>(aValues.size());
   for (const unsigned int aPiece : {0xFFFFFFFFU, 999U})
   {
      PiecewiseInputStream aStream(aWire, aPiece);
      EndianHandlingReader aReader(aStream, theEndian);
      std::vector<T> aResult(aValues.size());
      EXPECT_EQ(aReader.Read(aResult.data(), aCount), aWire.size());
      EXPECT_TRUE(aResult == aValues) << sizeof(T) << " bytes, order " << theEndian << ", pieces of " << aPiece;
   }
   aWire.pop_back();
   PiecewiseInputStream aShort(aWire);
   EndianHandlingReader aReader(aShort, theEndian);
   EXPECT_EQ(aReader.Read(aValues.data(), aCount), 0U);
}

} // namespace

TEST(EndianHandlingReader, ReadsEveryKindOfFieldInBothOrders)
{
   for (const unsigned int aPiece : {0xFFFFFFFFU, 1U})
   {
      PiecewiseInputStream aLittle(kLittleFields, aPiece);
      EXPECT_EQ(ReadFields(aLittle, kLittle, true), 24U);
      PiecewiseInputStream aBig(kBigFields, aPiece);
      EXPECT_EQ(ReadFields(aBig, kBig, true), 24U);
   }
}

TEST(EndianHandlingReader, AFieldCutShortIsNoField)
{
   const unsigned int kBoundaries[] = {0, 2, 4, 8, 12, 16, 24};
   for (unsigned int aCut = 0; aCut < 24; ++aCut)
   {
      const unsigned int aWhole = *(std::upper_bound(std::begin(kBoundaries), std::end(kBoundaries), aCut) - 1);
      for (const auto anEndian : {kLittle, kBig})
      {
         PiecewiseInputStream aStream(Bytes(kBigFields.begin(), kBigFields.begin() + aCut));
         EXPECT_EQ(ReadFields(aStream, anEndian, false), aWhole) << "cut at " << aCut << ", order " << anEndian;
      }
   }
}

TEST(EndianHandlingReader, ArraysOfEveryTypeInBothOrders)
{
   for (const auto anEndian : {kLittle, kBig})
   {
      ExpectArray<UINT16>(anEndian);
      ExpectArray<UINT32>(anEndian);
      ExpectArray<DOUBLE>(anEndian);
   }
}

TEST(EndianHandlingReader, ANativeArrayIsOneReadAndAForeignOneFew)
{
   PiecewiseInputStream aStream(Bytes(400000));
   std::vector<UINT16> aValues(100000);
   EndianHandlingReader(aStream, TNEndian::NativeEndian()).Read(aValues.data(), 100000);
   EXPECT_EQ(aStream.Reads(), 1U);
   EndianHandlingReader(aStream, kBig).Read(aValues.data(), 100000);
   EXPECT_LE(aStream.Reads(), 6U);
}

TEST(EndianHandlingReader, OwnsAStreamPassedByPointerAndItsCopiesDoNot)
{
   bool isDestroyed = false;
   auto aReader = std::make_unique<EndianHandlingReader>(new DestructionTeller(isDestroyed), kLittle);
   {
      EndianHandlingReader aCopy(*aReader);
      EXPECT_EQ(EndianHandlingReader(*aReader, kBig).GetEndian(), kBig);
      EXPECT_EQ(aCopy.GetEndian(), kLittle);
   }
   EXPECT_FALSE(isDestroyed);
   aReader.reset();
   EXPECT_TRUE(isDestroyed);
}

#include "talvenor/io/EndianHandlingWriter.h"

#include <gtest/gtest.h>

#include "support/RecordingOutputStream.h"

namespace
{

using Bytes = std::vector<unsigned char>;

Bytes Fields(TNEndian::EndianType theEndian)
{
   RecordingOutputStream aStream;
   EndianHandlingWriter aWriter(aStream, theEndian);
   aWriter.Write(UINT16{0x0102});
   aWriter.Write(INT16{-2});
   aWriter.Write(UINT32{0x01020304});
   aWriter.Write(INT32{-2});
   aWriter.Write(1.0F);
   aWriter.Write(1.0);
   EXPECT_EQ(aStream.Writes(), 6U); // one write a value
   return aStream.Bytes();
}

// A large array is the same as its values one after the other.
template <class T>
void ExpectArray(TNEndian::EndianType theEndian)
{
   std::vector<T> aValues(20001);
   RecordingOutputStream aSingly;
   EndianHandlingWriter aSingleWriter(aSingly, theEndian);
   for (std::size_t i = 0; i < aValues.size(); ++i)
   {
      aValues[i] = static_cast<T>(i * 5);
      aSingleWriter.Write(aValues[i]);
   }
   const std::vector<T> aCopy = aValues;
   RecordingOutputStream aWhole;
   EndianHandlingWriter(aWhole, theEndian).Write(aValues.data(), static_cast<unsigned int>(aValues.size()));
   EXPECT_TRUE(aWhole.Bytes() == aSingly.Bytes()) << sizeof(T) << " bytes, order " << theEndian;
   EXPECT_TRUE(aValues == aCopy);
   EXPECT_LE(aWhole.Writes(), TNEndian::IsNative(theEndian) ? 1U : 10U);
}

} // namespace

TEST(EndianHandlingWriter, WritesEveryKindOfFieldInBothOrders)
{
   const Bytes kBig = {0x01, 0x02, 0xFF, 0xFE, 0x01, 0x02, 0x03, 0x04, 0xFF, 0xFF, 0xFF, 0xFE,
                       0x3F, 0x80, 0x00, 0x00, 0x3F, 0xF0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
   const Bytes kLittle = {0x02, 0x01, 0xFE, 0xFF, 0x04, 0x03, 0x02, 0x01, 0xFE, 0xFF, 0xFF, 0xFF,
                          0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF0, 0x3F};
   EXPECT_EQ(Fields(TNEndian::BigEndian), kBig);
   EXPECT_EQ(Fields(TNEndian::LittleEndian), kLittle);
}

TEST(EndianHandlingWriter, ArraysOfEveryTypeInBothOrders)
{
   for (const auto anEndian : {TNEndian::LittleEndian, TNEndian::BigEndian})
   {
      ExpectArray<UINT16>(anEndian);
      ExpectArray<UINT32>(anEndian);
      ExpectArray<DOUBLE>(anEndian);
   }
}

TEST(EndianHandlingWriter, BytesGoAsTheyAre)
{
   RecordingOutputStream aStream;
   EndianHandlingWriter aWriter(aStream, TNEndian::BigEndian);
   EndianHandlingWriter aCopy(aWriter, TNEndian::LittleEndian);
   EXPECT_EQ(aCopy.GetEndian(), TNEndian::LittleEndian);
   aWriter.Write("US", 2);
   aCopy.Write('x');
   EXPECT_EQ(aStream.Bytes(), (Bytes{'U', 'S', 'x'}));
}

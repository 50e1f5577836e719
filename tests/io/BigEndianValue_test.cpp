#include "talvenor/io/BigEndianValue.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace
{

template <class Value>
std::vector<unsigned char> BytesOf(Value theValue)
{
   return {&theValue, &theValue + sizeof theValue};
}

using Bytes = std::vector<unsigned char>;

} // namespace

TEST(BigEndianValue, HoldsItsBytesWithTheHighestFirst)
{
   EXPECT_EQ(BytesOf(BE_UINT16(0x1234)), (Bytes{0x12, 0x34}));
   EXPECT_EQ(BytesOf(BE_INT16(-2)), (Bytes{0xFF, 0xFE}));
   EXPECT_EQ(BytesOf(BE_UINT32(0x12345678U)), (Bytes{0x12, 0x34, 0x56, 0x78}));
   EXPECT_EQ(BytesOf(BE_UINT64(UINT64{0x0102030405060708})), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
   EXPECT_EQ(BytesOf(BE_FLOAT(1)), (Bytes{0x3F, 0x80, 0, 0}));
   EXPECT_EQ(BytesOf(BE_DOUBLE(-2.0F)), (Bytes{0xC0, 0, 0, 0, 0, 0, 0, 0}));
   EXPECT_EQ(INT64{BE_INT64(INT64{-5})}, -5);
}

TEST(BigEndianValue, AFloatIsConvertedAndBeyondTheFieldBecomesItsNearestValue)
{
   const double aNaN = std::numeric_limits<double>::quiet_NaN();
   EXPECT_EQ(INT32{BE_INT32(-2.9)}, -2);
   EXPECT_EQ(UINT16{BE_UINT16(-0.5)}, 0);
   EXPECT_EQ(UINT16{BE_UINT16(70000.0)}, 0xFFFF);
   EXPECT_EQ(UINT16{BE_UINT16(-3.0)}, 0);
   EXPECT_EQ(INT16{BE_INT16(-1e30F)}, -32768);
   EXPECT_EQ(INT32{BE_INT32(aNaN)}, 0);
   EXPECT_EQ(INT64{BE_INT64(9223372036854775808.0)}, std::numeric_limits<INT64>::max());
   EXPECT_EQ(UINT64{BE_UINT64(9223372036854775808.0)}, UINT64{1} << 63);
}

// An item header: type, reserved, 16-bit length, then a 32-bit number (PS3.8 9.3).
TEST(BigEndianValue, StructuresHaveTheLayoutOfTheWire)
{
   struct Item
   {
      unsigned char itsType = 0x51;
      BE_UINT16 itsLength = 4;
      BE_UINT32 itsMaximum = 16384;
   };
   static_assert(sizeof(Item) == 7);
   const Item anItem;
   const unsigned char aWire[] = {0x51, 0x00, 0x04, 0x00, 0x00, 0x40, 0x00};
   EXPECT_EQ(std::memcmp(std::addressof(anItem), aWire, sizeof aWire), 0);
}

#include "talvenor/io/TNEndian.h"

#include <bit>
#include <gtest/gtest.h>

TEST(TNEndian, SwitchEndianReversesTheBytesOfEveryWidth)
{
   EXPECT_EQ(TNEndian::SwitchEndian(UINT16{0x1234}), UINT16{0x3412});
   EXPECT_EQ(TNEndian::SwitchEndian(INT16{-2}), INT16{-257}); // FFFE, FEFF
   EXPECT_EQ(TNEndian::SwitchEndian(UINT32{0x12345678}), UINT32{0x78563412});
   EXPECT_EQ(TNEndian::SwitchEndian(INT32{0x7F}), INT32{0x7F000000});
   EXPECT_EQ(TNEndian::SwitchEndian(UINT64{0x0102030405060708}), UINT64{0x0807060504030201});
   EXPECT_EQ(TNEndian::SwitchEndian(INT64{1}), INT64{0x0100000000000000});
   EXPECT_EQ(std::bit_cast<UINT32>(TNEndian::SwitchEndian(1.0F)), 0x0000803FU);   // 3F800000
   EXPECT_EQ(std::bit_cast<UINT64>(TNEndian::SwitchEndian(1.0)), UINT64{0xF03F}); // 3FF0...
}

// 1.5e-43 reversed is 6B000000, and 7F A0 00 01 a signalling NaN: neither way may the bits change.
TEST(TNEndian, ASignallingNaNSurvivesBeingSwitchedTwice)
{
   const UINT32 aSignallingNaN = 0x7FA00001;
   const FLOAT aReversed = TNEndian::SwitchEndian(std::bit_cast<FLOAT>(aSignallingNaN));
   EXPECT_EQ(std::bit_cast<UINT32>(aReversed), 0x0100A07FU);
   EXPECT_EQ(std::bit_cast<UINT32>(TNEndian::SwitchEndian(aReversed)), aSignallingNaN);
}

TEST(TNEndian, LoadsAndStoresAtAnyAddressInTheOrderAskedFor)
{
   const unsigned char aBytes[] = {0xFF, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08};
   const unsigned char* anOddPlace = aBytes + 1;
   EXPECT_EQ(LoadUINT16<TNEndian::LittleEndian>(anOddPlace), 0x0201);
   EXPECT_EQ(LoadUINT16<TNEndian::BigEndian>(anOddPlace), 0x0102);
   EXPECT_EQ(LoadUINT32<TNEndian::LittleEndian>(anOddPlace), 0x04030201U);
   EXPECT_EQ(LoadUINT32<TNEndian::BigEndian>(anOddPlace), 0x01020304U);
   EXPECT_EQ(LoadUINT64<TNEndian::BigEndian>(anOddPlace), 0x0102030405060708U);
   EXPECT_EQ(TNEndian::Load<UINT16>(anOddPlace, TNEndian::BigEndian), 0x0102);

   unsigned char aTarget[9] = {};
   StoreUINT32<TNEndian::BigEndian>(aTarget + 1, 0x01020304);
   TNEndian::Store<UINT32>(aTarget + 5, 0x08070605, TNEndian::LittleEndian);
   EXPECT_TRUE(std::equal(aTarget + 1, aTarget + 9, anOddPlace));
}

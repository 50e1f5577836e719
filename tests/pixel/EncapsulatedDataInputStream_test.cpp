// Fragments as one continuous stream.
#include "talvenor/pixel/EncapsulatedDataInputStream.h"

#include "support/EncapsulatedBytes.h"

namespace
{
const Bytes kItems = Item({1, 2, 3}) + Item({}) + Item({4}) + Item({}) + Item({5, 6, 7, 8}) + kEndOfItems;

TEST(EncapsulatedDataInputStream, DeliversTheFragmentsWithoutTheirHeaders)
{
   for (const unsigned int aPiece : {EncapsulatedBytes::kInMemory, 1u, 3u})
   {
      for (const unsigned int aBlock : {1u, 2u, 100u})
      {
         EncapsulatedBytes aSource(kItems, aPiece);
         EncapsulatedDataInputStream aData(aSource.Pixels());
         EXPECT_EQ(aData.GetCurrentFragmentIndex(), -1);
         EXPECT_EQ(ReadToEnd(aData, aBlock), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
         EXPECT_EQ(aData.GetFragmentLengthTable(), (std::vector<UINT32>{3, 0, 1, 0, 4}));
         EXPECT_EQ(aData.FindFragment(2), 0);
         EXPECT_EQ(aData.FindFragment(3), 2) << "an empty fragment has no byte";
         EXPECT_EQ(aData.FindFragment(8), -1);
      }
   }
}

TEST(EncapsulatedDataInputStream, SkipsAcrossFragments)
{
   EncapsulatedBytes aSource(kItems, 2);
   EncapsulatedDataInputStream aData(aSource.Pixels());
   EXPECT_EQ(aData.Skip(5), 5u);
   EXPECT_EQ(aData.GetCurrentFragmentIndex(), 4);
   EXPECT_EQ(aData.GetStreamPosition(), 5u);
   aData.SkipToEndOfCurrentFragment();
   EXPECT_EQ(aData.GetPosition(), 8u);
   EXPECT_EQ(aData.Skip(100), 0u);

   EncapsulatedBytes aLimited(kItems);
   EncapsulatedDataInputStream aWindow(aLimited.Pixels(), 5);
   EXPECT_EQ(aWindow.Skip(2), 2u);
   EXPECT_EQ(ReadToEnd(aWindow), (Bytes{3, 4, 5}));
   aWindow.SkipToEndOfCurrentFragment();
   EXPECT_EQ(aWindow.Skip(1), 0u) << "the limit holds behind it too";
}

TEST(EncapsulatedDataInputStream, TellsACutFragment)
{
   EncapsulatedBytes aSource(First(kItems, 10), 4);
   EncapsulatedDataInputStream aData(aSource.Pixels());
   EXPECT_EQ(
       StreamErrorOf([&] { ReadToEnd(aData); }),
       (StreamError{"EncapsulatedDataInputStream: EOF inside fragment 0 (1 bytes remaining)", TN_END_OF_FILE, 0}));
   EXPECT_EQ(StreamErrorOf([&] { aData.Seek(0); }),
             (StreamError{"EncapsulatedDataInputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0}));
   EXPECT_EQ(
       StreamErrorOf([&] { aData.Pushback(nullptr, 0); }),
       (StreamError{"EncapsulatedDataInputStream does not support Pushback(uchar_t*, size_t)", TN_UNSUPPORTED, 0}));
}
} // namespace

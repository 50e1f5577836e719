#include "talvenor/foundation/UniqueTimestamp.h"

#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{

class UniqueTimestampTest : public testing::Test
{
protected:
   // Back on the real clock, which is behind the fake one: the first call throws and sets the class right.
   ~UniqueTimestampTest() override
   {
      itsClock.reset();
      EXPECT_THROW(UniqueTimestamp::GetTimestamp(), TNRuntimeException);
   }

   UINT64 Now() { return static_cast<UINT64>(itsClock->WallSeconds()); }

   std::unique_ptr<FakeClock> itsClock = std::make_unique<FakeClock>();
};

TEST_F(UniqueTimestampTest, CountsWithinASecondAndWaitsForAClockSetBackALittle)
{
   const UINT64 aSecond = Now() * 65536;
   EXPECT_EQ(UniqueTimestamp::GetTimestamp(), aSecond);
   EXPECT_EQ(UniqueTimestamp::GetTimestamp(), aSecond + 1);
   EXPECT_EQ(UniqueTimestamp::GetTimestampString(), std::to_string(aSecond + 2));
   itsClock->Advance(1);
   EXPECT_EQ(UniqueTimestamp::GetTimestamp(), aSecond + 65536);
   itsClock->Advance(-100); // a little back: waits
   EXPECT_EQ(UniqueTimestamp::GetTimestamp(), aSecond + 2 * 65536);
   EXPECT_EQ(itsClock->Slept(), 101000u);
}

TEST_F(UniqueTimestampTest, WaitsForTheNextSecondWhenOneIsUsedUp)
{
   const UINT64 aSecond = Now() * 65536;
   for (UINT64 i = 0; i < 65536; ++i)
   {
      ASSERT_EQ(UniqueTimestamp::GetTimestamp(), aSecond + i);
   }
   EXPECT_EQ(itsClock->Slept(), 0u);
   EXPECT_EQ(UniqueTimestamp::GetTimestamp(), aSecond + 65536);
   EXPECT_EQ(itsClock->Slept(), 1000u);
}

TEST_F(UniqueTimestampTest, ThrowsOnceWhenTheClockWasSetBackFar)
{
   UniqueTimestamp::GetTimestamp();
   UniqueTimestamp::GetTimestamp();
   const UINT64 aLast = Now();
   itsClock->Advance(-101);
   const UINT64 aNow = Now();
   try
   {
      UniqueTimestamp::GetTimestamp();
      FAIL() << "no exception";
   }
   catch (const TNRuntimeException& anException)
   {
      EXPECT_EQ(anException.GetMessage(),
                "UniqueTimestamp::GetTimeStamp: Clock went backwards. Now = " + std::to_string(aNow) +
                    " Last Time = " + std::to_string(aLast) + " Counter = 1");
   }
   EXPECT_EQ(UniqueTimestamp::GetTimestamp() / 65536, aNow);
   EXPECT_EQ(itsClock->Slept(), 0u);
}

} // namespace

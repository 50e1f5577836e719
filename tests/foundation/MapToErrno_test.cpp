#include "talvenor/foundation/MapToErrno.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace
{

struct MapCase
{
   UINT32 itsSystemError;
   int itsErrno;
};

const MapCase kCases[] = {
    {0, 22},  {1, 22},  {5, 13},  {6, 9},    {14, 22},   {18, 2},   {19, 13},          {20, 13},
    {33, 13}, {36, 13}, {37, 22}, {50, 22},  {112, 28},  {145, 41}, {183, 17},         {187, 22},
    {188, 8}, {190, 8}, {202, 8}, {203, 22}, {1816, 12}, {206, 2},  {0xFFFFFFFFu, 22},
};

TEST(MapToErrno, FollowsPairsThenRangesThenInvalid)
{
   for (const MapCase& aCase : kCases)
   {
      errno = 0;
      MapToErrno(aCase.itsSystemError);
      EXPECT_EQ(errno, aCase.itsErrno) << "system error " << aCase.itsSystemError;
   }
}

} // namespace

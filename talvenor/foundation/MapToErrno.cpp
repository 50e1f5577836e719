#include "talvenor/foundation/MapToErrno.h"

#include <cerrno>

namespace
{

// The errno values are those of the Windows runtime library and therefore numbers: some (41) mean something else here.
struct ErrorRange
{
   UINT32 itsFirst, itsLast;
   int itsErrno;
};

struct ErrorPair
{
   UINT32 itsSystemError;
   int itsErrno;
};

// The first match wins: 6 stands here twice.
// clang-format off
constexpr ErrorPair kErrors[] = {
    {1, 22},   {2, 2},    {3, 2},   {4, 24},   {5, 13},   {6, 9},    {7, 12},  {8, 12},   {9, 12},
    {10, 7},   {11, 8},   {12, 22}, {13, 22},  {15, 2},   {16, 13},  {17, 18}, {18, 2},   {33, 13},
    {53, 2},   {65, 13},  {67, 2},  {80, 17},  {82, 13},  {83, 13},  {87, 22}, {89, 11},  {108, 13},
    {109, 32}, {112, 28}, {114, 9}, {6, 22},   {128, 10}, {129, 10}, {130, 9}, {131, 22}, {132, 13},
    {145, 41}, {158, 13}, {161, 2}, {164, 11}, {167, 13}, {183, 17}, {206, 2}, {215, 11}, {1816, 12},
};
// clang-format on

// For what the pairs do not name.
constexpr ErrorRange kRanges[] = {
    {19, 36, 13},  // media and sharing: access denied
    {188, 202, 8}, // executable images: not executable
};
constexpr int kOtherwise = 22;

int ErrnoOf(UINT32 theSystemError)
{
   for (const ErrorPair& aPair : kErrors)
   {
      if (aPair.itsSystemError == theSystemError)
      {
         return aPair.itsErrno;
      }
   }
   for (const ErrorRange& aRange : kRanges)
   {
      if (aRange.itsFirst <= theSystemError && theSystemError <= aRange.itsLast)
      {
         return aRange.itsErrno;
      }
   }
   return kOtherwise;
}

} // namespace

void MapToErrno(UINT32 theSystemError)
{
   errno = ErrnoOf(theSystemError);
}

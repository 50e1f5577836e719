// Numbers held in big-endian byte order in memory: the fields of network headers (PS3.8 9.3.1).
//
// A value is exactly its bytes, with alignment 1, so that an array or a structure of them has the layout of the wire.
// operator& gives the address of the stored bytes (use std::addressof for the object's own).
#pragma once

#include <array>
#include <cmath>
#include <limits>
#include <type_traits>

#include "talvenor/io/TNEndian.h"

template <class Native>
class BigEndianValue
{
public:
   BigEndianValue() = default;

   // From every native number, converted numerically. Integers wrap to the width of the field; floating-point numbers
   // are truncated towards zero and, where the field cannot hold them, become its nearest value (NaN becomes 0).
   template <class T>
   requires std::is_arithmetic_v<T> BigEndianValue(T theValue)
   {
      TNEndian::Store<TNEndian::BigEndian>(itsBytes.data(), Converted(theValue));
   }

   BigEndianValue& operator=(Native theValue)
   {
      TNEndian::Store<TNEndian::BigEndian>(itsBytes.data(), theValue);
      return *this;
   }

   operator Native() const { return TNEndian::Load<Native, TNEndian::BigEndian>(itsBytes.data()); }

   unsigned char* operator&() { return itsBytes.data(); }
   const unsigned char* operator&() const { return itsBytes.data(); }

private:
   template <class T>
   static Native Converted(T theValue)
   {
      if constexpr (std::is_floating_point_v<T> && std::is_integral_v<Native>)
      {
         return Truncated(theValue);
      }
      else
      {
         return static_cast<Native>(theValue);
      }
   }

   // Both bounds are powers of two (or zero), hence exact in any floating-point type.
   static Native Truncated(double theValue)
   {
      constexpr double kFirst = static_cast<double>(std::numeric_limits<Native>::min());
      constexpr Native kHalf = std::numeric_limits<Native>::max() / 2 + 1;
      constexpr double kBehindLast = 2.0 * static_cast<double>(kHalf);
      const double aWhole = std::trunc(theValue);
      if (std::isnan(aWhole))
      {
         return 0;
      }
      if (aWhole < kFirst)
      {
         return std::numeric_limits<Native>::min();
      }
      return aWhole < kBehindLast ? static_cast<Native>(aWhole) : std::numeric_limits<Native>::max();
   }

   std::array<unsigned char, sizeof(Native)> itsBytes{};
};

using BE_UINT16 = BigEndianValue<UINT16>;
using BE_INT16 = BigEndianValue<INT16>;
using BE_UINT32 = BigEndianValue<UINT32>;
using BE_INT32 = BigEndianValue<INT32>;
using BE_UINT64 = BigEndianValue<UINT64>;
using BE_INT64 = BigEndianValue<INT64>;
using BE_FLOAT = BigEndianValue<FLOAT>;
using BE_DOUBLE = BigEndianValue<DOUBLE>;

static_assert(sizeof(BE_UINT16) == 2 && sizeof(BE_FLOAT) == 4 && sizeof(BE_DOUBLE[3]) == 24 && alignof(BE_INT64) == 1);

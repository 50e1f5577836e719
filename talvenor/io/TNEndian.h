// Byte order: its names, the order of this machine, and the helpers that load, store and reverse values.
//
// DICOM data are little-endian or, in the retired explicit VR big endian transfer syntax, big-endian (PS3.5 7.3);
// everything on the wire below the data set is big-endian (PS3.8 9.3.1). Values are computed in the order of the
// machine. All of this is inline: a load in the native order costs one move, a load in the foreign order a move and a
// swap.
#pragma once

#include <bit>
#include <cstring>

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API TNEndian
{
public:
   // The values are kept by hosts and must not change.
   enum EndianType
   {
      LittleEndian = 1,
      BigEndian = 2
   };

   static constexpr EndianType NativeEndian()
   {
      return std::endian::native == std::endian::little ? LittleEndian : BigEndian;
   }

   static constexpr bool NativeIsLittleEndian() { return NativeEndian() == LittleEndian; }
   static constexpr bool NativeIsBigEndian() { return NativeEndian() == BigEndian; }
   static constexpr bool IsNative(EndianType theEndian) { return theEndian == NativeEndian(); }

   // The value whose bytes are those of the argument in reverse. Floats are reversed as bits, so that a reversed
   // number that happens to be a signalling NaN survives the way back.
   static constexpr UINT16 SwitchEndian(UINT16 theValue) { return __builtin_bswap16(theValue); }
   static constexpr UINT32 SwitchEndian(UINT32 theValue) { return __builtin_bswap32(theValue); }
   static constexpr UINT64 SwitchEndian(UINT64 theValue) { return __builtin_bswap64(theValue); }
   static constexpr INT16 SwitchEndian(INT16 theValue) { return Reversed<UINT16>(theValue); }
   static constexpr INT32 SwitchEndian(INT32 theValue) { return Reversed<UINT32>(theValue); }
   static constexpr INT64 SwitchEndian(INT64 theValue) { return Reversed<UINT64>(theValue); }
   static constexpr FLOAT SwitchEndian(FLOAT theValue) { return Reversed<UINT32>(theValue); }
   static constexpr DOUBLE SwitchEndian(DOUBLE theValue) { return Reversed<UINT64>(theValue); }

   // Loads and stores below are additions of this toolkit: a value of type T (2, 4 or 8 bytes wide) at any address,
   // in a byte order known at compile time or, for code that learns the order from a stream, at run time.
   template <class T, EndianType E>
   static T Load(const void* theBytes)
   {
      static_assert(sizeof(T) > 1, "a byte has no order, and would become an int");
      T aValue;
      std::memcpy(&aValue, theBytes, sizeof aValue);
      return IsNative(E) ? aValue : SwitchEndian(aValue);
   }

   template <class T>
   static T Load(const void* theBytes, EndianType theEndian)
   {
      return theEndian == LittleEndian ? Load<T, LittleEndian>(theBytes) : Load<T, BigEndian>(theBytes);
   }

   template <EndianType E, class T>
   static void Store(void* theBytes, T theValue)
   {
      static_assert(sizeof(T) > 1, "a byte has no order, and would become an int");
      const T aValue = IsNative(E) ? theValue : SwitchEndian(theValue);
      std::memcpy(theBytes, &aValue, sizeof aValue);
   }

   template <class T>
   static void Store(void* theBytes, T theValue, EndianType theEndian)
   {
      theEndian == LittleEndian ? Store<LittleEndian>(theBytes, theValue) : Store<BigEndian>(theBytes, theValue);
   }

   // Reverses the bytes of each of theCount values of type T, which need not be aligned.
   template <class T>
   static void SwitchArray(void* theBytes, std::size_t theCount)
   {
      static_assert(sizeof(T) > 1, "a byte has no order, and would become an int");
      auto* aPlace = static_cast<unsigned char*>(theBytes);
      for (std::size_t i = 0; i < theCount; ++i, aPlace += sizeof(T))
      {
         T aValue;
         std::memcpy(&aValue, aPlace, sizeof aValue);
         aValue = SwitchEndian(aValue);
         std::memcpy(aPlace, &aValue, sizeof aValue);
      }
   }

private:
   template <class Bits, class T>
   static constexpr T Reversed(T theValue)
   {
      return std::bit_cast<T>(SwitchEndian(std::bit_cast<Bits>(theValue)));
   }
};

template <TNEndian::EndianType E>
inline UINT16 LoadUINT16(const unsigned char* theBytes)
{
   return TNEndian::Load<UINT16, E>(theBytes);
}

template <TNEndian::EndianType E>
inline UINT32 LoadUINT32(const unsigned char* theBytes)
{
   return TNEndian::Load<UINT32, E>(theBytes);
}

template <TNEndian::EndianType E>
inline UINT64 LoadUINT64(const unsigned char* theBytes)
{
   return TNEndian::Load<UINT64, E>(theBytes);
}

template <TNEndian::EndianType E>
inline void StoreUINT16(unsigned char* theBytes, UINT16 theValue)
{
   TNEndian::Store<E>(theBytes, theValue);
}

template <TNEndian::EndianType E>
inline void StoreUINT32(unsigned char* theBytes, UINT32 theValue)
{
   TNEndian::Store<E>(theBytes, theValue);
}

template <TNEndian::EndianType E>
inline void StoreUINT64(unsigned char* theBytes, UINT64 theValue)
{
   TNEndian::Store<E>(theBytes, theValue);
}

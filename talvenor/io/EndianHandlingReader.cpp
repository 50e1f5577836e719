#include "talvenor/io/EndianHandlingReader.h"

#include <algorithm>

namespace
{

// Largest single reads, in bytes: whole values of any width, and in the foreign order a block that is still in the
// cache when its values are reversed.
constexpr unsigned int kNativeBlock = 0xFFFFFFF8;
constexpr unsigned int kForeignBlock = 65536;

} // namespace

template <class T>
unsigned int EndianHandlingReader::ReadArray(T* theValues, unsigned int theCount)
{
   const bool isNative = TNEndian::IsNative(itsEndian);
   const UINT64 aLength = UINT64{theCount} * sizeof(T);
   auto* aPlace = reinterpret_cast<unsigned char*>(theValues);
   for (UINT64 aRest = aLength; aRest > 0;)
   {
      const auto aBlock = static_cast<unsigned int>(std::min<UINT64>(aRest, isNative ? kNativeBlock : kForeignBlock));
      if (itsStream->ReadFully(aPlace, aBlock) != aBlock)
      {
         return 0;
      }
      if (!isNative)
      {
         TNEndian::SwitchArray<T>(aPlace, aBlock / sizeof(T));
      }
      aPlace += aBlock;
      aRest -= aBlock;
   }
   return static_cast<unsigned int>(std::min<UINT64>(aLength, 0xFFFFFFFF));
}

unsigned int EndianHandlingReader::Read(UINT16* theValues, unsigned int theCount)
{
   return ReadArray(theValues, theCount);
}

unsigned int EndianHandlingReader::Read(INT16* theValues, unsigned int theCount)
{
   return ReadArray(theValues, theCount);
}

unsigned int EndianHandlingReader::Read(UINT32* theValues, unsigned int theCount)
{
   return ReadArray(theValues, theCount);
}

unsigned int EndianHandlingReader::Read(INT32* theValues, unsigned int theCount)
{
   return ReadArray(theValues, theCount);
}

unsigned int EndianHandlingReader::Read(FLOAT* theValues, unsigned int theCount)
{
   return ReadArray(theValues, theCount);
}

unsigned int EndianHandlingReader::Read(DOUBLE* theValues, unsigned int theCount)
{
   return ReadArray(theValues, theCount);
}

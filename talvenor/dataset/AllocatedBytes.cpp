#include "talvenor/dataset/AllocatedBytes.h"

#include <algorithm>
#include <cstring>

#include "talvenor/io/InputStream.h"

namespace
{
// A value of up to kTrustedLength bytes gets its buffer on the word of the length field. A longer one starts with that
// many, and each further buffer holds up to kGrowth times what has arrived: a length that lies claims little memory,
// while of an honest value no more than a fifteenth is copied.
constexpr UINT32 kTrustedLength = 1024 * 1024;
constexpr UINT32 kGrowth = 16;

UINT32 NextBufferSize(UINT32 theArrived, UINT32 theLength)
{
   const UINT64 aSize = std::max<UINT64>(kTrustedLength, UINT64{theArrived} * kGrowth);
   return static_cast<UINT32>(std::min<UINT64>(aSize, theLength));
}
} // namespace

AllocatedBytes AllocateBytes(MemoryAllocater& theAllocator, UINT32 theSize)
{
   return AllocatedBytes(static_cast<unsigned char*>(theAllocator.Allocate(theSize)), FreeThrough{&theAllocator});
}

// Only the last buffer comes from theAllocator, which may be a small pool.
UINT32 ReadAllocatedBytes(InputStream& theStream, UINT32 theLength, MemoryAllocater& theAllocator,
                          AllocatedBytes& theBytes)
{
   AllocatedBytes aBuffer(nullptr, FreeThrough{&theAllocator});
   UINT32 aSize = 0;
   UINT32 aCount = 0;
   while (aCount == aSize && aSize < theLength)
   {
      aSize = NextBufferSize(aCount, theLength);
      const bool isLast = aSize == theLength;
      AllocatedBytes aLarger =
          AllocateBytes(isLast ? theAllocator : MemoryAllocater::GetDefault(), aSize + (aSize & 1));
      if (aCount != 0)
      {
         std::memcpy(aLarger.get(), aBuffer.get(), aCount);
      }
      aBuffer = std::move(aLarger);
      aCount += theStream.ReadFully(aBuffer.get() + aCount, aSize - aCount);
   }
   if (aCount != theLength)
   {
      theBytes.reset();
      return aCount;
   }
   if (theLength & 1)
   {
      aBuffer.get()[theLength] = 0;
   }
   theBytes = std::move(aBuffer);
   return aCount;
}

#include "talvenor/dataset/MemoryAllocater.h"

#include <new>

#include "talvenor/foundation/Exceptions.h"

namespace
{
// Neither built nor destroyed at run time: elements with static storage, whose order of construction and destruction is
// not ours to know, free their values through it.
union Immortal
{
   constexpr Immortal() : itsAllocater() {}
   ~Immortal() {}

   MemoryAllocater itsAllocater;
};

constinit Immortal theDefaultInstance;
} // namespace

constinit MemoryAllocater& MemoryAllocater::itsDefault = theDefaultInstance.itsAllocater;

MemoryAllocater::~MemoryAllocater() = default;

void* MemoryAllocater::Allocate(unsigned int theSize)
{
   if (theSize == 0)
   {
      return nullptr;
   }
   try
   {
      return new unsigned char[theSize];
   }
   catch (const std::bad_alloc&)
   {
      throw BadAllocException(theSize);
   }
}

void MemoryAllocater::Free(void* theMemory)
{
   delete[] static_cast<unsigned char*>(theMemory);
}

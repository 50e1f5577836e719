// Counts what elements ask of their allocator, and can be told to have no memory.
#pragma once

#include <set>
#include <vector>

#include "talvenor/dataset/MemoryAllocater.h"
#include "talvenor/foundation/Exceptions.h"

class CountingAllocater : public MemoryAllocater
{
public:
   void* Allocate(unsigned int theSize) override
   {
      itsSizes.push_back(theSize);
      if (theSize > itsLimit)
      {
         throw BadAllocException(theSize);
      }
      void* aMemory = MemoryAllocater::Allocate(theSize);
      itsLive.insert(aMemory);
      return aMemory;
   }

   void Free(void* theMemory) override
   {
      if (theMemory != nullptr && itsLive.erase(theMemory) == 0)
      {
         itsHasSeenStrangers = true;
      }
      MemoryAllocater::Free(theMemory);
   }

   void SetLimit(unsigned int theLimit) { itsLimit = theLimit; }

   const std::vector<unsigned int>& Sizes() const { return itsSizes; } // of all requests so far
   std::size_t Live() const { return itsLive.size(); }                 // buffers not yet freed
   bool HasSeenStrangers() const { return itsHasSeenStrangers; }       // freed what it had not allocated

private:
   unsigned int itsLimit = 0xFFFFFFFF;
   std::vector<unsigned int> itsSizes;
   std::set<void*> itsLive;
   bool itsHasSeenStrangers = false;
};

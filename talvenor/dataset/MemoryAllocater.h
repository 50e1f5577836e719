// Where the value bytes of a data element come from. A host that wants pixel data in memory of its own (shared,
// pinned, pooled) derives from this class; everything else uses the one default instance.
#pragma once

#include "talvenor/Export.h"

class TALVENOR_API MemoryAllocater
{
public:
   constexpr MemoryAllocater() = default;
   MemoryAllocater(const MemoryAllocater&) = default;
   MemoryAllocater& operator=(const MemoryAllocater&) = default;
   virtual ~MemoryAllocater();

   // Returns theSize bytes of unspecified content (never zero-filled), null for a size of 0. Throws BadAllocException
   // with the size when they are not to be had. Called from the threads that use the elements.
   virtual void* Allocate(unsigned int theSize);

   // Takes back what Allocate returned; null is allowed.
   virtual void Free(void* theMemory);

   // The instance used where no other is given. It is there before any code runs and is never destroyed.
   static MemoryAllocater& GetDefault() { return itsDefault; }

private:
   static MemoryAllocater& itsDefault;
};

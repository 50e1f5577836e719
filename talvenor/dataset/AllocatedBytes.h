// Bytes of an element's or fragment's own, and the reading of as many as a length field promises. Not part of the
// library's interface.
#pragma once

#include <memory>

#include "talvenor/dataset/MemoryAllocater.h"
#include "talvenor/foundation/BasicTypes.h"

class InputStream;

struct FreeThrough
{
   MemoryAllocater* itsAllocator;
   void operator()(unsigned char* theBytes) const { itsAllocator->Free(theBytes); }
};

using AllocatedBytes = std::unique_ptr<unsigned char, FreeThrough>;

AllocatedBytes AllocateBytes(MemoryAllocater& theAllocator, UINT32 theSize);

// Reads theLength bytes and returns the number that arrived. When all did, theBytes holds them, from theAllocator, in a
// buffer of even size, an odd value completed with 0; otherwise it is empty. A length that lies costs little memory: up
// to 1 MiB is believed, beyond that the buffer grows with what arrives.
UINT32 ReadAllocatedBytes(InputStream& theStream, UINT32 theLength, MemoryAllocater& theAllocator,
                          AllocatedBytes& theBytes);

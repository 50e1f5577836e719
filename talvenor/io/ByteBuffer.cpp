#include "talvenor/io/ByteBuffer.h"

#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "talvenor/foundation/Exceptions.h"

namespace
{

void Require(bool isPossible, const char* theMessage)
{
   if (!isPossible)
   {
      throw ByteBuffer::ByteBufferException(theMessage, TN_BYTEBUFFER_ERROR, 0);
   }
}

// Storage that a thread has done with and will want again. A sender makes and drops a buffer for every PDU; an
// allocator hands memory of that size back to the system and gets it anew, page by page, each time.
class SpareBlocks
{
public:
   static constexpr std::size_t kSmallest = 32768; // bytes: allocators keep smaller ones themselves
   static constexpr std::size_t kLargest = 262144;

   static SpareBlocks& OfThread();

   // A block of at least that size; null when there is none.
   unsigned char* Take(std::size_t& theSize)
   {
      for (Block& aBlock : itsBlocks)
      {
         if (aBlock.itsSize >= theSize)
         {
            theSize = std::exchange(aBlock.itsSize, 0);
            return std::exchange(aBlock.itsStart, nullptr);
         }
      }
      return nullptr;
   }

   // Keeps the larger ones of what it has and gets.
   void Keep(unsigned char* theStart, std::size_t theSize)
   {
      Block aNew = {theStart, theSize};
      for (Block& aBlock : itsBlocks)
      {
         if (itsAreKept && aBlock.itsSize < aNew.itsSize)
         {
            std::swap(aBlock, aNew);
         }
      }
      delete[] aNew.itsStart;
   }

private:
   struct Block
   {
      unsigned char* itsStart;
      std::size_t itsSize;
   };

   // Has no destructor, as a buffer may outlive the objects of its thread; this one empties it.
   struct Emptier
   {
      ~Emptier();

      SpareBlocks& itsBlocks;
   };

   // Two: the one that goes out and the one that is filled meanwhile.
   std::array<Block, 2> itsBlocks = {};
   bool itsAreKept = true; // until the thread ends: what is dropped after that has static storage
};

SpareBlocks& SpareBlocks::OfThread()
{
   static thread_local constinit SpareBlocks aBlocks;
   [[maybe_unused]] static thread_local const Emptier anEmptier{aBlocks};
   return aBlocks;
}

SpareBlocks::Emptier::~Emptier()
{
   for (Block& aBlock : itsBlocks.itsBlocks)
   {
      delete[] std::exchange(aBlock, {}).itsStart;
   }
   itsBlocks.itsAreKept = false;
}

bool IsLarge(std::size_t theSize)
{
   return theSize >= SpareBlocks::kSmallest && theSize <= SpareBlocks::kLargest;
}

} // namespace

ByteBuffer::ByteBuffer(unsigned int theCapacity) : itsCapacity(theCapacity), itsData(Allocate(theCapacity)) {}

ByteBuffer::ByteBuffer(const ByteBuffer& theOther)
    : itsEnd(theOther.itsEnd), itsStart(theOther.itsStart), itsCapacity(theOther.itsCapacity),
      itsData(Allocate(theOther.itsCapacity))
{
   if (itsStart < itsEnd)
   {
      std::memcpy(itsData.get() + itsStart, theOther.itsData.get() + itsStart, itsEnd - itsStart);
   }
}

ByteBuffer& ByteBuffer::operator=(const ByteBuffer& theOther)
{
   if (this != &theOther)
   {
      ByteBuffer aCopy(theOther);
      itsEnd = aCopy.itsEnd;
      itsStart = aCopy.itsStart;
      itsCapacity = aCopy.itsCapacity;
      itsData.swap(aCopy.itsData);
   }
   return *this;
}

// The storage is not initialised: a buffer is written before it is read, and the pages of a large one cost nothing
// until then.
ByteBuffer::Storage ByteBuffer::Allocate(unsigned int theCapacity)
{
   if (theCapacity == 0)
   {
      return nullptr;
   }
   std::size_t aSize = std::size_t{theCapacity} + theCapacity % 2;
   unsigned char* aStorage = IsLarge(aSize) ? SpareBlocks::OfThread().Take(aSize) : nullptr;
   if (aStorage == nullptr)
   {
      aStorage = new (std::nothrow) unsigned char[aSize];
   }
   if (aStorage == nullptr)
   {
      throw BadAllocException(aSize);
   }
   return Storage(aStorage, Release{aSize});
}

void ByteBuffer::Release::operator()(unsigned char* theStorage) const
{
   if (IsLarge(itsSize))
   {
      SpareBlocks::OfThread().Keep(theStorage, itsSize);
   }
   else
   {
      delete[] theStorage;
   }
}

void ByteBuffer::SetBytesCopiedIn(unsigned int theLength)
{
   Require(theLength <= GetAvailableFreeSpace(), "ByteBuffer::SetBytesCopiedIn(): theLength > GetAvailableFreeSpace()");
   itsEnd += theLength;
}

void ByteBuffer::SetBytesCopiedOut(unsigned int theLength)
{
   Require(theLength <= GetBytesAvailable(), "ByteBuffer::SetBytesCopiedOut(): theLength > GetBytesAvailable()");
   itsStart += theLength;
   ReclaimSpaceIfEmpty();
}

void ByteBuffer::CopyIn(const unsigned char* theBytes, unsigned int theLength)
{
   Require(theLength <= GetAvailableFreeSpace(), "ByteBuffer::CopyIn(): theLength > GetAvailableFreeSpace()");
   if (theLength > 0)
   {
      std::memcpy(itsData.get() + itsEnd, theBytes, theLength);
      itsEnd += theLength;
   }
}

int ByteBuffer::CopyOut(unsigned char* theBytes, unsigned int theLength)
{
   Require(theLength <= GetBytesAvailable(), "ByteBuffer::CopyOut(): theLength > GetBytesAvailable()");
   if (theLength > 0)
   {
      std::memcpy(theBytes, itsData.get() + itsStart, theLength);
      itsStart += theLength;
   }
   ReclaimSpaceIfEmpty();
   return 1;
}

int ByteBuffer::Skip(unsigned int theLength)
{
   Require(theLength <= GetBytesAvailable(), "ByteBuffer::Skip(): theLength > GetBytesAvailable()");
   itsStart += theLength;
   ReclaimSpaceIfEmpty();
   return 1;
}

void ByteBuffer::ReclaimSpace()
{
   const unsigned int anUnread = GetBytesAvailable();
   if (anUnread > 0 && itsStart > 0)
   {
      std::memmove(itsData.get(), itsData.get() + itsStart, anUnread);
   }
   itsStart = 0;
   itsEnd = anUnread;
}

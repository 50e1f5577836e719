#include "talvenor/io/ByteBuffer.h"

#include <cstring>
#include <new>

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
std::unique_ptr<unsigned char[]> ByteBuffer::Allocate(unsigned int theCapacity)
{
   if (theCapacity == 0)
   {
      return nullptr;
   }
   const std::size_t aSize = std::size_t{theCapacity} + theCapacity % 2;
   std::unique_ptr<unsigned char[]> aData(new (std::nothrow) unsigned char[aSize]);
   if (!aData)
   {
      throw BadAllocException(aSize);
   }
   return aData;
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

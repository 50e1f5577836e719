// A first-in, first-out buffer of bytes with a fixed capacity, a read index and a write index.
//
// Bytes are written behind the last one and read from the front; start <= end <= capacity always. The space in front of
// the unread bytes is free again only when the buffer is emptied (both indices return to 0, nothing is moved) or when
// ReclaimSpace moves the unread bytes to the front. Not locked: one producer and one consumer at a time.
#pragma once

#include <cstddef>
#include <memory>

#include "talvenor/foundation/StreamIOException.h"

class TALVENOR_API ByteBuffer
{
public:
   // Thrown, with TN_BYTEBUFFER_ERROR, when more bytes are asked for than are there or offered than fit. The buffer is
   // unchanged then.
   class TALVENOR_API ByteBufferException : public ConcreteException<ByteBufferException, StreamIOException>
   {
   public:
      static constexpr char kTypeName[] = "ByteBuffer::ByteBufferException";
      using ConcreteException::ConcreteException;
   };

   // Without storage; its capacity is 0.
   ByteBuffer() = default;

   // theCapacity is in bytes. Throws BadAllocException when the memory is not to be had.
   explicit ByteBuffer(unsigned int theCapacity);

   // Copies are deep and keep capacity and indices: the unread bytes stand at the same positions.
   ByteBuffer(const ByteBuffer& theOther);
   ByteBuffer& operator=(const ByteBuffer& theOther);

   // Buffers are equal only when they are the same object.
   bool operator==(const ByteBuffer& theOther) const { return this == &theOther; }

   unsigned int GetAllocatedSize() const { return itsCapacity; }
   unsigned int GetAvailableFreeSpace() const { return itsCapacity - itsEnd; }
   unsigned int GetBytesAvailable() const { return itsEnd - itsStart; }

   // Where the next byte goes, or null when no space is free behind the last one; SetBytesCopiedIn tells how many bytes
   // the caller wrote there.
   unsigned char* GetCopyInPointer() { return itsEnd < itsCapacity ? itsData.get() + itsEnd : nullptr; }
   void SetBytesCopiedIn(unsigned int theLength);

   // The next unread byte, or null when there is none; SetBytesCopiedOut tells how many bytes the caller consumed.
   unsigned char* GetCopyOutPointer() { return itsStart < itsEnd ? itsData.get() + itsStart : nullptr; }
   const unsigned char* GetCopyOutPointer() const { return itsStart < itsEnd ? itsData.get() + itsStart : nullptr; }
   void SetBytesCopiedOut(unsigned int theLength);

   void CopyIn(const unsigned char* theBytes, unsigned int theLength);

   // Both return 1.
   int CopyOut(unsigned char* theBytes, unsigned int theLength);
   int Skip(unsigned int theLength);

   void Clear()
   {
      itsStart = 0;
      itsEnd = 0;
   }

   // Moves the unread bytes to the front of the storage.
   void ReclaimSpace();

protected:
   void ReclaimSpaceIfEmpty()
   {
      if (itsStart == itsEnd)
      {
         Clear();
      }
   }

private:
   // Gives storage back. Each thread keeps a few large blocks for the buffers that it makes next: see ByteBuffer.cpp.
   struct Release
   {
      void operator()(unsigned char* theStorage) const;

      std::size_t itsSize; // bytes
   };
   using Storage = std::unique_ptr<unsigned char[], Release>;

   static Storage Allocate(unsigned int theCapacity);

   unsigned int itsEnd = 0;      // one past the last byte written
   unsigned int itsStart = 0;    // the next byte to read
   unsigned int itsCapacity = 0; // as asked for; the storage is rounded up to an even size
   Storage itsData;
};

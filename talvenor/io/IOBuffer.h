// A ByteBuffer that also carries one asynchronous input or output request and its outcome.
#pragma once

#include "talvenor/io/ByteBuffer.h"

class TALVENOR_API IOBuffer : public ByteBuffer
{
public:
   IOBuffer() = default;
   explicit IOBuffer(unsigned int theCapacity) : ByteBuffer(theCapacity) {}

   // Empties the buffer and forgets the outcome; the request (write or read, size) stays.
   void Clear()
   {
      ByteBuffer::Clear();
      itsResultCode = TN_NO_ERROR;
      itsSystemErrorCode = 0;
   }

   TNResultCode GetResultCode() const { return itsResultCode; }
   void SetResultCode(TNResultCode theCode) { itsResultCode = theCode; }

   int GetSystemErrorCode() const { return itsSystemErrorCode; }
   void SetSystemErrorCode(int theCode) { itsSystemErrorCode = theCode; }

   int IsWriteRequest() const { return itsWriteRequested; }
   void SetWriteRequested(int theFlag) { itsWriteRequested = theFlag; }

   unsigned int GetRequestSize() const { return itsRequestSize; }
   void SetRequestSize(unsigned int theSize) { itsRequestSize = theSize; }

private:
   TNResultCode itsResultCode = TN_NO_ERROR;
   int itsSystemErrorCode = 0;
   int itsWriteRequested = 0;
   unsigned int itsRequestSize = 0;
};

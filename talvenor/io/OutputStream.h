// The sink of bytes to which every encoder, file and network layer writes.
//
// Failures throw StreamIOException; an operation that a stream does not have throws one with TN_UNSUPPORTED. Streams
// are not locked: each belongs to one thread at a time. The order of the virtual operations is part of the interface.
#pragma once

#include "talvenor/Export.h"

class IOBuffer;

class TALVENOR_API OutputStream
{
public:
   OutputStream() = default;
   virtual ~OutputStream();

   // Writes the unread bytes of the buffer. The stream takes the buffer and destroys it, also when writing fails; null
   // writes nothing.
   virtual void Write(IOBuffer* theBuffer);

   // Writes all theCount bytes or throws.
   virtual void Write(const unsigned char* theBytes, unsigned int theCount) = 0;

   virtual void Flush() = 0;

   // The largest block in bytes that the stream passes on whole; 0xFFFFFFFF when there is no limit.
   virtual unsigned int GetMaximumOutputBlockSize() const;

   // Accepted and ignored: a stream that has such a limit offers a way of its own to set it.
   void SetMaximumOutputBlockSize(unsigned int) {}

   // thePosition is in bytes from the start of the stream.
   virtual void Seek(unsigned int thePosition);
   virtual int CanSeek() const;
   virtual unsigned int GetStreamPosition() const;

   virtual void Close();

protected:
   OutputStream(const OutputStream&) = default;
   OutputStream& operator=(const OutputStream&) = default;
};

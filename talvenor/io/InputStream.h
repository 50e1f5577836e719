// The source of bytes from which every decoder, file and network layer reads.
//
// Failures throw StreamIOException; an operation that a stream does not have throws one with TN_UNSUPPORTED. Streams
// are not locked: each belongs to one thread at a time. The order of the virtual operations is part of the interface.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API InputStream
{
public:
   InputStream() = default;
   virtual ~InputStream();

   // Returns the number of bytes read, which may be less than theCount; 0 at the end of the stream.
   virtual unsigned int Read(unsigned char* theBuffer, unsigned int theCount) = 0;

   // Returns the number of bytes skipped. By default a stream that can seek moves theCount on (and returns theCount
   // even beyond its end), any other reads until theCount bytes are consumed or a read returns 0.
   virtual unsigned int Skip(unsigned int theCount);

   // thePosition is in bytes from the start of the stream.
   virtual void Seek(unsigned int thePosition);
   virtual int CanSeek() const;

   // The length of the whole stream in bytes; -1 when it is not known.
   virtual INT64 Length() const;

   virtual unsigned int GetStreamPosition() const;

   // Puts bytes in front of the stream: the next reads deliver them. At most GetPushbackLimit bytes at a time.
   virtual void Pushback(const unsigned char* theBytes, unsigned int theCount);
   virtual unsigned int GetPushbackLimit() const;

   // The size of reads in bytes that suits the stream best; 0xFFFFFFFF when it has no preference.
   virtual unsigned int GetPreferredInputBlockSize() const;
   virtual void SetPreferredInputBlockSize(unsigned int theSize);

   virtual void Close() = 0;

   // An addition to the listed operations: reads until theCount bytes have arrived or a read returns 0, and returns the
   // number of bytes that arrived. What has a length of its own, a field or a value, is read with this.
   unsigned int ReadFully(unsigned char* theBuffer, unsigned int theCount)
   {
      const unsigned int aCount = Read(theBuffer, theCount);
      return aCount == theCount || aCount == 0 ? aCount : ReadRest(theBuffer, aCount, theCount);
   }

protected:
   // Streams are copied by those that define what a copy is.
   InputStream(const InputStream&) = default;
   InputStream& operator=(const InputStream&) = default;

private:
   unsigned int ReadRest(unsigned char* theBuffer, unsigned int theBytesRead, unsigned int theCount);
};

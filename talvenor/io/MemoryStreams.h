// Streams over the caller's memory, which is borrowed and must outlive them.
#pragma once

#include "talvenor/io/InputStream.h"
#include "talvenor/io/OutputStream.h"

class TALVENOR_API MemoryInputStream : public InputStream
{
public:
   MemoryInputStream(const unsigned char* theBytes, unsigned int theLength) : itsLength(theLength), itsBytes(theBytes)
   {}

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // A position beyond the end is the end.
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override;
   unsigned int GetStreamPosition() const override;
   void Close() override;

private:
   unsigned int itsLength;
   unsigned int itsPosition = 0;
   const unsigned char* itsBytes;
};

class TALVENOR_API MemoryOutputStream : public OutputStream
{
public:
   MemoryOutputStream(unsigned char* theBuffer, unsigned int theSize) : itsSpace(theSize), itsNext(theBuffer) {}

   using OutputStream::Write;

   // Throws StreamIOException with TN_END_OF_FILE, and copies nothing, when theCount bytes do not fit.
   void Write(const unsigned char* theBytes, unsigned int theCount) override;
   void Flush() override;

private:
   unsigned int itsSpace; // bytes still free
   unsigned char* itsNext;
};

// A stream without bytes, and a stream that swallows them and only counts.
#pragma once

#include "talvenor/io/InputStream.h"
#include "talvenor/io/OutputStream.h"

class TALVENOR_API NullInputStream : public InputStream
{
public:
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override;
   unsigned int GetStreamPosition() const override;
   void Close() override;
};

class TALVENOR_API NullOutputStream : public OutputStream
{
public:
   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override;
   void Flush() override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override;

   // Bytes "written" so far, modulo 2^32.
   unsigned int GetStreamPosition() const override;

private:
   unsigned int itsPosition = 0;
};

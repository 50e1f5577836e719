// A plain file as input and output stream of this library and as a standard stream. It cannot seek as a stream of this
// library; as a standard stream it can.
//
// A file that could not be opened shows in the state of the standard stream (is_open, fail) and in the exception of
// every read and write. Not locked: one thread at a time.
#pragma once

#include <iostream>

#include "talvenor/io/FileStreamBuffer.h"
#include "talvenor/io/InputStream.h"
#include "talvenor/io/OutputStream.h"

class TALVENOR_API FileStream : public InputStream, public OutputStream, public std::iostream
{
public:
   // theProtection (what other programs may do with the file meanwhile) has no meaning on this system.
   FileStream(const char* theName, std::ios_base::openmode theMode, int theProtection = 64);
   ~FileStream() override;

   FileStream(const FileStream&) = delete;
   FileStream& operator=(const FileStream&) = delete;

   // The size in bytes of the buffer of streams made from now on: 4096 at first; 0 leaves the standard buffering.
   // A setting of the whole process, made when it starts.
   static unsigned int GetDefaultBufferSize() { return itsDefaultBufferSize; }
   static void SetDefaultBufferSize(unsigned int theSize) { itsDefaultBufferSize = theSize; }

   using OutputStream::Write;

   // Reads until theCount bytes are there or the file ends.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   void Write(const unsigned char* theBytes, unsigned int theCount) override;
   void Flush() override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override;
   unsigned int GetStreamPosition() const override;

   // Flushes and closes. Throws when what was buffered cannot be written; the file is closed all the same.
   void Close() override;

   bool is_open() const { return itsBuffer.IsOpen(); }
   FileStreamBuffer* rdbuf() { return &itsBuffer; }

private:
   [[noreturn]] void Fail(const char* theMessage);

   static unsigned int itsDefaultBufferSize;

   FileStreamBuffer itsBuffer;
};

#include "talvenor/io/FileStream.h"

#include <cstdio>

#include "talvenor/foundation/StreamIOException.h"

unsigned int FileStream::itsDefaultBufferSize = 4096;

FileStream::FileStream(const char* theName, std::ios_base::openmode theMode, int)
    : std::iostream(nullptr), itsBuffer(itsDefaultBufferSize != 0 ? itsDefaultBufferSize : BUFSIZ)
{
   std::iostream::rdbuf(&itsBuffer);
   if (!itsBuffer.Open(theName, theMode))
   {
      setstate(std::ios_base::failbit);
   }
}

FileStream::~FileStream() = default;

void FileStream::Fail(const char* theMessage)
{
   const int anError = itsBuffer.GetError();
   setstate(std::ios_base::badbit);
   throw StreamIOException(theMessage, TN_SYSTEM_CALL_FAILED, anError);
}

unsigned int FileStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   bool hasFailed = false;
   const auto aCount = static_cast<unsigned int>(itsBuffer.ReadBytes(theBuffer, theCount, hasFailed));
   if (hasFailed)
   {
      Fail("FileStream::Read(): fstream::read failed");
   }
   if (aCount < theCount)
   {
      setstate(std::ios_base::eofbit);
   }
   return aCount;
}

void FileStream::Write(const unsigned char* theBytes, unsigned int theCount)
{
   if (!itsBuffer.WriteBytes(theBytes, theCount))
   {
      Fail("FileStream::Write(): fstream::write failed");
   }
}

void FileStream::Flush()
{
   if (!itsBuffer.Synchronise())
   {
      Fail("FileStream::Flush(): fstream::flush() failed");
   }
}

void FileStream::Seek(unsigned int)
{
   throw StreamIOException("FileStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

int FileStream::CanSeek() const
{
   return 0;
}

unsigned int FileStream::GetStreamPosition() const
{
   throw StreamIOException("FileStream does not support GetStreamPosition()", TN_UNSUPPORTED, 0);
}

void FileStream::Close()
{
   if (itsBuffer.IsOpen() && !itsBuffer.Close())
   {
      Fail("FileStream::Flush(): fstream::flush() failed");
   }
}

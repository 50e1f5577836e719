#include "talvenor/io/LFInputStream.h"

#include <cerrno>

#include "talvenor/foundation/StreamIOException.h"

unsigned int LFInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   bool hasFailed = false;
   const std::size_t aCount = ReadBytes(theBuffer, theCount, hasFailed);
   if (hasFailed)
   {
      throw StreamIOException("LFInputStream::read(): I/O error in fstream::read", TN_SYSTEM_CALL_FAILED, errno);
   }
   return static_cast<unsigned int>(aCount);
}

unsigned int LFInputStream::Skip(unsigned int theCount)
{
   if (!SetPosition(GetPosition() + theCount))
   {
      throw StreamIOException("LFInputStream::Skip(): I/O error", TN_SYSTEM_CALL_FAILED, errno);
   }
   return theCount;
}

void LFInputStream::Seek(unsigned int thePosition)
{
   if (!SetPosition(thePosition))
   {
      throw StreamIOException("LFInputStream::Seek(): I/O error", TN_SYSTEM_CALL_FAILED, errno);
   }
}

int LFInputStream::CanSeek() const
{
   return 1;
}

INT64 LFInputStream::Length() const
{
   return -1;
}

unsigned int LFInputStream::GetStreamPosition() const
{
   return static_cast<unsigned int>(GetPosition());
}

void LFInputStream::Pushback(const unsigned char*, unsigned int)
{
   throw StreamIOException("InputStream does not support Pushback(uchar_t*, size_t)", TN_UNSUPPORTED, 0);
}

unsigned int LFInputStream::GetPushbackLimit() const
{
   return 0;
}

unsigned int LFInputStream::GetPreferredInputBlockSize() const
{
   const unsigned int aSize = GetDefaultBufferSize();
   return aSize != 0 ? aSize : 0xFFFFFFFF;
}

void LFInputStream::Close()
{
   close();
}

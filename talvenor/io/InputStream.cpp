#include "talvenor/io/InputStream.h"

#include <algorithm>

#include "talvenor/foundation/StreamIOException.h"

InputStream::~InputStream() = default;

// The sum is made in 64 bits: a length from a hostile file must never turn a skip into a step back.
unsigned int InputStream::Skip(unsigned int theCount)
{
   if (CanSeek())
   {
      const UINT64 aTarget = UINT64{GetStreamPosition()} + theCount;
      Seek(static_cast<unsigned int>(std::min<UINT64>(aTarget, 0xFFFFFFFF)));
      return theCount;
   }
   unsigned char aBuffer[2048];
   unsigned int aSkipped = 0;
   while (aSkipped < theCount)
   {
      const unsigned int aCount = Read(aBuffer, std::min<unsigned int>(theCount - aSkipped, sizeof aBuffer));
      if (aCount == 0)
      {
         break;
      }
      aSkipped += aCount;
   }
   return aSkipped;
}

void InputStream::Seek(unsigned int)
{
   throw StreamIOException("InputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

int InputStream::CanSeek() const
{
   return 0;
}

INT64 InputStream::Length() const
{
   return -1;
}

unsigned int InputStream::GetStreamPosition() const
{
   throw StreamIOException("InputStream does not support GetStreamPosition()", TN_UNSUPPORTED, 0);
}

void InputStream::Pushback(const unsigned char*, unsigned int)
{
   throw StreamIOException("InputStream does not support Pushback(uchar_t*, size_t)", TN_UNSUPPORTED, 0);
}

unsigned int InputStream::GetPushbackLimit() const
{
   return 0;
}

unsigned int InputStream::GetPreferredInputBlockSize() const
{
   return 0xFFFFFFFF;
}

void InputStream::SetPreferredInputBlockSize(unsigned int) {}

unsigned int InputStream::ReadRest(unsigned char* theBuffer, unsigned int theBytesRead, unsigned int theCount)
{
   unsigned int aTotal = theBytesRead;
   while (aTotal < theCount)
   {
      const unsigned int aCount = Read(theBuffer + aTotal, theCount - aTotal);
      if (aCount == 0)
      {
         break;
      }
      aTotal += aCount;
   }
   return aTotal;
}

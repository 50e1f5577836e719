#include "talvenor/io/NullStreams.h"

#include "talvenor/foundation/StreamIOException.h"

unsigned int NullInputStream::Read(unsigned char*, unsigned int)
{
   return 0;
}

void NullInputStream::Seek(unsigned int)
{
   throw StreamIOException("NullInputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

int NullInputStream::CanSeek() const
{
   return 0;
}

unsigned int NullInputStream::GetStreamPosition() const
{
   throw StreamIOException("NullInputStream does not support GetStreamPosition()", TN_UNSUPPORTED, 0);
}

void NullInputStream::Close() {}

void NullOutputStream::Write(const unsigned char*, unsigned int theCount)
{
   itsPosition += theCount;
}

void NullOutputStream::Flush() {}

void NullOutputStream::Seek(unsigned int thePosition)
{
   itsPosition = thePosition;
}

int NullOutputStream::CanSeek() const
{
   return 1;
}

unsigned int NullOutputStream::GetStreamPosition() const
{
   return itsPosition;
}

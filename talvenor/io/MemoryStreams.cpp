#include "talvenor/io/MemoryStreams.h"

#include <algorithm>
#include <cstring>

#include "talvenor/foundation/StreamIOException.h"

unsigned int MemoryInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aCount = std::min(theCount, itsLength - itsPosition);
   if (aCount > 0)
   {
      std::memcpy(theBuffer, itsBytes + itsPosition, aCount);
      itsPosition += aCount;
   }
   return aCount;
}

void MemoryInputStream::Seek(unsigned int thePosition)
{
   itsPosition = std::min(thePosition, itsLength);
}

int MemoryInputStream::CanSeek() const
{
   return 1;
}

unsigned int MemoryInputStream::GetStreamPosition() const
{
   return itsPosition;
}

void MemoryInputStream::Close() {}

void MemoryOutputStream::Write(const unsigned char* theBytes, unsigned int theCount)
{
   if (theCount > itsSpace)
   {
      throw StreamIOException("MemoryOutputBuffer::Write(): attempt to write beyond buffer end", TN_END_OF_FILE, 0);
   }
   if (theCount > 0)
   {
      std::memcpy(itsNext, theBytes, theCount);
      itsNext += theCount;
      itsSpace -= theCount;
   }
}

void MemoryOutputStream::Flush() {}

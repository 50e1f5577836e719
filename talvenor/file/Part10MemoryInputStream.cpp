#include "talvenor/file/Part10MemoryInputStream.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/StreamIOException.h"

namespace
{
// Only a null address is told: whether memory can be read is the caller's to know.
void CheckMemory(const char* theMethod, const void* theAddress, UINT32 theLength)
{
   if (theAddress != nullptr || theLength == 0)
   {
      return;
   }
   char aText[200];
   std::snprintf(aText, sizeof aText,
                 "Part10MemoryInputStream::%s: Invalid buffer address or length (memory at least partially unreadable "
                 "by this process): Buffer address = 0x%" PRIxPTR " Length = %" PRIu32,
                 theMethod, reinterpret_cast<uintptr_t>(theAddress), theLength);
   throw TNRuntimeException(aText);
}
} // namespace

Part10MemoryInputStream::Part10MemoryInputStream(unsigned char* theBuffer, UINT32 theSize, int theForceDefaultVersion,
                                                 int theTolerant)
    : itsSize(theSize), itsOwned(theBuffer), itsBuffer(theBuffer)
{
   CheckMemory("Part10MemoryInputStream", itsBuffer, itsSize);
   Part10InputStream::Open(theForceDefaultVersion, theTolerant);
}

Part10MemoryInputStream::Part10MemoryInputStream(UINT32 theSize, const unsigned char* const& theBuffer,
                                                 int theForceDefaultVersion, int theTolerant)
    : itsSize(theSize), itsBuffer(theBuffer)
{
   CheckMemory("Part10MemoryInputStream", itsBuffer, itsSize);
   Part10InputStream::Open(theForceDefaultVersion, theTolerant);
}

Part10MemoryInputStream::~Part10MemoryInputStream() = default;

void Part10MemoryInputStream::Close()
{
   Part10InputStream::Close();
   itsIsOpen = false;
   itsOwned.reset();
   itsBuffer = nullptr;
}

unsigned int Part10MemoryInputStream::ReadImpl(unsigned char* theBuffer, unsigned int theCount)
{
   if (!itsIsOpen)
   {
      throw StreamIOException("Part10MemoryInputStream::Read(): Stream is not open", TN_INVALID_FILE_HANDLE, 0);
   }
   CheckMemory("ReadImpl", theBuffer, theCount);
   const UINT32 aCount = itsReadPosition < itsSize ? std::min(theCount, itsSize - itsReadPosition) : 0;
   if (aCount != 0)
   {
      std::memcpy(theBuffer, itsBuffer + itsReadPosition, aCount);
      itsReadPosition += aCount;
   }
   return aCount;
}

void Part10MemoryInputStream::SeekImpl(unsigned int thePosition)
{
   itsReadPosition = thePosition;
}

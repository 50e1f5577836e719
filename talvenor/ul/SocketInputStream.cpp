#include "talvenor/ul/SocketInputStream.h"

#include <algorithm>
#include <limits>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/ul/Socket.h"

SocketInputStream::~SocketInputStream() = default;

unsigned int SocketInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   constexpr unsigned int kMost = std::numeric_limits<int>::max();
   unsigned int aCount = 0;
   while (!itsIsAtEnd && aCount < theCount)
   {
      const int aPart = itsSocket.ReadBinary(theBuffer + aCount, static_cast<int>(std::min(theCount - aCount, kMost)));
      if (aPart > 0)
      {
         aCount += static_cast<unsigned int>(aPart);
      }
      else if (itsSocket.GetResultCode() == TN_END_OF_FILE)
      {
         itsIsAtEnd = true;
      }
      else
      {
         throw StreamIOException("SocketInputStream::Read(uchar_t*, size_t): Socket IO Error",
                                 itsSocket.GetResultCode(), itsSocket.GetSystemErrorCode());
      }
   }
   return aCount;
}

void SocketInputStream::Close()
{
   itsSocket.Close();
}

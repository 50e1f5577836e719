#include "talvenor/ul/SocketOutputStream.h"

#include <algorithm>
#include <limits>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/ul/Socket.h"

SocketOutputStream::~SocketOutputStream() = default;

void SocketOutputStream::Write(const unsigned char* theBytes, unsigned int theCount)
{
   constexpr unsigned int kMost = std::numeric_limits<int>::max();
   while (theCount != 0)
   {
      const int aPart = itsSocket.SendBinary(theBytes, static_cast<int>(std::min(theCount, kMost)));
      if (aPart <= 0)
      {
         throw StreamIOException("SocketOutputStream::Write(uchar_t*, size_t): Socket IO Error",
                                 itsSocket.GetResultCode(), itsSocket.GetSystemErrorCode());
      }
      theBytes += aPart;
      theCount -= static_cast<unsigned int>(aPart);
   }
}

void SocketOutputStream::Close()
{
   itsSocket.Close();
}

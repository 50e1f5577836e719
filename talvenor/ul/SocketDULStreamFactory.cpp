#include "talvenor/ul/SocketDULStreamFactory.h"

#include <memory>

#include "talvenor/ul/SocketDULStream.h"

SocketDULStreamFactory& SocketDULStreamFactory::GetInstance()
{
   static SocketDULStreamFactory anInstance;
   return anInstance;
}

DULStream* SocketDULStreamFactory::GetConnectedDULStream(const RWCString& theHost, const RWCString& thePort)
{
   auto aStream = std::make_unique<SocketDULStream>();
   aStream->Open(theHost, thePort);
   return aStream.release();
}

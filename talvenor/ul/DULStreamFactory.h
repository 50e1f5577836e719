// Makes the connected streams over which an association is requested. The base makes none; SocketDULStreamFactory
// connects by TCP. A factory has no state: any thread may use it.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class DULStream;

class TALVENOR_API DULStreamFactory
{
public:
   DULStreamFactory() = default;
   DULStreamFactory(const DULStreamFactory&) = delete;
   DULStreamFactory& operator=(const DULStreamFactory&) = delete;
   virtual ~DULStreamFactory();

   // The caller owns the stream; null when the factory makes none. Throws StreamIOException when there is no
   // connection. theHost is a name or a dotted address, thePort a number or the name of a service.
   virtual DULStream* GetConnectedDULStream(const RWCString& theHost, const RWCString& thePort);
};

// Connects by TCP (SocketDULStream).
#pragma once

#include "talvenor/ul/DULStreamFactory.h"

class TALVENOR_API SocketDULStreamFactory final : public DULStreamFactory
{
public:
   // The one factory of the process. It may be asked for at any time, also while globals are built.
   static SocketDULStreamFactory& GetInstance();

   // Block sizes of the stream are 32768. Throws what SocketDULStream::Open throws.
   DULStream* GetConnectedDULStream(const RWCString& theHost, const RWCString& thePort) override;

private:
   SocketDULStreamFactory() = default;
};

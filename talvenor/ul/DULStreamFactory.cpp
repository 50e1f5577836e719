#include "talvenor/ul/DULStreamFactory.h"

DULStreamFactory::~DULStreamFactory() = default;

DULStream* DULStreamFactory::GetConnectedDULStream(const RWCString&, const RWCString&)
{
   return nullptr;
}

#include "talvenor/foundation/TNXInitializer.h"

#include "talvenor/io/LFStream.h"

void TNXInitializer::SetDefaultFileLockWaitTime(unsigned int theSeconds)
{
   LFStream::SetDefaultLockWaitTime(theSeconds);
}

void TNXInitializer::SetDefaultFileBufferSize(unsigned int theSize)
{
   LFStream::SetDefaultBufferSize(theSize);
}

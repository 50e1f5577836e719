#include "talvenor/io/OutputStream.h"

#include <memory>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/IOBuffer.h"

OutputStream::~OutputStream() = default;

void OutputStream::Write(IOBuffer* theBuffer)
{
   const std::unique_ptr<IOBuffer> aBuffer(theBuffer);
   if (aBuffer && aBuffer->GetBytesAvailable() > 0)
   {
      Write(aBuffer->GetCopyOutPointer(), aBuffer->GetBytesAvailable());
   }
}

unsigned int OutputStream::GetMaximumOutputBlockSize() const
{
   return 0xFFFFFFFF;
}

void OutputStream::Seek(unsigned int)
{
   throw StreamIOException("OutputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

int OutputStream::CanSeek() const
{
   return 0;
}

unsigned int OutputStream::GetStreamPosition() const
{
   throw StreamIOException("OutputStream does not support GetStreamPosition()", TN_UNSUPPORTED, 0);
}

void OutputStream::Close() {}

#include "talvenor/file/Part10OutputStreamOutputStream.h"

#include <utility>

#include "talvenor/foundation/StreamIOException.h"

Part10OutputStreamOutputStream::Part10OutputStreamOutputStream(Part10Header* theHeader) : Part10OutputStream(theHeader)
{}

Part10OutputStreamOutputStream::Part10OutputStreamOutputStream(const Part10Header& theHeader)
    : Part10OutputStream(theHeader)
{}

Part10OutputStreamOutputStream::~Part10OutputStreamOutputStream() = default;

void Part10OutputStreamOutputStream::Open(OutputStream& theStream)
{
   itsStream = &theStream;
   WriteHeader();
}

void Part10OutputStreamOutputStream::WriteImpl(const unsigned char* theBytes, unsigned int theCount)
{
   if (itsStream == nullptr)
   {
      throw StreamIOException("Part10OutputStreamOutputStream::Write: Stream is not open", TN_INVALID_FILE_HANDLE, 0);
   }
   itsStream->Write(theBytes, theCount);
}

void Part10OutputStreamOutputStream::Flush()
{
   if (itsStream != nullptr)
   {
      itsStream->Flush();
   }
}

unsigned int Part10OutputStreamOutputStream::GetMaximumOutputBlockSize() const
{
   return itsStream != nullptr ? itsStream->GetMaximumOutputBlockSize() : OutputStream::GetMaximumOutputBlockSize();
}

void Part10OutputStreamOutputStream::Close()
{
   if (OutputStream* const aStream = std::exchange(itsStream, nullptr))
   {
      aStream->Close();
   }
}

#include "talvenor/file/Part10InputStreamInputStream.h"

#include <algorithm>
#include <utility>

#include "talvenor/foundation/StreamIOException.h"

Part10InputStreamInputStream::~Part10InputStreamInputStream() = default;

void Part10InputStreamInputStream::Open(InputStream& theStream, int theForceDefaultVersion, int theTolerant)
{
   itsStream = &theStream;
   itsKnowsFileSize = theStream.Length() >= 0;
   Part10InputStream::Open(theForceDefaultVersion, theTolerant);
}

int Part10InputStreamInputStream::CanSeek() const
{
   return itsStream != nullptr ? itsStream->CanSeek() : 0;
}

void Part10InputStreamInputStream::Close()
{
   Part10InputStream::Close();
   if (InputStream* const aStream = std::exchange(itsStream, nullptr))
   {
      aStream->Close();
   }
}

UINT32 Part10InputStreamInputStream::GetFileSize() const
{
   const INT64 aLength = itsStream != nullptr ? itsStream->Length() : -1;
   return static_cast<UINT32>(std::clamp<INT64>(aLength, 0, 0xFFFFFFFF));
}

unsigned int Part10InputStreamInputStream::ReadImpl(unsigned char* theBuffer, unsigned int theCount)
{
   if (itsStream == nullptr)
   {
      throw StreamIOException("Part10InputStreamInputStream::Read(): Stream is not open", TN_INVALID_FILE_HANDLE, 0);
   }
   return itsStream->Read(theBuffer, theCount);
}

void Part10InputStreamInputStream::SeekImpl(unsigned int thePosition)
{
   if (itsStream == nullptr)
   {
      throw StreamIOException("Part10InputStreamInputStream::Seek: Stream is not open", TN_INVALID_FILE_HANDLE, 0);
   }
   itsStream->Seek(thePosition);
}

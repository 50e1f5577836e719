#include "talvenor/file/Part10InputStreamInputStream.h"

#include <algorithm>

#include "talvenor/foundation/StreamIOException.h"

Part10InputStreamInputStream::~Part10InputStreamInputStream() = default;

void Part10InputStreamInputStream::Open(InputStream& theStream, int theForceDefaultVersion, int theTolerant)
{
   itsStream = &theStream;
   Part10InputStream::Open(theForceDefaultVersion, theTolerant);
}

int Part10InputStreamInputStream::CanSeek() const
{
   return itsStream != nullptr ? itsStream->CanSeek() : 0;
}

void Part10InputStreamInputStream::Close()
{
   if (itsStream != nullptr)
   {
      itsStream->Close();
      itsStream = nullptr;
   }
}

bool Part10InputStreamInputStream::KnowsFileSize() const
{
   return itsStream != nullptr && itsStream->Length() >= 0;
}

UINT32 Part10InputStreamInputStream::GetFileSize() const
{
   return KnowsFileSize() ? static_cast<UINT32>(std::min<INT64>(itsStream->Length(), 0xFFFFFFFF)) : 0;
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

#include "talvenor/file/Part10FileInputStream.h"

#include <algorithm>
#include <cerrno>

#include "talvenor/file/LockedOpen.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNTrace.h"

Part10FileInputStream::Part10FileInputStream(const RWCString& thePath, int theForceDefaultVersion, int theTolerant)
    : itsPath(thePath)
{
   Part10FileInputStream::OpenFile();
   Part10InputStream::Open(theForceDefaultVersion, theTolerant);
}

Part10FileInputStream::~Part10FileInputStream()
{
   Part10FileInputStream::Close();
}

void Part10FileInputStream::OpenFile()
{
   const LockedOpen aFile{"Part10FileInputStream", "DICOMObject::LoadFromFile", LFStream::Shared, itsPath};
   aFile.Open(itsStream);
   if (!itsStream.GetFileLength(itsFileSize))
   {
      const RWCString aText = "Part10FileInputStream::Open(" + itsPath + "): File open failed";
      throw StreamIOException(aText.c_str(), TN_SYSTEM_CALL_FAILED, errno);
   }
   if (itsFileSize == 0)
   {
      const RWCString aText = "Part10FileInputStream::Open(" + itsPath + "): Empty file";
      throw StreamIOException(aText.c_str(), TN_PARSE_TO_OBJECT_FAILED, 0);
   }
}

UINT32 Part10FileInputStream::GetFileSize() const
{
   return static_cast<UINT32>(std::min<UINT64>(itsFileSize, 0xFFFFFFFF));
}

void Part10FileInputStream::Close()
{
   Part10InputStream::Close();
   if (!itsStream.is_open())
   {
      return;
   }
   itsStream.close(); // unlocks first
   if (gTNTracer(TNTrace::TNTraceFileIO))
   {
      startentry(gTNTracer) << "Part10FileInputStream::Close() (\"" << itsPath << "\"): File is unlocked.\n"
                            << endentry;
   }
}

unsigned int Part10FileInputStream::ReadImpl(unsigned char* theBuffer, unsigned int theCount)
{
   bool hasFailed = false;
   const size_t aCount = itsStream.ReadBytes(theBuffer, theCount, hasFailed);
   if (hasFailed)
   {
      const int anError = errno;
      if (!itsStream.is_open())
      {
         throw StreamIOException("Part10FileInputStream::Read(): file is not open", TN_INVALID_FILE_HANDLE, 0);
      }
      throw StreamIOException("Part10FileInputStream::Read(): itsLockStream->read failed", TN_SYSTEM_CALL_FAILED,
                              anError);
   }
   return static_cast<unsigned int>(aCount);
}

void Part10FileInputStream::SeekImpl(unsigned int thePosition)
{
   if (!itsStream.is_open())
   {
      throw StreamIOException("Part10FileInputStream::Seek: file is not open", TN_INVALID_FILE_HANDLE, 0);
   }
   if (!CanSeek())
   {
      throw StreamIOException("Part10FileInputStream::Seek: seek not supported", TN_INTERNAL_ERROR, 0);
   }
   if (!itsStream.SetPosition(thePosition))
   {
      throw StreamIOException("Part10FileInputStream::Seek: seek failed", TN_SYSTEM_CALL_FAILED, errno);
   }
}

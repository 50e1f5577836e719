#include "talvenor/file/Part10FileOutputStream.h"

#include <cerrno>

#include "talvenor/file/LockedOpen.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{
[[noreturn]] void Throw(const char* theText, int theError)
{
   throw StreamIOException(theText, TN_SYSTEM_CALL_FAILED, theError);
}
} // namespace

Part10FileOutputStream::Part10FileOutputStream(const RWCString& thePath, Part10Header* theHeader)
    : Part10OutputStream(theHeader), itsPath(thePath)
{
   OpenFile();
}

Part10FileOutputStream::Part10FileOutputStream(const RWCString& thePath, const Part10Header& theHeader)
    : Part10OutputStream(theHeader), itsPath(thePath)
{
   OpenFile();
}

Part10FileOutputStream::~Part10FileOutputStream()
{
   const bool isTold = !itsStream.good();
   if (!CloseFile() && !isTold)
   {
      startentry(gTNErrorLog) << "Part10FileOutputStream::Close(\"" << itsPath
                              << "\"): the file is not whole. errno = " << itsStream.rdbuf()->GetError() << "\n"
                              << endentry;
   }
}

void Part10FileOutputStream::OpenFile()
{
   const LockedOpen aFile{"Part10FileOutputStream", "Part10FileOutputStream::Open", LFStream::Exclusive, itsPath};
   aFile.Open(itsStream);
   WriteHeader();
}

void Part10FileOutputStream::WriteImpl(const unsigned char* theBytes, unsigned int theCount)
{
   if (!itsStream.is_open())
   {
      throw StreamIOException("Part10FileOutputStream::Write: file is not open", TN_INVALID_FILE_HANDLE, 0);
   }
   if (!itsStream.WriteBytes(theBytes, theCount))
   {
      Throw("Part10OutputFileStream::Write(): itsLockStream->write failed", errno);
   }
}

void Part10FileOutputStream::Flush()
{
   if (!itsStream.FlushBytes())
   {
      Throw("Part10OutputFileStream::Flush(): itsLockStream->flush() failed", errno);
   }
}

void Part10FileOutputStream::Seek(unsigned int thePosition)
{
   SeekImpl(thePosition);
}

void Part10FileOutputStream::SeekImpl(unsigned int thePosition)
{
   if (!itsStream.FlushBytes())
   {
      Throw("Part10OutputFileStream::Seek(): itsLockStream->flush() failed", errno);
   }
   if (!itsStream.SetPosition(thePosition))
   {
      Throw("Part10OutputFileStream::Seek(): itsLockStream->seek() failed", errno);
   }
}

// The system tells some failures only here: a full disk at the last bytes, a file server at the close.
void Part10FileOutputStream::Close()
{
   if (!CloseFile())
   {
      Throw("Part10OutputFileStream::Flush(): itsLockStream->flush() failed", itsStream.rdbuf()->GetError());
   }
}

// False when a byte of the file was lost, at any time since it was opened.
bool Part10FileOutputStream::CloseFile()
{
   if (!itsStream.is_open())
   {
      return true;
   }
   itsStream.close(); // writes what is buffered, then unlocks
   if (gTNTracer(TNTrace::TNTraceFileIO))
   {
      startentry(gTNTracer) << "Part10FileOutputStream::Close(\"" << itsPath << "\"): File is unlocked.\n" << endentry;
   }
   return !itsStream.fail();
}

#include "talvenor/file/LockedOpen.h"

#include <cerrno>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{
constexpr UINT64 kPauseMilliseconds = 1000;

template <class Text>
void Trace(const RWCString& thePrefix, const Text& theText)
{
   if (gTNTracer(TNTrace::TNTraceFileIO))
   {
      startentry(gTNTracer) << thePrefix << theText << "\n" << endentry;
   }
}
} // namespace

void LockedOpen::Open(LFStream& theStream) const
{
   // The wait time counts attempts, a second apart. What keeps a file from us here is another's lock: opening itself
   // does not conflict, and a file that may not be opened will not become ours by waiting.
   const unsigned int anAttempts = LFStream::GetDefaultLockWaitTime();
   for (unsigned int anAttempt = 1;; ++anAttempt)
   {
      if (!TryOpen(theStream))
      {
         const int anError = errno;
         startentry(gTNErrorLog) << LinePrefix() << "Unable to open file. errno = " << anError << "\n" << endentry;
         Throw("File open failed", anError != 0 ? TN_SYSTEM_CALL_FAILED : TN_INVALID_FILE_HANDLE, anError);
      }
      Trace(LinePrefix(), "Attempting to lock file.");
      if (TryLock(theStream))
      {
         Trace(LinePrefix(), "File is locked.");
         return;
      }
      const int anError = errno;
      theStream.close();
      theStream.clear();
      if (anError != EDEADLK)
      {
         Throw("File locking failed", TN_LOCK_WAIT_TIMED_OUT, anError);
      }
      Trace(LinePrefix(), "Unable to open locked file. errno = " + std::to_string(anError) + " Try again.");
      if (anAttempts != 0 && anAttempt >= anAttempts)
      {
         startentry(gTNErrorLog) << LinePrefix() << "Unable to open after " << anAttempts
                                 << " tries. errno = " << anError << "\n"
                                 << endentry;
         Throw("File open failed", TN_LOCK_WAIT_TIMED_OUT, anError);
      }
      SystemClock::Get().Sleep(kPauseMilliseconds);
   }
}

bool LockedOpen::TryOpen(LFStream& theStream) const
{
   errno = 0;
   if (itsMode == LFStream::Exclusive)
   {
      theStream.OpenKeeping(itsPath.c_str()); // a reader must not lose its bytes before we hold the lock
   }
   else
   {
      theStream.open(itsPath.c_str(), std::ios_base::in | std::ios_base::binary);
   }
   return theStream.is_open();
}

bool LockedOpen::TryLock(LFStream& theStream) const
{
   if (!theStream.LockNB(itsMode))
   {
      return false;
   }
   // A file that is empty stays alone: some file systems write a file that was cut to nothing to the disk when it is
   // closed.
   UINT64 aLength = 0;
   const bool isEmpty = theStream.GetFileLength(aLength) && aLength == 0;
   return itsMode != LFStream::Exclusive || isEmpty || theStream.Truncate(0) ||
          errno == EINVAL; // a device has no length to cut
}

void LockedOpen::Throw(const char* theText, TNResultCode theCode, int theError) const
{
   const RWCString aText = RWCString(itsClass) + "::Open(" + itsPath + "): " + theText;
   throw StreamIOException(aText.c_str(), theCode, theError);
}

RWCString LockedOpen::LinePrefix() const
{
   return RWCString(itsTracePrefix) + "(\"" + itsPath + "\"): ";
}

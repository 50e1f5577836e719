#include "talvenor/io/LFStream.h"

#include <cerrno>

#include "talvenor/foundation/MutexWhileInScope.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/io/LFStreamLockTable.h"

unsigned int LFStream::itsDefaultLockWaitTime = 0;
unsigned int LFStream::itsDefaultBufferSize = 4096;
constinit Mutex LFStream::itsLockTableMutex;

namespace
{

constexpr int kRetryPause = 1000; // milliseconds

int Refused(int theError)
{
   errno = theError;
   return 0;
}

} // namespace

// How long a request for a lock goes on trying.
class LFStream::Patience
{
public:
   static Patience None() { return Patience(false, false); }

   // A limit of theWaitSeconds + 1 seconds from now on; none when theWaitSeconds is 0 or less.
   static Patience Of(int theWaitSeconds)
   {
      Patience aPatience(theWaitSeconds <= 0, true);
      if (!aPatience.IsEndless())
      {
         aPatience.itsDeadline = SystemClock::Get().MonotonicMilliseconds() + (INT64{theWaitSeconds} + 1) * 1000;
      }
      return aPatience;
   }

   bool IsEndless() const { return itsEndless; }

   // Pauses before the next attempt; false when there is to be none.
   bool Pause() const
   {
      SystemClock& aClock = SystemClock::Get();
      if (!itsRetrying || (!itsEndless && aClock.MonotonicMilliseconds() >= itsDeadline))
      {
         return false;
      }
      aClock.Sleep(kRetryPause);
      return true;
   }

private:
   Patience(bool isEndless, bool isRetrying) : itsEndless(isEndless), itsRetrying(isRetrying) {}

   bool itsEndless;
   bool itsRetrying;
   INT64 itsDeadline = 0; // of the monotonic clock
};

// --- Opening and closing ---------------------------------------------------------------------------------------------

// A stream made with an explicit buffer size of 0 is unbuffered; so is one of the default size when that is 0.
LFStream::LFStream() : LFStream(BufferSize()) {}

LFStream::LFStream(const BufferSize& theBufferSize)
    : std::iostream(nullptr), itsBuffer(theBufferSize.size() != 0 ? theBufferSize.size() : itsDefaultBufferSize)
{
   std::iostream::rdbuf(&itsBuffer);
}

LFStream::LFStream(const char* theName, std::ios_base::openmode theMode, int theProtection)
    : LFStream(theName, theMode, theProtection, itsDefaultBufferSize)
{}

LFStream::LFStream(const char* theName, std::ios_base::openmode theMode, int theProtection, unsigned int theBufferSize)
    : std::iostream(nullptr), itsBuffer(theBufferSize)
{
   std::iostream::rdbuf(&itsBuffer);
   open(theName, theMode, theProtection);
}

LFStream::~LFStream()
{
   CloseFile();
}

void LFStream::open(const char* theName, std::ios_base::openmode theMode, int theProtection)
{
   itsMode = theMode;
   itsProtection = theProtection;
   Opened(itsBuffer.Open(theName, theMode));
}

void LFStream::OpenKeeping(const char* theName)
{
   itsMode = std::ios_base::in | std::ios_base::out | std::ios_base::binary;
   Opened(itsBuffer.OpenKeeping(theName));
}

// As for a standard file stream: success clears the state, failure adds to it. errno tells why.
void LFStream::Opened(bool isOpen)
{
   const int anError = itsBuffer.GetError();
   if (isOpen)
   {
      clear();
   }
   else
   {
      setstate(std::ios_base::failbit);
      errno = anError;
   }
}

void LFStream::close()
{
   if (!CloseFile())
   {
      setstate(std::ios_base::failbit);
   }
}

// The locks go last, when all is written, and whatever happens: nobody could release them later.
bool LFStream::CloseFile()
{
   MutexWhileInScope aGuard(itsMutex);
   const bool isWritten = itsBuffer.Synchronise();
   if (itsLocked)
   {
      itsBuffer.GetFile().Unlock();
      itsLocked = false;
      ReleaseIntraProcessLock();
   }
   return itsBuffer.Close() && isWritten;
}

// --- Locks -----------------------------------------------------------------------------------------------------------

int LFStream::Lock(int theWaitSeconds, int theMode)
{
   MutexWhileInScope aGuard(itsMutex);
   return LockWith(Patience::Of(theWaitSeconds), theMode);
}

int LFStream::LockNB(int theMode)
{
   MutexWhileInScope aGuard(itsMutex);
   return LockWith(Patience::None(), theMode);
}

int LFStream::LockWith(const Patience& thePatience, int theMode)
{
   if (itsLocked)
   {
      return Refused(EDEADLK);
   }
   if (!itsFileID.ReadFrom(itsBuffer.GetFile()))
   {
      return Refused(EBADF);
   }
   const bool isExclusive = theMode == Exclusive;
   while (!GetIntraProcessLock(!isExclusive))
   {
      if (!thePatience.Pause())
      {
         return Refused(EDEADLK);
      }
   }
   const int anError = InterProcessLock(thePatience, isExclusive);
   if (anError != 0)
   {
      ReleaseIntraProcessLock();
      return Refused(anError);
   }
   itsLocked = true;
   return 1;
}

// Returns 0 or the error number. Without limit the system waits for us, and we are awake at once when the lock is free.
int LFStream::InterProcessLock(const Patience& thePatience, bool isExclusive)
{
   TNPlatform::FileHandle& aFile = itsBuffer.GetFile();
   if (thePatience.IsEndless())
   {
      return aFile.Lock(isExclusive) == TNPlatform::FileHandle::kLocked ? 0 : errno;
   }
   for (;;)
   {
      switch (aFile.TryLock(isExclusive))
      {
      case TNPlatform::FileHandle::kLocked: return 0;
      case TNPlatform::FileHandle::kFailed: return errno;
      case TNPlatform::FileHandle::kHeldElsewhere:
         if (!thePatience.Pause())
         {
            return EDEADLK;
         }
         break;
      }
   }
}

int LFStream::Unlock()
{
   MutexWhileInScope aGuard(itsMutex);
   if (!itsLocked)
   {
      return 0;
   }
   const bool isWritten = itsBuffer.Synchronise();
   if (!itsBuffer.GetFile().Unlock())
   {
      return 0;
   }
   itsLocked = false;
   ReleaseIntraProcessLock();
   if (!isWritten)
   {
      setstate(std::ios_base::badbit);
   }
   return 1;
}

// Made at the first lock and never destroyed: threads may still hold locks while the process exits.
LFStreamLockTable& LFStream::LockTable()
{
   static LFStreamLockTable* const theTable = new LFStreamLockTable;
   return *theTable;
}

int LFStream::GetIntraProcessLock(int theShared)
{
   MutexWhileInScope aGuard(itsLockTableMutex);
   return LockTable().Acquire(itsFileID, theShared != 0) ? 1 : 0;
}

void LFStream::ReleaseIntraProcessLock()
{
   MutexWhileInScope aGuard(itsLockTableMutex);
   LockTable().Release(itsFileID);
}

// --- Length, position, short reads -----------------------------------------------------------------------------------

bool LFStream::GetFileLength(UINT64& theLength)
{
   return Told(itsBuffer.GetLength(theLength));
}

bool LFStream::Truncate(UINT64 theLength)
{
   return Told(itsBuffer.Truncate(theLength));
}

bool LFStream::SetPosition(UINT64 thePosition)
{
   if (!Told(itsBuffer.SetPosition(thePosition)))
   {
      return false;
   }
   if (!good())
   {
      clear(rdstate() & std::ios_base::badbit);
   }
   return true;
}

bool LFStream::Told(bool hasSucceeded)
{
   if (!hasSucceeded)
   {
      errno = itsBuffer.GetError();
   }
   return hasSucceeded;
}

void LFStream::EndedShort(bool hasFailed)
{
   const int anError = itsBuffer.GetError();
   setstate(hasFailed ? std::ios_base::badbit : std::ios_base::eofbit);
   if (hasFailed)
   {
      errno = anError;
   }
}

bool LFStream::LostBytes()
{
   const int anError = itsBuffer.GetError();
   setstate(std::ios_base::badbit);
   errno = anError;
   return false;
}

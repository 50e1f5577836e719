#include "apps/tn/files/PlainFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "talvenor/foundation/StreamIOException.h"

PlainFile::PlainFile(const std::string& thePath)
    : itsDescriptor(::open(thePath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) // a pipe must not hold us
{
   struct stat aStatus
   {};
   if (itsDescriptor < 0 || ::fstat(itsDescriptor, &aStatus) != 0 || !S_ISREG(aStatus.st_mode))
   {
      const int anError = itsDescriptor < 0 ? errno : 0;
      if (itsDescriptor >= 0)
      {
         ::close(itsDescriptor);
      }
      throw StreamIOException(anError != 0 ? "it cannot be opened" : "it is no regular file", TN_OPEN_FAILED, anError);
   }
   itsIdentity = {aStatus.st_dev, aStatus.st_ino, static_cast<UINT64>(aStatus.st_size),
                  aStatus.st_mtim.tv_sec * INT64{1'000'000'000} + aStatus.st_mtim.tv_nsec};
}

PlainFile::~PlainFile()
{
   ::close(itsDescriptor);
}

bool PlainFile::IsBeingWritten() const
{
   return ::flock(itsDescriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

std::size_t PlainFile::ReadAt(void* theBuffer, std::size_t theCount, UINT64 thePosition) const
{
   std::size_t aCount = 0;
   while (aCount < theCount)
   {
      const ssize_t aPart = ::pread(itsDescriptor, static_cast<unsigned char*>(theBuffer) + aCount, theCount - aCount,
                                    static_cast<off_t>(thePosition + aCount));
      if (aPart < 0 && errno != EINTR)
      {
         throw StreamIOException("it cannot be read", TN_SYSTEM_CALL_FAILED, errno);
      }
      if (aPart == 0)
      {
         break;
      }
      aCount += aPart > 0 ? static_cast<std::size_t>(aPart) : 0;
   }
   return aCount;
}

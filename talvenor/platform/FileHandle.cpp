#include "talvenor/platform/FileHandle.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "talvenor/platform/Uninterrupted.h"

namespace TNPlatform
{

namespace
{

int SystemFlags(unsigned int theFlags)
{
   const bool isWriting = (theFlags & FileHandle::kWrite) != 0;
   int aFlags = O_CLOEXEC | O_NOCTTY;
   aFlags |= (theFlags & FileHandle::kRead) == 0 ? O_WRONLY : isWriting ? O_RDWR : O_RDONLY;
   aFlags |= (theFlags & FileHandle::kCreate) != 0 ? O_CREAT : 0;
   aFlags |= (theFlags & FileHandle::kTruncate) != 0 ? O_TRUNC : 0;
   aFlags |= (theFlags & FileHandle::kAppend) != 0 ? O_APPEND : 0;
   return aFlags;
}

// The call takes them without const although it only reads.
iovec Block(const void* theBytes, std::size_t theCount)
{
   return {const_cast<void*>(theBytes), theCount};
}

} // namespace

// Not every file system knows the flag. Those that do not get the two steps, between which another process could still
// slip in.
bool RenameFile(const char* theName, const char* theNewName)
{
   if (::renameat2(AT_FDCWD, theName, AT_FDCWD, theNewName, RENAME_NOREPLACE) == 0)
   {
      return true;
   }
   if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
   {
      return false;
   }
   if (::faccessat(AT_FDCWD, theNewName, F_OK, AT_SYMLINK_NOFOLLOW) == 0)
   {
      errno = EEXIST;
      return false;
   }
   return ::rename(theName, theNewName) == 0;
}

FileHandle::~FileHandle()
{
   if (IsOpen())
   {
      Close();
   }
}

bool FileHandle::Open(const char* theName, unsigned int theFlags)
{
   if (theName == nullptr || IsOpen())
   {
      errno = theName == nullptr ? EINVAL : EBUSY;
      return false;
   }
   itsDescriptor = Uninterrupted([&] { return ::open(theName, SystemFlags(theFlags), 0666); });
   return IsOpen();
}

// Not repeated when interrupted: the descriptor is gone then, and may already be somebody else's.
bool FileHandle::Close()
{
   const int aDescriptor = std::exchange(itsDescriptor, -1);
   return ::close(aDescriptor) == 0 || errno == EINTR;
}

std::ptrdiff_t FileHandle::ReadAt(void* theBuffer, std::size_t theCount, std::uint64_t theOffset)
{
   return Uninterrupted([&] { return ::pread(itsDescriptor, theBuffer, theCount, static_cast<off_t>(theOffset)); });
}

std::ptrdiff_t FileHandle::WriteAt(const void* theBytes, std::size_t theCount, std::uint64_t theOffset)
{
   return Uninterrupted([&] { return ::pwrite(itsDescriptor, theBytes, theCount, static_cast<off_t>(theOffset)); });
}

std::ptrdiff_t FileHandle::WriteAt(const void* theFirst, std::size_t theFirstCount, const void* theSecond,
                                   std::size_t theSecondCount, std::uint64_t theOffset)
{
   const iovec aBlocks[] = {Block(theFirst, theFirstCount), Block(theSecond, theSecondCount)};
   return Uninterrupted([&] { return ::pwritev(itsDescriptor, aBlocks, 2, static_cast<off_t>(theOffset)); });
}

std::ptrdiff_t FileHandle::Read(void* theBuffer, std::size_t theCount)
{
   return Uninterrupted([&] { return ::read(itsDescriptor, theBuffer, theCount); });
}

std::ptrdiff_t FileHandle::Write(const void* theBytes, std::size_t theCount)
{
   return Uninterrupted([&] { return ::write(itsDescriptor, theBytes, theCount); });
}

bool FileHandle::HasPositions() const
{
   return ::lseek(itsDescriptor, 0, SEEK_CUR) >= 0;
}

bool FileHandle::GetInformation(FileInformation& theInformation) const
{
   struct stat aStatus;
   if (::fstat(itsDescriptor, &aStatus) != 0)
   {
      return false;
   }
   theInformation = {aStatus.st_dev, aStatus.st_ino, static_cast<std::uint64_t>(aStatus.st_size)};
   return true;
}

bool FileHandle::Truncate(std::uint64_t theLength)
{
   return Uninterrupted([&] { return ::ftruncate(itsDescriptor, static_cast<off_t>(theLength)); }) == 0;
}

// flock rather than byte-range locks: those ask for write access for an exclusive lock, and the traditional kind
// belongs to the process and is lost as soon as the process closes any descriptor of the file.
FileHandle::LockResult FileHandle::TryLock(bool isExclusive)
{
   if (Uninterrupted([&] { return ::flock(itsDescriptor, (isExclusive ? LOCK_EX : LOCK_SH) | LOCK_NB); }) == 0)
   {
      return kLocked;
   }
   return errno == EWOULDBLOCK ? kHeldElsewhere : kFailed;
}

FileHandle::LockResult FileHandle::Lock(bool isExclusive)
{
   return Uninterrupted([&] { return ::flock(itsDescriptor, isExclusive ? LOCK_EX : LOCK_SH); }) == 0 ? kLocked
                                                                                                      : kFailed;
}

bool FileHandle::Unlock()
{
   return Uninterrupted([&] { return ::flock(itsDescriptor, LOCK_UN); }) == 0;
}

} // namespace TNPlatform

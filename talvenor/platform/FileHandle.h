// An open file of the operating system: what the library asks of files, and nothing more.
//
// Every operation that can fail returns a false or negative value and leaves the reason in errno. Interrupted calls are
// repeated. Descriptors are closed when a program is executed. Not locked: one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "talvenor/Export.h"

namespace TNPlatform
{

// What the operating system knows of an open file. Device and inode together are its identity: stable while the file is
// open, and the same for every name (hard link) of it.
struct FileInformation
{
   std::uint64_t itsDevice;
   std::uint64_t itsInode;
   std::uint64_t itsLength; // bytes
};

// Gives a file another name. False with EEXIST in errno when a file of that name is there already: it is not replaced.
TALVENOR_API bool RenameFile(const char* theName, const char* theNewName);

class TALVENOR_API FileHandle
{
public:
   enum OpenFlags
   {
      kRead = 1,
      kWrite = 2,
      kCreate = 4, // when missing, with permissions 0666 less the umask
      kTruncate = 8,
      kAppend = 16 // every write goes to the end
   };

   enum LockResult
   {
      kLocked,
      kHeldElsewhere,
      kFailed // errno tells why
   };

   FileHandle() = default;
   FileHandle(FileHandle&& theOther) noexcept : itsDescriptor(std::exchange(theOther.itsDescriptor, -1)) {}
   FileHandle& operator=(FileHandle&& theOther) noexcept
   {
      std::swap(itsDescriptor, theOther.itsDescriptor);
      return *this;
   }
   ~FileHandle();

   // theFlags is a sum of OpenFlags. Fails with EBUSY when a file is open already.
   bool Open(const char* theName, unsigned int theFlags);

   // The handle is closed afterwards even when this fails.
   bool Close();

   bool IsOpen() const { return itsDescriptor >= 0; }

   // -1 when not open.
   int GetDescriptor() const { return itsDescriptor; }

   // One read or write: returns the number of bytes transferred (0: end of file), or -1. theOffset is counted from the
   // start of the file; the descriptor's own offset is neither used nor moved.
   std::ptrdiff_t ReadAt(void* theBuffer, std::size_t theCount, std::uint64_t theOffset);
   std::ptrdiff_t WriteAt(const void* theBytes, std::size_t theCount, std::uint64_t theOffset);

   // The same for two blocks, one behind the other, in one call.
   std::ptrdiff_t WriteAt(const void* theFirst, std::size_t theFirstCount, const void* theSecond,
                          std::size_t theSecondCount, std::uint64_t theOffset);

   // The same at the descriptor's own offset: for terminals and pipes, which have no positions.
   std::ptrdiff_t Read(void* theBuffer, std::size_t theCount);
   std::ptrdiff_t Write(const void* theBytes, std::size_t theCount);

   // Whether the file has positions (ReadAt and WriteAt work): false for terminals and pipes.
   bool HasPositions() const;

   bool GetInformation(FileInformation& theInformation) const;
   bool Truncate(std::uint64_t theLength);

   // An advisory lock on the whole file, shared or exclusive, whatever the access mode. It belongs to the open file: it
   // excludes other openings of the file in this and other processes (not copies of this one in children), and ends
   // with Unlock or Close. TryLock does not wait; Lock waits without limit and never tells kHeldElsewhere.
   LockResult TryLock(bool isExclusive);
   LockResult Lock(bool isExclusive);
   bool Unlock();

private:
   int itsDescriptor = -1;
};

} // namespace TNPlatform

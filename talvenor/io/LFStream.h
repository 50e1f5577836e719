// A standard file stream that can lock its whole file, shared or exclusive, against other processes and against other
// streams of this process. It has the members of std::fstream but is a class of its own on std::iostream, because that
// one does not give away the descriptor that is locked.
//
// The locks are advisory: they keep apart those who lock. They belong to the file, not to its name, and do not depend
// on how the file was opened: a stream opened for reading may lock exclusively. Between processes a lock is an flock(2)
// on the descriptor; over NFS the server may ask for write access for exclusive locks. Lock operations return 1, or 0
// with errno: EDEADLK for a lock held elsewhere or a time-out, EBADF for a stream that is not open, else that of the
// system.
//
// The lock operations and close are safe against each other on any threads; reading, writing and unlocking (which
// writes what is buffered) belong to one thread at a time.
#pragma once

#include <atomic>
#include <iostream>

#include "talvenor/foundation/Mutex.h"
#include "talvenor/io/FileStreamBuffer.h"
#include "talvenor/io/LFStreamFileID.h"

class LFStreamLockTable;

class TALVENOR_API LFStream : public std::iostream
{
public:
   // The lock operations take it as a number: every other one is shared, too.
   enum LockMode
   {
      Shared = 0,
      Exclusive = 1
   };

   // The size in bytes of the buffer of a stream; 0 is the default size.
   class BufferSize
   {
   public:
      explicit BufferSize(unsigned int theSize = 0) : itsSize(theSize) {}
      void setSize(unsigned int theSize) { itsSize = theSize; }
      unsigned int size() const { return itsSize; }

   private:
      unsigned int itsSize;
   };

   // Not open, with a buffer of the default size or of the given one.
   LFStream();
   explicit LFStream(const BufferSize& theBufferSize);

   // Opens the file as a standard file stream of that mode does (OpenMode::ToStandard translates stored numbers);
   // is_open and the state of the stream tell whether it succeeded. theProtection (what other programs may do with the
   // file meanwhile) has no meaning on this system.
   // theBufferSize is in bytes; 0 reads and writes unbuffered.
   LFStream(const char* theName, std::ios_base::openmode theMode, int theProtection = 64);
   LFStream(const char* theName, std::ios_base::openmode theMode, int theProtection, unsigned int theBufferSize);

   LFStream(const LFStream&) = delete;
   LFStream& operator=(const LFStream&) = delete;

   // Unlocks and closes.
   ~LFStream() override;

   // Waits while the file is locked elsewhere, trying again once a second: for theWaitSeconds + 1 seconds, or without
   // limit when theWaitSeconds is 0 or less.
   int Lock(int theWaitSeconds, int theMode);
   int Lock() { return Lock(0, Exclusive); }
   int LockShared() { return Lock(0, Shared); }
   int LockExclusive() { return Lock(0, Exclusive); }

   // Does not wait.
   int LockNB(int theMode);

   // Writes what is buffered and forgets what was read ahead, then unlocks. 0 when not locked; 0 with errno, and still
   // locked, when the system refuses.
   int Unlock();
   int IsLocked() const { return itsLocked; }

   // The descriptor, -1 when not open.
   int fd() const { return itsBuffer.GetFile().GetDescriptor(); }
   int FileHandle() const { return fd(); }

   // As std::fstream has them. open fails when a file is open; close sets failbit when what was buffered could not be
   // written.
   void open(const char* theName, std::ios_base::openmode theMode, int theProtection = 64);
   bool is_open() const { return itsBuffer.IsOpen(); }
   void close();
   FileStreamBuffer* rdbuf() { return &itsBuffer; }

   // Additions to the listed operations.

   // Opens for reading and writing, creating the file when it is missing and keeping what is in it. A writer locks the
   // file next, then truncates it, then writes: a reader that holds a lock never sees its file vanish.
   void OpenKeeping(const char* theName);

   // As given when the file was opened.
   std::ios_base::openmode GetOpenMode() const { return itsMode; }
   int GetProtection() const { return itsProtection; }

   // The length of the file in bytes, and its change. False with errno.
   bool GetFileLength(UINT64& theLength);
   bool Truncate(UINT64 theLength);

   // Reads as fast as a file can be read, past the ceremonies of the standard stream, until theCount bytes are there or
   // the file ends; a short count sets eofbit, a failure badbit. The position is that of the standard stream. A failure
   // sets theFailed and errno.
   std::size_t ReadBytes(unsigned char* theBuffer, std::size_t theCount, bool& theFailed)
   {
      const std::size_t aCount = itsBuffer.ReadBytes(theBuffer, theCount, theFailed);
      if (aCount != theCount)
      {
         EndedShort(theFailed);
      }
      return aCount;
   }

   // Writes likewise: all of it, into the buffer or, where it is large, to the file; FlushBytes writes what is
   // buffered. False with errno, and badbit is set, when not all could be written.
   bool WriteBytes(const unsigned char* theBytes, std::size_t theCount)
   {
      return itsBuffer.WriteBytes(theBytes, theCount) || LostBytes();
   }
   bool FlushBytes() { return itsBuffer.Synchronise() || LostBytes(); }

   // 64-bit positions, as fast. SetPosition clears eofbit and failbit; false with errno.
   UINT64 GetPosition() const { return itsBuffer.GetPosition(); }
   bool SetPosition(UINT64 thePosition);

   // How long to wait for a lock, in seconds: 0 at first. Settings of the whole process, made when it starts.
   static unsigned int GetDefaultLockWaitTime() { return itsDefaultLockWaitTime; }
   static void SetDefaultLockWaitTime(unsigned int theSeconds) { itsDefaultLockWaitTime = theSeconds; }

   // The size in bytes of the buffer of streams made from now on: 4096 at first; 0 makes them unbuffered.
   static unsigned int GetDefaultBufferSize() { return itsDefaultBufferSize; }
   static void SetDefaultBufferSize(unsigned int theSize) { itsDefaultBufferSize = theSize; }

protected:
   // The lock within this process on the file recorded in itsFileID. 0 when it is held.
   int GetIntraProcessLock(int theShared);
   void ReleaseIntraProcessLock();

private:
   friend class TNXInitializer;

   class Patience;

   void Opened(bool isOpen);
   bool CloseFile();
   int LockWith(const Patience& thePatience, int theMode);
   int InterProcessLock(const Patience& thePatience, bool isExclusive);
   bool Told(bool hasSucceeded);
   void EndedShort(bool hasFailed);
   bool LostBytes();
   static LFStreamLockTable& LockTable();

   static unsigned int itsDefaultLockWaitTime;
   static unsigned int itsDefaultBufferSize;
   static Mutex itsLockTableMutex; // taken after a stream's own mutex, never held while waiting

   Mutex itsMutex; // held by the lock operations and close
   std::atomic<bool> itsLocked = false;
   LFStreamFileID itsFileID; // of the locked file, as it was when it was locked
   FileStreamBuffer itsBuffer;
   std::ios_base::openmode itsMode{};
   int itsProtection = 64;
};

// The stream buffer under FileStream and LFStream: a standard stream buffer on a file, with a descriptor to lock, a
// buffer of chosen size, 64-bit positions and the number of the last system error.
//
// One buffer serves reading and writing in turn. Requests at least as large as the buffer go straight between the
// caller's memory and the file. Seeking costs no system call (the position is kept here, and the descriptor's own
// offset is not used); within what is buffered it keeps the buffer. sync() writes what is buffered and forgets what was
// read ahead, so that the next read sees what other processes have written.
//
// Through the standard interface a failing system call throws std::ios_base::failure, which a standard stream turns
// into badbit; the operations of this class return counts and truth values and leave the number to GetError. Not
// locked: one thread at a time.
#pragma once

#include <algorithm>
#include <cstring>
#include <ios>
#include <memory>
#include <streambuf>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/platform/FileHandle.h"

class TALVENOR_API FileStreamBuffer : public std::streambuf
{
public:
   // theSize is the size of the buffer in bytes; 0 reads and writes unbuffered. The memory is taken at the first use,
   // which throws BadAllocException when it is not to be had.
   explicit FileStreamBuffer(unsigned int theSize) : itsSize(std::min(theSize, kLargestBuffer)) {}

   // Closes the file.
   ~FileStreamBuffer() override;

   // Opens with the meaning that the standard gives to the mode of a file stream. False (GetError tells why) when a
   // file is open already, the mode is none, or the operating system refuses.
   bool Open(const char* theName, std::ios_base::openmode theMode);

   // Opens for reading and writing, creates the file when it is missing, and keeps what is in it: a writer that locks
   // the file before it truncates it does not pull the bytes from under a reader.
   bool OpenKeeping(const char* theName);

   // False when what was buffered could not be written, or the operating system reports an error; closed all the same.
   bool Close();

   bool IsOpen() const { return itsFile.IsOpen(); }
   TNPlatform::FileHandle& GetFile() { return itsFile; }
   const TNPlatform::FileHandle& GetFile() const { return itsFile; }

   // The number of the error with which the last failed operation failed.
   int GetError() const { return itsError; }

   // Reads until theCount bytes are there, the file ends or a system call fails (theFailed tells: it is set, never
   // cleared), and returns their number.
   std::size_t ReadBytes(unsigned char* theBuffer, std::size_t theCount, bool& theFailed)
   {
      if (theCount - 1 < static_cast<std::size_t>(egptr() - gptr())) // 0 bytes go the other way: gptr may be null
      {
         std::memcpy(theBuffer, gptr(), theCount);
         setg(eback(), gptr() + theCount, egptr());
         return theCount;
      }
      return ReadBeyondBuffer(reinterpret_cast<char*>(theBuffer), theCount, theFailed);
   }

   // Writes all or returns false. What is only buffered has been written in this sense.
   bool WriteBytes(const unsigned char* theBytes, std::size_t theCount);

   // Writes what is buffered and forgets what was read ahead.
   bool Synchronise();

   // The position of the next byte in the file. SetPosition fails for a file without positions (ESPIPE).
   UINT64 GetPosition() const;
   bool SetPosition(UINT64 thePosition);

   // The length of the file, with what is still buffered.
   bool GetLength(UINT64& theLength);

   // Cuts or extends the file (with zeros). The position stays.
   bool Truncate(UINT64 theLength);

protected:
   int_type underflow() override;
   int_type overflow(int_type theCharacter) override;
   int_type pbackfail(int_type theCharacter) override;
   std::streamsize xsgetn(char* theBuffer, std::streamsize theCount) override;
   std::streamsize xsputn(const char* theBytes, std::streamsize theCount) override;
   int sync() override;
   pos_type seekoff(off_type theOffset, std::ios_base::seekdir theDirection, std::ios_base::openmode theWhich) override;
   pos_type seekpos(pos_type thePosition, std::ios_base::openmode theWhich) override;

   // A buffer of the caller's (borrowed), or one of that size when theBuffer is null. Ignored once the buffer is used.
   std::streambuf* setbuf(char* theBuffer, std::streamsize theSize) override;

private:
   static constexpr unsigned int kLargestBuffer = 1U << 30; // the standard moves pointers by int

   enum class Activity
   {
      kNone,    // nothing buffered; itsPosition is the position
      kReading, // itsPosition is that of egptr()
      kWriting  // itsPosition is that of pbase()
   };

   bool Opened(const char* theName, unsigned int theFlags);
   bool Failed(int theError);
   bool HasPositions();
   void NeedBuffer();
   void ForgetBuffered();

   bool StartReading();
   std::size_t ReadBeyondBuffer(char* theBuffer, std::size_t theCount, bool& theFailed);
   std::size_t TakeBuffered(char* theBuffer, std::size_t theCount);
   std::ptrdiff_t Fill();
   std::ptrdiff_t ReadOnce(char* theBuffer, std::size_t theCount);

   bool StartWriting();
   bool WritePending() { return WritePendingAnd(nullptr, 0); }
   std::size_t StraightCount(std::size_t theCount) const;
   bool WritePendingAnd(const char* theBytes, std::size_t theCount);
   std::ptrdiff_t WriteOnce(const char* theFirst, std::size_t theFirstCount, const char* theSecond,
                            std::size_t theSecondCount);

   TNPlatform::FileHandle itsFile;
   std::unique_ptr<char[]> itsOwnBuffer;
   char* itsBuffer = nullptr; // itsOwnBuffer, the caller's, or itsSingle
   std::size_t itsSize;       // 0: unbuffered, then itsSingle serves the standard interface
   char itsSingle = 0;
   Activity itsActivity = Activity::kNone;
   UINT64 itsPosition = 0;
   unsigned int itsFlags = 0; // with which the file was opened
   int itsError = 0;
   signed char itsHasPositions = -1; // -1: not asked yet
};

#include "talvenor/io/FileStreamBuffer.h"

#include <cerrno>
#include <limits>
#include <new>

#include "talvenor/foundation/Exceptions.h"

using TNPlatform::FileHandle;
using TNPlatform::FileInformation;

namespace
{
constexpr std::size_t kPageSize = 4096; // of the cache of the system

struct ModeRow
{
   std::ios_base::openmode itsMode;
   unsigned int itsFlags;
};

constexpr auto kIn = std::ios_base::in;
constexpr auto kOut = std::ios_base::out;
constexpr auto kTrunc = std::ios_base::trunc;
constexpr auto kApp = std::ios_base::app;

// The open modes of the C++ standard ([filebuf.members]), without ate and binary, which change nothing here. Other
// combinations do not open.
constexpr ModeRow kModes[] = {
    {kIn, FileHandle::kRead},
    {kOut, FileHandle::kWrite | FileHandle::kCreate | FileHandle::kTruncate},
    {kOut | kTrunc, FileHandle::kWrite | FileHandle::kCreate | FileHandle::kTruncate},
    {kApp, FileHandle::kWrite | FileHandle::kCreate | FileHandle::kAppend},
    {kOut | kApp, FileHandle::kWrite | FileHandle::kCreate | FileHandle::kAppend},
    {kIn | kOut, FileHandle::kRead | FileHandle::kWrite},
    {kIn | kOut | kTrunc, FileHandle::kRead | FileHandle::kWrite | FileHandle::kCreate | FileHandle::kTruncate},
    {kIn | kApp, FileHandle::kRead | FileHandle::kWrite | FileHandle::kCreate | FileHandle::kAppend},
    {kIn | kOut | kApp, FileHandle::kRead | FileHandle::kWrite | FileHandle::kCreate | FileHandle::kAppend},
};

// 0 when the mode opens nothing.
unsigned int FlagsOf(std::ios_base::openmode theMode)
{
   const auto aMode = theMode & ~(std::ios_base::ate | std::ios_base::binary);
   for (const ModeRow& aRow : kModes)
   {
      if (aRow.itsMode == aMode)
      {
         return aRow.itsFlags;
      }
   }
   return 0;
}

constexpr UINT64 kLastPosition = std::numeric_limits<INT64>::max();

[[noreturn]] void ThrowFailure(const char* theMessage, int theError)
{
   throw std::ios_base::failure(theMessage, std::error_code(theError, std::generic_category()));
}

} // namespace

// --- Opening and closing ---------------------------------------------------------------------------------------------

FileStreamBuffer::~FileStreamBuffer()
{
   if (IsOpen())
   {
      Close();
   }
}

bool FileStreamBuffer::Open(const char* theName, std::ios_base::openmode theMode)
{
   const unsigned int aFlags = FlagsOf(theMode);
   if (aFlags == 0)
   {
      return Failed(EINVAL);
   }
   if (!Opened(theName, aFlags))
   {
      return false;
   }
   if ((theMode & std::ios_base::ate) != 0 && !GetLength(itsPosition))
   {
      itsFile.Close();
      return false;
   }
   return true;
}

bool FileStreamBuffer::OpenKeeping(const char* theName)
{
   return Opened(theName, FileHandle::kRead | FileHandle::kWrite | FileHandle::kCreate);
}

bool FileStreamBuffer::Opened(const char* theName, unsigned int theFlags)
{
   if (!itsFile.Open(theName, theFlags))
   {
      return Failed(errno);
   }
   itsPosition = 0;
   itsFlags = theFlags;
   itsHasPositions = -1;
   return true;
}

bool FileStreamBuffer::Close()
{
   if (!IsOpen())
   {
      return Failed(EBADF);
   }
   const bool isWritten = itsActivity != Activity::kWriting || WritePending();
   ForgetBuffered();
   return (itsFile.Close() || Failed(errno)) && isWritten;
}

bool FileStreamBuffer::Failed(int theError)
{
   itsError = theError;
   return false;
}

// --- The buffer ------------------------------------------------------------------------------------------------------

std::streambuf* FileStreamBuffer::setbuf(char* theBuffer, std::streamsize theSize)
{
   if (itsActivity != Activity::kNone || theSize < 0)
   {
      return nullptr;
   }
   itsOwnBuffer.reset();
   itsBuffer = theSize > 0 ? theBuffer : nullptr;
   itsSize = static_cast<std::size_t>(std::min<std::streamsize>(theSize, kLargestBuffer));
   return this;
}

void FileStreamBuffer::NeedBuffer()
{
   if (itsBuffer == nullptr)
   {
      if (itsSize > 0)
      {
         itsOwnBuffer.reset(new (std::nothrow) char[itsSize]); // not initialised: it is written before it is read
         if (!itsOwnBuffer)
         {
            throw BadAllocException(itsSize);
         }
      }
      itsBuffer = itsSize > 0 ? itsOwnBuffer.get() : &itsSingle;
   }
}

void FileStreamBuffer::ForgetBuffered()
{
   setg(nullptr, nullptr, nullptr);
   setp(nullptr, nullptr);
   itsActivity = Activity::kNone;
}

// --- Reading ---------------------------------------------------------------------------------------------------------

bool FileStreamBuffer::StartReading()
{
   if (itsActivity == Activity::kWriting && !WritePending())
   {
      return false;
   }
   NeedBuffer();
   setp(nullptr, nullptr);
   setg(itsBuffer, itsBuffer, itsBuffer);
   itsActivity = Activity::kReading;
   return true;
}

std::size_t FileStreamBuffer::ReadBeyondBuffer(char* theBuffer, std::size_t theCount, bool& theFailed)
{
   if (itsActivity != Activity::kReading && !StartReading())
   {
      theFailed = true;
      return 0;
   }
   std::size_t aDone = TakeBuffered(theBuffer, theCount);
   while (aDone < theCount)
   {
      const std::size_t aRest = theCount - aDone;
      const bool isStraight = aRest >= itsSize;
      if (isStraight)
      {
         setg(itsBuffer, itsBuffer, itsBuffer);
      }
      const std::ptrdiff_t aCount = isStraight ? ReadOnce(theBuffer + aDone, aRest) : Fill();
      if (aCount <= 0)
      {
         theFailed = theFailed || aCount < 0;
         break;
      }
      aDone += isStraight ? static_cast<std::size_t>(aCount) : TakeBuffered(theBuffer + aDone, aRest);
   }
   return aDone;
}

std::size_t FileStreamBuffer::TakeBuffered(char* theBuffer, std::size_t theCount)
{
   const std::size_t aCount = std::min(theCount, static_cast<std::size_t>(egptr() - gptr()));
   if (aCount > 0)
   {
      std::memcpy(theBuffer, gptr(), aCount);
      setg(eback(), gptr() + aCount, egptr());
   }
   return aCount;
}

// Replaces what is buffered, all of which has been taken. As ReadOnce returns.
std::ptrdiff_t FileStreamBuffer::Fill()
{
   if (itsActivity != Activity::kReading && !StartReading())
   {
      return -1;
   }
   const std::ptrdiff_t aCount = ReadOnce(itsBuffer, std::max<std::size_t>(itsSize, 1));
   setg(itsBuffer, itsBuffer, itsBuffer + std::max<std::ptrdiff_t>(aCount, 0));
   return aCount;
}

// One system call at itsPosition, which moves on: the number of bytes, 0 at the end of the file, -1 on failure.
std::ptrdiff_t FileStreamBuffer::ReadOnce(char* theBuffer, std::size_t theCount)
{
   std::ptrdiff_t aCount = -1;
   if (itsHasPositions != 0)
   {
      aCount = itsFile.ReadAt(theBuffer, theCount, itsPosition);
      itsHasPositions = aCount >= 0 ? 1 : errno == ESPIPE ? 0 : itsHasPositions;
   }
   if (itsHasPositions == 0)
   {
      aCount = itsFile.Read(theBuffer, theCount);
   }
   if (aCount < 0)
   {
      Failed(errno);
      return -1;
   }
   itsPosition += static_cast<UINT64>(aCount);
   return aCount;
}

FileStreamBuffer::int_type FileStreamBuffer::underflow()
{
   if (gptr() == egptr())
   {
      const std::ptrdiff_t aCount = Fill();
      if (aCount < 0)
      {
         ThrowFailure("FileStreamBuffer: read failed", itsError);
      }
      if (aCount == 0)
      {
         return traits_type::eof();
      }
   }
   return traits_type::to_int_type(*gptr());
}

std::streamsize FileStreamBuffer::xsgetn(char* theBuffer, std::streamsize theCount)
{
   if (theCount <= 0)
   {
      return 0;
   }
   bool hasFailed = false;
   const std::size_t aCount = ReadBeyondBuffer(theBuffer, static_cast<std::size_t>(theCount), hasFailed);
   if (hasFailed)
   {
      ThrowFailure("FileStreamBuffer: read failed", itsError);
   }
   return static_cast<std::streamsize>(aCount);
}

// Steps back by one where nothing is buffered in front. A character other than the one there changes the buffer, not
// the file.
FileStreamBuffer::int_type FileStreamBuffer::pbackfail(int_type theCharacter)
{
   const UINT64 aPosition = GetPosition();
   if (aPosition == 0 || !SetPosition(aPosition - 1))
   {
      return traits_type::eof();
   }
   if (gptr() == egptr() && Fill() <= 0)
   {
      return traits_type::eof();
   }
   if (!traits_type::eq_int_type(theCharacter, traits_type::eof()))
   {
      *gptr() = traits_type::to_char_type(theCharacter);
   }
   return traits_type::not_eof(theCharacter);
}

// --- Writing ---------------------------------------------------------------------------------------------------------

bool FileStreamBuffer::StartWriting()
{
   // Refused here: what cannot be written must not be accepted into the buffer, from which it would vanish.
   if (!IsOpen() || (itsFlags & FileHandle::kWrite) == 0)
   {
      return Failed(EBADF);
   }
   const UINT64 aPosition = GetPosition();
   NeedBuffer();
   ForgetBuffered();
   itsPosition = aPosition;
   FileInformation anInformation;
   if ((itsFlags & FileHandle::kAppend) != 0 && itsFile.GetInformation(anInformation))
   {
      itsPosition = anInformation.itsLength;
   }
   setp(itsBuffer, itsBuffer + itsSize);
   itsActivity = Activity::kWriting;
   return true;
}

bool FileStreamBuffer::WriteBytes(const unsigned char* theBytes, std::size_t theCount)
{
   if (itsActivity != Activity::kWriting && !StartWriting())
   {
      return false;
   }
   const char* aBytes = reinterpret_cast<const char*>(theBytes);
   const std::size_t aStraight = StraightCount(theCount);
   if (aStraight != 0 || theCount > static_cast<std::size_t>(epptr() - pptr()))
   {
      if (!WritePendingAnd(aStraight != 0 ? aBytes : nullptr, aStraight))
      {
         return false;
      }
   }
   if (const std::size_t aRest = theCount - aStraight; aRest > 0)
   {
      std::memcpy(pptr(), aBytes + aStraight, aRest);
      pbump(static_cast<int>(aRest));
   }
   return true;
}

// How many of theCount bytes go to the file from where they are: none of a small piece, and of a large one all up to
// the last boundary of a page. Writes that end within pages cost the system twice the work.
std::size_t FileStreamBuffer::StraightCount(std::size_t theCount) const
{
   if (theCount < itsSize)
   {
      return 0;
   }
   const std::size_t aRest = (itsPosition + static_cast<UINT64>(pptr() - pbase()) + theCount) % kPageSize;
   return aRest <= itsSize && aRest < theCount ? theCount - aRest : theCount;
}

// Writes what is buffered and theBytes behind it, together where the system can. What is buffered and cannot be written
// stays buffered.
bool FileStreamBuffer::WritePendingAnd(const char* theBytes, std::size_t theCount)
{
   const std::size_t aPending = static_cast<std::size_t>(pptr() - pbase());
   const std::size_t aTotal = aPending + theCount;
   std::size_t aDone = 0;
   while (aDone < aTotal)
   {
      const std::size_t aFirst = std::min(aDone, aPending);
      const std::size_t aSecond = aDone - aFirst;
      const std::ptrdiff_t aCount =
          WriteOnce(pbase() + aFirst, aPending - aFirst, theBytes + aSecond, theCount - aSecond);
      if (aCount < 0)
      {
         break;
      }
      aDone += static_cast<std::size_t>(aCount);
   }
   const std::size_t aKept = aPending - std::min(aDone, aPending);
   if (aKept > 0)
   {
      std::memmove(pbase(), pptr() - aKept, aKept);
   }
   setp(pbase(), epptr());
   pbump(static_cast<int>(aKept));
   return aDone == aTotal;
}

// One system call at itsPosition, which moves on: the number of bytes, -1 on failure.
std::ptrdiff_t FileStreamBuffer::WriteOnce(const char* theFirst, std::size_t theFirstCount, const char* theSecond,
                                           std::size_t theSecondCount)
{
   const bool isOne = theFirstCount == 0 || theSecondCount == 0;
   const char* aBytes = theFirstCount > 0 ? theFirst : theSecond;
   const std::size_t aLength = theFirstCount > 0 ? theFirstCount : theSecondCount;
   std::ptrdiff_t aCount = -1;
   if (itsHasPositions != 0)
   {
      aCount = isOne ? itsFile.WriteAt(aBytes, aLength, itsPosition)
                     : itsFile.WriteAt(theFirst, theFirstCount, theSecond, theSecondCount, itsPosition);
      itsHasPositions = aCount >= 0 ? 1 : errno == ESPIPE ? 0 : itsHasPositions;
   }
   if (itsHasPositions == 0)
   {
      aCount = itsFile.Write(aBytes, aLength);
   }
   if (aCount < 0)
   {
      Failed(errno);
      return -1;
   }
   itsPosition += static_cast<UINT64>(aCount);
   return aCount;
}

FileStreamBuffer::int_type FileStreamBuffer::overflow(int_type theCharacter)
{
   const char aCharacter = traits_type::to_char_type(theCharacter);
   const auto* aByte = reinterpret_cast<const unsigned char*>(&aCharacter);
   const bool isNone = traits_type::eq_int_type(theCharacter, traits_type::eof());
   if (!WriteBytes(aByte, isNone ? 0 : 1) || (isNone && !WritePending()))
   {
      ThrowFailure("FileStreamBuffer: write failed", itsError);
   }
   return traits_type::not_eof(theCharacter);
}

std::streamsize FileStreamBuffer::xsputn(const char* theBytes, std::streamsize theCount)
{
   if (theCount > 0 &&
       !WriteBytes(reinterpret_cast<const unsigned char*>(theBytes), static_cast<std::size_t>(theCount)))
   {
      ThrowFailure("FileStreamBuffer: write failed", itsError);
   }
   return std::max<std::streamsize>(theCount, 0);
}

// --- Positions and length --------------------------------------------------------------------------------------------

bool FileStreamBuffer::Synchronise()
{
   if (itsActivity == Activity::kWriting && !WritePending())
   {
      return false;
   }
   if (itsHasPositions != 0) // what was read ahead from a pipe is nowhere else
   {
      itsPosition = GetPosition();
      ForgetBuffered();
   }
   return true;
}

int FileStreamBuffer::sync()
{
   return Synchronise() ? 0 : -1;
}

UINT64 FileStreamBuffer::GetPosition() const
{
   // At most one of the areas is in use; the other one is empty.
   return itsPosition + static_cast<UINT64>(pptr() - pbase()) - static_cast<UINT64>(egptr() - gptr());
}

bool FileStreamBuffer::HasPositions()
{
   if (itsHasPositions < 0 && IsOpen())
   {
      itsHasPositions = itsFile.HasPositions() ? 1 : 0;
   }
   return itsHasPositions > 0;
}

bool FileStreamBuffer::SetPosition(UINT64 thePosition)
{
   const UINT64 aFirst = itsPosition - static_cast<UINT64>(egptr() - eback());
   if (itsActivity == Activity::kReading && thePosition >= aFirst && thePosition <= itsPosition)
   {
      setg(eback(), eback() + (thePosition - aFirst), egptr());
      return true;
   }
   if (!HasPositions() || thePosition > kLastPosition)
   {
      return Failed(!IsOpen() ? EBADF : HasPositions() ? EINVAL : ESPIPE);
   }
   if (itsActivity == Activity::kWriting && !WritePending())
   {
      return false;
   }
   ForgetBuffered();
   itsPosition = thePosition;
   return true;
}

FileStreamBuffer::pos_type FileStreamBuffer::seekoff(off_type theOffset, std::ios_base::seekdir theDirection,
                                                     std::ios_base::openmode theWhich)
{
   UINT64 aBase = 0;
   if (!IsOpen() || (theDirection == std::ios_base::end && !GetLength(aBase)))
   {
      return pos_type(off_type(-1));
   }
   if (theDirection == std::ios_base::cur)
   {
      aBase = GetPosition();
      if (theOffset == 0) // only asks where we are
      {
         return pos_type(static_cast<off_type>(aBase));
      }
   }
   const auto aTarget = static_cast<off_type>(aBase + static_cast<UINT64>(theOffset));
   return seekpos(pos_type(aTarget), theWhich);
}

FileStreamBuffer::pos_type FileStreamBuffer::seekpos(pos_type thePosition, std::ios_base::openmode)
{
   const off_type aTarget = thePosition;
   return aTarget >= 0 && SetPosition(static_cast<UINT64>(aTarget)) ? thePosition : pos_type(off_type(-1));
}

bool FileStreamBuffer::GetLength(UINT64& theLength)
{
   if (itsActivity == Activity::kWriting && !WritePending())
   {
      return false;
   }
   FileInformation anInformation;
   if (!itsFile.GetInformation(anInformation))
   {
      return Failed(errno);
   }
   theLength = anInformation.itsLength;
   return true;
}

bool FileStreamBuffer::Truncate(UINT64 theLength)
{
   return Synchronise() && (itsFile.Truncate(theLength) || Failed(errno));
}

#include "apps/tn/archive/SpoolFile.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>

#include "apps/tn/base/SystemFailure.h"

namespace
{
// One process at a time makes files there, and empties the folder when it starts.
std::string NextName()
{
   static std::atomic<unsigned long> aNumber = 0;
   return std::to_string(aNumber++);
}

// Whether a renameat2 with flags has failed for want of them, as it does on network file systems, others in user space
// and old kernels.
bool HasNoRenameFlags()
{
   return errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
}
} // namespace

unsigned char* SpoolBuffer::Get()
{
   if (!itsMemory)
   {
      itsMemory.reset(static_cast<unsigned char*>(std::aligned_alloc(kPage, kSize)));
      if (!itsMemory)
      {
         throw std::bad_alloc();
      }
   }
   return itsMemory.get();
}

SpoolFile::SpoolFile(const Descriptor& theFolder, SpoolBuffer& theBuffer)
    : itsFolder(theFolder), itsBuffer(theBuffer.Get()), itsName(NextName()),
      itsFile(::openat(theFolder.Get(), itsName.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666))
{
   if (!itsFile.IsOpen())
   {
      throw SystemFailure("cannot create a file");
   }
}

SpoolFile::~SpoolFile()
{
   if (itsPlace == Place::kTemporary || itsPlace == Place::kExchanged)
   {
      ::unlinkat(itsFolder.Get(), itsName.c_str(), 0);
   }
}

unsigned char* SpoolFile::GetRoom(std::size_t& theSize)
{
   if (itsFilled == SpoolBuffer::kSize)
   {
      WriteOut();
   }
   theSize = SpoolBuffer::kSize - itsFilled;
   return itsBuffer + itsFilled;
}

void SpoolFile::Write(const unsigned char* theBytes, std::size_t theCount)
{
   while (theCount > 0)
   {
      std::size_t aRoom = 0;
      unsigned char* const aPlace = GetRoom(aRoom);
      const std::size_t aPart = std::min(theCount, aRoom);
      std::memcpy(aPlace, theBytes, aPart);
      Fill(aPart);
      theBytes += aPart;
      theCount -= aPart;
   }
}

void SpoolFile::Finish()
{
   WriteOut();
}

void SpoolFile::WriteOut()
{
   std::size_t aDone = 0;
   while (aDone < itsFilled)
   {
      const ssize_t aCount = ::write(itsFile.Get(), itsBuffer + aDone, itsFilled - aDone);
      if (aCount < 0 && errno != EINTR)
      {
         throw SystemFailure("cannot write");
      }
      aDone += aCount > 0 ? static_cast<std::size_t>(aCount) : 0;
   }
   itsWritten += itsFilled;
   itsFilled = 0;
}

void SpoolFile::Synchronise()
{
   if (::fdatasync(itsFile.Get()) != 0)
   {
      throw SystemFailure("cannot write to the disk");
   }
}

// False with errno. A link does not replace a file either.
bool SpoolFile::TakeName(const Descriptor& theFolder, const std::string& theName)
{
   const bool isDone =
       ::renameat2(itsFolder.Get(), itsName.c_str(), theFolder.Get(), theName.c_str(), RENAME_NOREPLACE) == 0;
   if (isDone ||
       (HasNoRenameFlags() && ::linkat(itsFolder.Get(), itsName.c_str(), theFolder.Get(), theName.c_str(), 0) == 0))
   {
      if (!isDone)
      {
         ::unlinkat(itsFolder.Get(), itsName.c_str(), 0);
      }
      itsPlace = Place::kOwn;
      return true;
   }
   return false;
}

// False with errno. Where names cannot be exchanged, the other file gets a second name before it loses its own.
bool SpoolFile::ChangePlaces(const Descriptor& theFolder, const std::string& theName)
{
   if (::renameat2(itsFolder.Get(), itsName.c_str(), theFolder.Get(), theName.c_str(), RENAME_EXCHANGE) == 0)
   {
      itsPlace = Place::kExchanged;
      return true;
   }
   if (!HasNoRenameFlags())
   {
      return false;
   }
   std::string aSecond = NextName();
   if (::linkat(theFolder.Get(), theName.c_str(), itsFolder.Get(), aSecond.c_str(), 0) != 0)
   {
      return false;
   }
   if (::renameat(itsFolder.Get(), itsName.c_str(), theFolder.Get(), theName.c_str()) != 0)
   {
      const int anError = errno;
      ::unlinkat(itsFolder.Get(), aSecond.c_str(), 0);
      errno = anError;
      return false;
   }
   itsName.swap(aSecond);
   itsPlace = Place::kExchanged;
   return true;
}

bool SpoolFile::MoveTo(const Descriptor& theFolder, const std::string& theName, bool theReplaces)
{
   if (TakeName(theFolder, theName))
   {
      return true;
   }
   const bool isTaken = errno == EEXIST;
   if (isTaken && !theReplaces)
   {
      return false;
   }
   if (!isTaken || !ChangePlaces(theFolder, theName))
   {
      throw SystemFailure("cannot give the file its name");
   }
   return true;
}

void SpoolFile::MoveBack(const Descriptor& theFolder, const std::string& theName) noexcept
{
   if (itsPlace == Place::kOwn)
   {
      ::unlinkat(theFolder.Get(), theName.c_str(), 0);
   }
   else if (itsPlace == Place::kExchanged)
   {
      ::renameat(itsFolder.Get(), itsName.c_str(), theFolder.Get(), theName.c_str());
   }
}

unsigned int SpoolingStream::ReadSource(unsigned char* theBuffer, std::size_t theCount)
{
   unsigned int aCount = 0;
   try
   {
      aCount = itsHasEnded ? 0 : itsSource.Read(theBuffer, static_cast<unsigned int>(theCount));
   }
   catch (...)
   {
      itsHasEnded = true;
      std::throw_with_nested(SourceFailure());
   }
   itsHasEnded = itsHasEnded || aCount == 0;
   return aCount;
}

// Makes bytes available, and returns how many of theCount there are at once; 0 at the end.
unsigned int SpoolingStream::Ahead(unsigned int theCount)
{
   if (itsCount == 0)
   {
      std::size_t aRoom = 0;
      unsigned char* const aPlace = itsFile.GetRoom(aRoom);
      itsNext = aPlace;
      itsCount = ReadSource(aPlace, aRoom);
      itsFile.Fill(itsCount);
   }
   return static_cast<unsigned int>(std::min<std::size_t>(theCount, itsCount));
}

unsigned int SpoolingStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   unsigned int aDone = 0;
   while (aDone < theCount)
   {
      const unsigned int aPart = Ahead(theCount - aDone);
      if (aPart == 0)
      {
         break;
      }
      std::memcpy(theBuffer + aDone, itsNext, aPart);
      itsNext += aPart;
      itsCount -= aPart;
      aDone += aPart;
   }
   return aDone;
}

unsigned int SpoolingStream::Skip(unsigned int theCount)
{
   unsigned int aDone = 0;
   while (aDone < theCount)
   {
      const unsigned int aPart = Ahead(theCount - aDone);
      if (aPart == 0)
      {
         break;
      }
      itsNext += aPart;
      itsCount -= aPart;
      aDone += aPart;
   }
   return aDone;
}

void SpoolingStream::TakeRest()
{
   do
   {
      itsCount = 0; // it is in the file
   } while (Ahead(1) != 0);
}

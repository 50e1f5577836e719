#include "apps/tn/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace
{
// The temporary file that an interruption removes. Its name is copied in before it is published.
char gPending[4096];
std::atomic<bool> gHasPending = false;

void RemovePending(int theSignal)
{
   if (gHasPending)
   {
      ::unlink(gPending);
   }
   std::signal(theSignal, SIG_DFL);
   ::raise(theSignal);
}

void HandleInterruptions()
{
   static const bool isHandled = [] {
      for (const int aSignal : {SIGINT, SIGTERM, SIGHUP})
      {
         std::signal(aSignal, RemovePending);
      }
      std::signal(SIGXFSZ, SIG_IGN); // a file that may grow no more is told by write
      return true;
   }();
   static_cast<void>(isHandled);
}

void Publish(const std::string& thePath)
{
   HandleInterruptions();
   if (thePath.size() < sizeof gPending)
   {
      std::memcpy(gPending, thePath.c_str(), thePath.size() + 1);
      gHasPending = true;
   }
}

[[noreturn]] void Throw(const std::string& theAction, const std::string& thePath)
{
   throw std::runtime_error("cannot " + theAction + " " + thePath + ": " + std::system_category().message(errno));
}

mode_t ModeFor(const std::string& thePath)
{
   struct stat aStatus;
   if (::stat(thePath.c_str(), &aStatus) == 0 && S_ISREG(aStatus.st_mode))
   {
      return aStatus.st_mode & 07777;
   }
   const mode_t aMask = ::umask(0);
   ::umask(aMask);
   return 0666 & ~aMask;
}
} // namespace

AtomicFile::AtomicFile(std::string thePath) : itsPath(std::move(thePath)), itsTemporaryPath(itsPath + ".tn-XXXXXX")
{
   const mode_t aMode = ModeFor(itsPath);
   const int aFile = ::mkstemp(itsTemporaryPath.data());
   if (aFile < 0)
   {
      Throw("create", itsPath);
   }
   Publish(itsTemporaryPath);
   ::fchmod(aFile, aMode); // where permissions mean nothing, this may fail without harm
   ::close(aFile);
}

AtomicFile::~AtomicFile()
{
   if (!itsIsCommitted)
   {
      gHasPending = false;
      ::unlink(itsTemporaryPath.c_str());
   }
}

void AtomicFile::Commit()
{
   if (std::rename(itsTemporaryPath.c_str(), itsPath.c_str()) != 0)
   {
      Throw("write", itsPath);
   }
   gHasPending = false;
   itsIsCommitted = true;
}

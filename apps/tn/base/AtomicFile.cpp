#include "apps/tn/base/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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
         if (std::signal(aSignal, RemovePending) == SIG_IGN)
         {
            std::signal(aSignal, SIG_IGN); // nohup and shells ask for it
         }
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

[[noreturn]] void Throw(const char* theText)
{
   throw WriteFailure(theText + (": " + std::system_category().message(errno)));
}

// Where thePath leads.
std::string FollowLinks(std::string thePath)
{
   if (thePath == "-")
   {
      throw WriteFailure("standard output cannot be written to; ./- is a file of that name");
   }
   char aTarget[PATH_MAX];
   return ::realpath(thePath.c_str(), aTarget) != nullptr ? aTarget : thePath;
}

// A name of its own: that of the file may be as long as names can be.
std::string MakeTemporaryPath(const std::string& thePath)
{
   return thePath.substr(0, thePath.rfind('/') + 1) + ".tn-XXXXXX";
}

// Renaming would put a file in the place of a device, for every program.
void CheckIsReplaceable(const std::string& thePath)
{
   struct stat aStatus;
   if (::stat(thePath.c_str(), &aStatus) == 0 && !S_ISREG(aStatus.st_mode))
   {
      throw WriteFailure(S_ISDIR(aStatus.st_mode) ? "it is a folder" : "it is no regular file");
   }
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

AtomicFile::AtomicFile(std::string thePath)
    : itsPath(FollowLinks(std::move(thePath))), itsTemporaryPath(MakeTemporaryPath(itsPath))
{
   CheckIsReplaceable(itsPath);
   const mode_t aMode = ModeFor(itsPath);
   const int aFile = ::mkstemp(itsTemporaryPath.data());
   if (aFile < 0)
   {
      Throw("cannot be created");
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
      Throw("cannot be written");
   }
   gHasPending = false;
   itsIsCommitted = true;
}

#include "apps/tn/archive/FolderSynchroniser.h"

#include <cerrno>

#include "apps/tn/base/SystemFailure.h"

namespace
{
constexpr std::size_t kMostSafeFolders = 10000; // they are known again after one more wait
} // namespace

Descriptor FolderSynchroniser::OpenFolderOf(const StoredPath& thePath)
{
   return itsFolder.OpenFolderOf(thePath, [&] {
      const std::lock_guard aLock(itsMutex);
      itsSafeFolders.erase(thePath.GetFolder()); // before others can see the new one
   });
}

void FolderSynchroniser::Synchronise(const StoredPath& thePath, bool theIsTogether)
{
   const std::string aFolder = thePath.GetFolder();
   Synchronise(aFolder, theIsTogether);
   {
      const std::lock_guard aLock(itsMutex);
      if (itsSafeFolders.contains(aFolder))
      {
         return;
      }
   }
   Synchronise(thePath.GetUpperFolder(), theIsTogether);
   Synchronise("", theIsTogether);
   const std::lock_guard aLock(itsMutex);
   if (itsSafeFolders.size() == kMostSafeFolders)
   {
      itsSafeFolders.clear();
   }
   itsSafeFolders.insert(aFolder);
}

void FolderSynchroniser::Synchronise(const std::string& theFolder, bool theIsTogether)
{
   if (!theIsTogether)
   {
      itsFolder.Synchronise(theFolder);
      return;
   }
   std::unique_lock aLock(itsMutex);
   Turns& aTurns = itsTurns[theFolder];
   ++aTurns.itsUsers;
   const std::uint64_t aMine = ++aTurns.itsAsked;
   while (aTurns.itsDone < aMine)
   {
      Await(aTurns, theFolder, aLock);
   }
   const int anError = aMine <= aTurns.itsFailed ? aTurns.itsError : 0;
   if (--aTurns.itsUsers == 0)
   {
      itsTurns.erase(theFolder);
   }
   if (anError != 0)
   {
      throw SystemFailure("cannot write the folder " + theFolder + " to the disk", anError);
   }
}

// One thread works for all who have asked before it begins; those who ask meanwhile need the next turn.
void FolderSynchroniser::Await(Turns& theTurns, const std::string& theFolder, std::unique_lock<std::mutex>& theLock)
{
   if (theTurns.itsIsRunning)
   {
      theTurns.itsEnd.wait(theLock);
      return;
   }
   theTurns.itsIsRunning = true;
   const std::uint64_t aLast = theTurns.itsAsked;
   theLock.unlock();
   const int anError = TrySynchronise(theFolder);
   theLock.lock();
   theTurns.itsIsRunning = false;
   theTurns.itsDone = aLast;
   if (anError != 0)
   {
      theTurns.itsFailed = aLast;
      theTurns.itsError = anError;
   }
   theTurns.itsEnd.notify_all();
}

// 0 or what errno says.
int FolderSynchroniser::TrySynchronise(const std::string& theFolder) const noexcept
{
   try
   {
      itsFolder.Synchronise(theFolder);
      return 0;
   }
   catch (const SystemFailure& anError)
   {
      return anError.code().value();
   }
   catch (const std::bad_alloc&)
   {
      return ENOMEM;
   }
}

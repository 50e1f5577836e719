// Puts the entries of the folders of an archive on the disk, for many threads at once: what several have put into one
// folder is waited for together, and different folders do not wait for each other. Any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <unordered_set>

#include "apps/tn/archive/ArchiveFolder.h"

class FolderSynchroniser
{
public:
   // theFolder is borrowed.
   explicit FolderSynchroniser(const ArchiveFolder& theFolder) : itsFolder(theFolder) {}

   // As ArchiveFolder::OpenFolderOf. Remembers that the folder is new.
   Descriptor OpenFolderOf(const StoredPath& thePath);

   // The file has been given its name. When this returns the name is on the disk, with those of the folders that lead
   // to it. Throws SystemFailure.
   void Synchronise(const StoredPath& thePath, bool theIsTogether);

private:
   struct Turns // of a folder; they count from 1
   {
      std::uint64_t itsAsked = 0;
      std::uint64_t itsDone = 0;
      std::uint64_t itsFailed = 0; // the last that did
      int itsError = 0;            // and why
      bool itsIsRunning = false;
      unsigned int itsUsers = 0;
      std::condition_variable itsEnd;
   };

   void Synchronise(const std::string& theFolder, bool theIsTogether);
   void Await(Turns& theTurns, const std::string& theFolder, std::unique_lock<std::mutex>& theLock);
   int TrySynchronise(const std::string& theFolder) const noexcept;

   const ArchiveFolder& itsFolder;
   std::mutex itsMutex; // guards what follows
   std::map<std::string, Turns> itsTurns;
   std::unordered_set<std::string> itsSafeFolders; // whose own entries are known to be on the disk
};

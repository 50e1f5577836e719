// The folder of an archive as the file system sees it: one process at a time writes in it, and no link leads a file out
// of it. See Archive.
#pragma once

#include <functional>
#include <string>

#include "apps/tn/archive/IndexDatabase.h"
#include "apps/tn/archive/StoredPath.h"
#include "apps/tn/base/Descriptor.h"

class ArchiveFolder
{
public:
   // Opens the folder, making it if it is not there and theIsMade, and locks it. Throws std::runtime_error, when
   // another process has locked it too.
   ArchiveFolder(const std::string& thePath, bool theIsMade);

   const std::string& GetPath() const { return itsPath; }
   std::string GetIndexPath() const { return itsPath + "/index.sqlite"; }

   // A folder in it, which is made if it is not there; so is the one around it. Throws SystemFailure; links are not
   // followed. theNotice is called before a folder is made.
   Descriptor OpenSpoolFolder() const;
   Descriptor OpenFolderOf(const StoredPath& thePath, const std::function<void()>& theNotice) const;

   // A folder's entries are on the disk when this returns. theName is "" for the archive itself.
   void Synchronise(const std::string& theName) const;

   // All that there is in it is on the disk when this returns, whoever has written it, and the folder itself.
   void SynchroniseAll() const;

   // Removes the files of the spool folder, which nobody is writing any more.
   void EmptySpoolFolder() const;

   // Calls theVisitor with the path, from here on, of each file where instances are stored.
   void ForEachFile(const std::function<void(const std::string& thePath)>& theVisitor) const;

   // What the index is to say of the file. Throws std::runtime_error for one that is no instance or not where its UIDs
   // say, with theIsWhole also for one that is not read to its end.
   IndexedInstance Read(const std::string& thePath, bool theIsWhole) const;

   // Makes theIndex agree with the files. Those that cannot be read are set aside. theTell gets a line for each of
   // these.
   void Repair(IndexDatabase& theIndex, const std::function<void(const std::string& theText)>& theTell) const;

private:
   void EndReplacements(IndexDatabase& theIndex) const;
   void SetAside(const std::string& thePath) const;

   std::string itsPath;
   Descriptor itsFolder;
   Descriptor itsLock;
};

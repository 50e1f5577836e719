// A folder of stored instances with its index:
//
//    DIR/<study>/<series>/<instance>.dcm    see StoredPath
//    DIR/incoming/                          what is being received, and an empty file for what is expected
//    DIR/index.sqlite                       the index, see IndexDatabase
//    DIR/damaged/                           files that a start found broken
//    DIR/lock                               locked by the one process that writes here
//
// The files are the truth. An instance has its file, whole, before its sender learns that it is stored, and the index
// is made to agree with the files when an archive is opened that was not closed in order.
//
// Any thread.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>

#include "apps/tn/archive/ArchiveFolder.h"
#include "apps/tn/archive/FolderSynchroniser.h"
#include "apps/tn/archive/Index.h"
#include "apps/tn/archive/SpoolFile.h"
#include "apps/tn/archive/StoredPath.h"

class Archive
{
public:
   // What is on the disk when a sender learns that an instance is stored.
   enum class Synchronising
   {
      kNone, // nothing is waited for: after a power cut the last instances may be missing or damaged
      kFile, // the file and its name, with a wait for each
      kGroup // the same; what several associations store is waited for together
   };
   enum class Duplicates // another dataset with the SOP Instance UID of a stored one
   {
      kRefuse,
      kReplace
   };
   struct Settings
   {
      std::string itsFolder;
      Synchronising itsSynchronising = Synchronising::kGroup;
      Duplicates itsDuplicates = Duplicates::kRefuse;
   };

   // Makes the folder if there is none, locks it, and repairs what needs it. Throws std::runtime_error.
   explicit Archive(const Settings& theSettings);

   // Adds to the index what is not yet there.
   ~Archive();

   // Where SpoolFiles are made that Keep is to keep.
   const Descriptor& GetSpoolFolder() const { return itsSpoolFolder; }

   // Gives the received file its place. theDatasetStart is where its dataset begins. Returns false when an equal
   // instance (of the same bytes in the same transfer syntax) was there already. Throws StoreRefusal; nothing has
   // changed then.
   bool Keep(SpoolFile& theFile, std::uint64_t theDatasetStart, IndexedInstance&& theInstance);

   Index& GetIndex() { return *itsIndex; }
   std::string GetIndexPath() const { return itsFolder.GetIndexPath(); } // to read it
   std::string GetFullPath(const std::string& thePath) const { return itsSettings.itsFolder + "/" + thePath; }

private:
   class Claim;

   bool IsEqual(const std::string& thePath, const SpoolFile& theFile, std::uint64_t theDatasetStart,
                const std::string& theTransferSyntax) const;
   bool KeepClaimed(SpoolFile& theFile, std::uint64_t theDatasetStart, IndexedInstance&& theInstance,
                    const StoredPath& thePath);
   void Place(SpoolFile& theFile, std::uint64_t theDatasetStart, IndexedInstance&& theInstance,
              const StoredPath& thePath);
   bool IsDoubtful(const std::string& theUID);
   void BeginReplacement(const IndexedInstance& theInstance);
   void EndReplacement(const std::string& theUID);
   void AddToIndex(IndexedInstance&& theInstance, const StoredPath& thePath);

   Settings itsSettings;
   ArchiveFolder itsFolder;
   FolderSynchroniser itsSynchroniser{itsFolder};
   Descriptor itsSpoolFolder;
   std::unique_ptr<Index> itsIndex;

   std::mutex itsMutex;
   std::condition_variable itsRelease;
   std::unordered_set<std::string> itsClaims;   // the SOP instance UIDs that a thread works on,
   std::unordered_set<std::string> itsDoubtful; // and those whose replacement has not come to its end
};

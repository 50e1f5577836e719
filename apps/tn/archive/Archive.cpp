#include "apps/tn/archive/Archive.h"

#include <cstring>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <vector>

#include <fcntl.h>

#include "apps/tn/archive/StoreRefusal.h"
#include "apps/tn/base/SystemFailure.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr char kOther[] = "another instance with this SOP Instance UID is stored";

void Tell(const std::string& theText)
{
   std::cerr << OnOneLine("tn serve: " + theText) + "\n" << std::flush;
}

// One that cannot be used is thrown away: the files are there. theIsSafe: so that they stay there after a power cut,
// for an instance that is sent again is answered for by its file.
void MakeIndexAgree(const ArchiveFolder& theFolder, bool theIsSafe)
{
   const std::string aPath = theFolder.GetIndexPath();
   for (int anAttempt = 0;; ++anAttempt)
   {
      try
      {
         IndexDatabase anIndex(aPath);
         if (!anIndex.AgreesWithFiles())
         {
            if (theIsSafe)
            {
               theFolder.SynchroniseAll();
            }
            theFolder.Repair(anIndex, Tell);
         }
         anIndex.SetAgreesWithFiles(false); // from now on
         return;
      }
      catch (const SQLiteFailure& anError)
      {
         if (!anError.IsDamaged() || anAttempt == 1)
         {
            throw std::runtime_error(aPath + ": " + anError.what());
         }
         Tell(aPath + ": made anew from the files: " + anError.what());
         for (const char* aSuffix : {"", "-wal", "-shm"})
         {
            std::filesystem::remove(aPath + aSuffix);
         }
      }
   }
}

// Whether the rest of the one file is that of the other.
bool AreEqualFrom(int theFirst, off_t theFirstStart, int theSecond, off_t theSecondStart)
{
   constexpr std::size_t kBlock = 65536;
   std::vector<char> aFirst(kBlock);
   std::vector<char> aSecond(kBlock);
   for (off_t aDone = 0;;)
   {
      const ssize_t aCount = ::pread(theFirst, aFirst.data(), kBlock, theFirstStart + aDone);
      if (aCount != ::pread(theSecond, aSecond.data(), kBlock, theSecondStart + aDone) || aCount < 0 ||
          std::memcmp(aFirst.data(), aSecond.data(), static_cast<std::size_t>(aCount)) != 0)
      {
         return false;
      }
      if (aCount == 0)
      {
         return true;
      }
      aDone += aCount;
   }
}

// For what the index has to do, which it says was done.
void Await(Index::Ticket& theTicket)
{
   if (const std::string& aFault = theTicket.Wait(); !aFault.empty())
   {
      throw StoreRefusal(StoreStatus::kOutOfResources, aFault);
   }
}
} // namespace

// The right to store the instance with a UID, which one thread has at a time.
class Archive::Claim
{
public:
   Claim(Archive& theArchive, const std::string& theUID) : itsArchive(theArchive), itsUID(theUID)
   {
      std::unique_lock aLock(itsArchive.itsMutex);
      itsArchive.itsRelease.wait(aLock, [&] { return itsArchive.itsClaims.insert(itsUID).second; });
   }
   Claim(const Claim&) = delete;
   Claim& operator=(const Claim&) = delete;
   ~Claim()
   {
      {
         const std::lock_guard aLock(itsArchive.itsMutex);
         itsArchive.itsClaims.erase(itsUID);
      }
      itsArchive.itsRelease.notify_all();
   }

private:
   Archive& itsArchive;
   std::string itsUID;
};

Archive::Archive(const Settings& theSettings)
    : itsSettings(theSettings), itsFolder(theSettings.itsFolder, true), itsSpoolFolder(itsFolder.OpenSpoolFolder())
{
   itsFolder.EmptySpoolFolder();
   MakeIndexAgree(itsFolder, itsSettings.itsSynchronising != Synchronising::kNone);
   itsIndex = std::make_unique<Index>(itsFolder.GetIndexPath());
}

Archive::~Archive()
{
   const bool isWhole = itsIndex->Flush();
   itsIndex.reset();
   try
   {
      if (isWhole)
      {
         if (itsSettings.itsSynchronising == Synchronising::kNone)
         {
            itsFolder.SynchroniseAll(); // the index must not know files that a power cut takes away
         }
         IndexDatabase(itsFolder.GetIndexPath()).SetAgreesWithFiles(true);
      }
   }
   catch (const std::runtime_error& anError) // SQLiteFailure, SystemFailure
   {
      Tell(std::string("index: ") + anError.what()); // the next start repairs it
   }
}

bool Archive::Keep(SpoolFile& theFile, std::uint64_t theDatasetStart, IndexedInstance&& theInstance)
{
   try
   {
      const StoredPath aPath = StoredPath::Of(theInstance.itsKeys);
      const Claim aClaim(*this, theInstance.itsKeys[Key::kSOPInstance]);
      theInstance.itsPath = aPath.GetText();
      return KeepClaimed(theFile, theDatasetStart, std::move(theInstance), aPath);
   }
   catch (const std::invalid_argument& anError)
   {
      throw StoreRefusal(StoreStatus::kDoesNotMatchSOPClass, anError.what());
   }
   catch (const SQLiteFailure& anError)
   {
      throw StoreRefusal(StoreStatus::kOutOfResources, std::string("index: ") + anError.what());
   }
   catch (const std::system_error& anError)
   {
      throw StoreRefusal(StoreStatus::kOutOfResources, anError.what());
   }
}

bool Archive::KeepClaimed(SpoolFile& theFile, std::uint64_t theDatasetStart, IndexedInstance&& theInstance,
                          const StoredPath& thePath)
{
   const std::string aUID = theInstance.itsKeys[Key::kSOPInstance];
   const std::optional<std::string> aStored = itsIndex->Find(aUID);
   const bool isKnown = aStored && IsEqual(*aStored, theFile, theDatasetStart, theInstance.itsTransferSyntax);
   if (isKnown && !IsDoubtful(aUID))
   {
      return false;
   }
   const std::string anOldPath = aStored ? GetFullPath(*aStored) : "";
   const bool isThere = aStored && std::filesystem::exists(anOldPath);
   if (isThere && !isKnown && itsSettings.itsDuplicates == Duplicates::kRefuse)
   {
      throw StoreRefusal(StoreStatus::kDuplicateInstance, kOther);
   }
   if (itsSettings.itsSynchronising != Synchronising::kNone)
   {
      theFile.Synchronise();
   }
   if (aStored)
   {
      BeginReplacement(theInstance);
   }
   const bool isElsewhere = isThere && *aStored != theInstance.itsPath;
   Place(theFile, theDatasetStart, std::move(theInstance), thePath);
   if (aStored)
   {
      EndReplacement(aUID);
   }
   if (isElsewhere)
   {
      ::unlink(anOldPath.c_str()); // a start sets aside what stays
   }
   return true;
}

// The file gets its name and the index its row, or neither.
void Archive::Place(SpoolFile& theFile, std::uint64_t theDatasetStart, IndexedInstance&& theInstance,
                    const StoredPath& thePath)
{
   const Descriptor aFolder = itsSynchroniser.OpenFolderOf(thePath);
   if (!theFile.MoveTo(aFolder, thePath.GetFile(), itsSettings.itsDuplicates == Duplicates::kReplace) &&
       !IsEqual(theInstance.itsPath, theFile, theDatasetStart, theInstance.itsTransferSyntax))
   {
      throw StoreRefusal(StoreStatus::kDuplicateInstance, kOther); // not in the index: somebody has put it there
   }
   try
   {
      AddToIndex(std::move(theInstance), thePath);
   }
   catch (...)
   {
      theFile.MoveBack(aFolder, thePath.GetFile());
      throw;
   }
}

bool Archive::IsEqual(const std::string& thePath, const SpoolFile& theFile, std::uint64_t theDatasetStart,
                      const std::string& theTransferSyntax) const
{
   try
   {
      const std::string aPath = GetFullPath(thePath);
      const Part10FileInputStream aStream(aPath);
      const Descriptor aStored(::open(aPath.c_str(), O_RDONLY | O_CLOEXEC));
      return aStored.IsOpen() && aStream.GetTransferSyntaxUID() == theTransferSyntax &&
             AreEqualFrom(aStored.Get(), aStream.GetHeaderSize(), theFile.GetDescriptor(),
                          static_cast<off_t>(theDatasetStart));
   }
   catch (const ExceptionBase&)
   {
      return false; // it cannot be read, or is gone
   }
}

bool Archive::IsDoubtful(const std::string& theUID)
{
   const std::lock_guard aLock(itsMutex);
   return itsDoubtful.contains(theUID);
}

// Should this end before the index has the new instance, the next start learns from the file which one is there. Should
// the disk fail to put the old file back, the index gets the new one when it is sent again.
void Archive::BeginReplacement(const IndexedInstance& theInstance)
{
   Index::Ticket aTicket;
   itsIndex->BeginReplacement(theInstance.itsKeys[Key::kSOPInstance], theInstance.itsPath,
                              itsSettings.itsSynchronising != Synchronising::kNone, aTicket);
   Await(aTicket);
   const std::lock_guard aLock(itsMutex);
   itsDoubtful.insert(theInstance.itsKeys[Key::kSOPInstance]);
}

void Archive::EndReplacement(const std::string& theUID)
{
   const std::lock_guard aLock(itsMutex);
   itsDoubtful.erase(theUID);
}

void Archive::AddToIndex(IndexedInstance&& theInstance, const StoredPath& thePath)
{
   if (itsSettings.itsSynchronising == Synchronising::kNone)
   {
      itsIndex->Add(std::move(theInstance), nullptr);
      return;
   }
   itsSynchroniser.Synchronise(thePath, itsSettings.itsSynchronising == Synchronising::kGroup);
   Index::Ticket aTicket;
   itsIndex->Add(std::move(theInstance), &aTicket);
   Await(aTicket);
}

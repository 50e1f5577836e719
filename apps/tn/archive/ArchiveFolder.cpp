#include "apps/tn/archive/ArchiveFolder.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/FilesBelow.h"
#include "apps/tn/base/SystemFailure.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/LaterVRs.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/transfer/InputTransferSyntax.h"

namespace
{
constexpr char kSpoolFolder[] = "incoming";
constexpr char kDamagedFolder[] = "damaged";
constexpr char kNoStudy[] = "no-study";
constexpr std::string_view kSuffix = ".dcm";
constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW;

// Makes it if it is not there.
Descriptor OpenFolder(int theParent, const std::string& theName, const std::function<void()>& theNotice = {})
{
   Descriptor aFolder(::openat(theParent, theName.c_str(), kFolder));
   if (!aFolder.IsOpen() && errno == ENOENT)
   {
      if (theNotice)
      {
         theNotice();
      }
      if (::mkdirat(theParent, theName.c_str(), 0777) != 0 && errno != EEXIST)
      {
         throw SystemFailure("cannot make the folder " + theName);
      }
      aFolder = Descriptor(::openat(theParent, theName.c_str(), kFolder));
   }
   if (!aFolder.IsOpen())
   {
      throw SystemFailure("cannot open the folder " + theName);
   }
   return aFolder;
}

// Both folders in one call; whatever it fails for, opening them one by one tells, or does.
Descriptor TryOpenFolder(int theParent, const std::string& thePath)
{
   open_how aHow = {};
   aHow.flags = kFolder;
   aHow.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
   return Descriptor(static_cast<int>(::syscall(SYS_openat2, theParent, thePath.c_str(), &aHow, sizeof aHow)));
}

// The names in a folder, in order, without those that begin with a full stop.
std::vector<std::string> NamesIn(const std::string& theFolder)
{
   std::vector<std::string> aNames;
   const int anError = ForEachEntry(theFolder, [&](std::string_view theName, EntryKind) {
      if (theName.front() != '.')
      {
         aNames.emplace_back(theName);
      }
   });
   if (anError != 0)
   {
      throw SystemFailure(theFolder + ": cannot be read", anError);
   }
   std::sort(aNames.begin(), aNames.end());
   return aNames;
}

bool IsRealFolder(const std::string& thePath)
{
   struct stat aState = {};
   return ::lstat(thePath.c_str(), &aState) == 0 && S_ISDIR(aState.st_mode);
}
} // namespace

ArchiveFolder::ArchiveFolder(const std::string& thePath, bool theIsMade) : itsPath(thePath)
{
   if (theIsMade)
   {
      std::error_code anIgnored; // opening it says what is wrong
      std::filesystem::create_directories(thePath, anIgnored);
   }
   itsFolder = Descriptor(::open(thePath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
   if (!itsFolder.IsOpen())
   {
      throw SystemFailure(thePath + ": cannot be opened");
   }
   itsLock = Descriptor(::openat(itsFolder.Get(), "lock", O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666));
   if (!itsLock.IsOpen())
   {
      throw SystemFailure(thePath + ": cannot be written");
   }
   if (::flock(itsLock.Get(), LOCK_EX | LOCK_NB) != 0)
   {
      throw std::runtime_error(thePath + ": in use by another tn serve or tn index");
   }
}

Descriptor ArchiveFolder::OpenSpoolFolder() const
{
   return OpenFolder(itsFolder.Get(), kSpoolFolder);
}

Descriptor ArchiveFolder::OpenFolderOf(const StoredPath& thePath, const std::function<void()>& theNotice) const
{
   Descriptor aFolder = TryOpenFolder(itsFolder.Get(), thePath.GetFolder());
   if (aFolder.IsOpen())
   {
      return aFolder;
   }
   const Descriptor anUpper = OpenFolder(itsFolder.Get(), thePath.GetUpperFolder(), theNotice);
   return OpenFolder(anUpper.Get(), thePath.GetLowerFolder(), theNotice);
}

void ArchiveFolder::Synchronise(const std::string& theName) const
{
   const Descriptor aFolder(::openat(itsFolder.Get(), theName.empty() ? "." : theName.c_str(), kFolder));
   if (!aFolder.IsOpen() || ::fsync(aFolder.Get()) != 0)
   {
      throw SystemFailure("cannot write the folder " + theName + " to the disk");
   }
}

// Of the whole file system, as nobody knows what an earlier process has left.
void ArchiveFolder::SynchroniseAll() const
{
   if (::syncfs(itsFolder.Get()) != 0)
   {
      throw SystemFailure(itsPath + ": cannot be written to the disk");
   }
}

void ArchiveFolder::EmptySpoolFolder() const
{
   const Descriptor aFolder = OpenSpoolFolder();
   for (const std::string& aName : NamesIn(itsPath + "/" + kSpoolFolder))
   {
      ::unlinkat(aFolder.Get(), aName.c_str(), 0);
   }
}

void ArchiveFolder::ForEachFile(const std::function<void(const std::string&)>& theVisitor) const
{
   for (const std::string& anUpper : NamesIn(itsPath))
   {
      const std::string anUpperPath = itsPath + "/" + anUpper;
      if ((anUpper != kNoStudy && !StoredPath::IsUID(anUpper)) || !IsRealFolder(anUpperPath))
      {
         continue;
      }
      for (const std::string& aLower : NamesIn(anUpperPath))
      {
         if (!IsRealFolder(anUpperPath + "/" + aLower))
         {
            continue;
         }
         for (const std::string& aFile : NamesIn(anUpperPath + "/" + aLower))
         {
            theVisitor(anUpper + "/" + aLower + "/" + aFile);
         }
      }
   }
}

IndexedInstance ArchiveFolder::Read(const std::string& thePath, bool theIsWhole) const
{
   IndexedInstance anInstance;
   anInstance.itsPath = thePath;
   try
   {
      const std::string aFile = itsPath + "/" + thePath;
      anInstance.itsSize = std::filesystem::file_size(aFile);
      WithLaterVRs<Part10FileInputStream> aStream(aFile);
      aStream.BeginDataset();
      if (aStream.GetPart10Header() == nullptr)
      {
         throw BrokenDataset("no DICOM file");
      }
      anInstance.itsTransferSyntax = aStream.GetTransferSyntaxUID();
      CheckIsServed(aStream);
      const std::unique_ptr<InputTransferSyntax> aDecoder = aStream.CreateDecoder();
      theIsWhole ? anInstance.itsKeys.ReadWhole(*aDecoder) : anInstance.itsKeys.ReadFront(*aDecoder);
      if (theIsWhole && aStream.GetStreamPosition() > anInstance.itsSize) // a value was skipped beyond the end
      {
         throw BrokenDataset("it is cut");
      }
   }
   catch (const ExceptionBase& anException)
   {
      throw std::runtime_error(ErrorText(anException));
   }
   if (StoredPath::Of(anInstance.itsKeys).GetText() != thePath)
   {
      throw std::runtime_error("it is not the instance that its name says");
   }
   return anInstance;
}

void ArchiveFolder::Repair(IndexDatabase& theIndex, const std::function<void(const std::string&)>& theTell) const
{
   theIndex.Begin();
   EndReplacements(theIndex);
   ForEachFile([&](const std::string& thePath) {
      const std::size_t aStart = thePath.rfind('/') + 1;
      const std::string aUID =
          thePath.ends_with(kSuffix) ? thePath.substr(aStart, thePath.size() - aStart - kSuffix.size()) : "";
      const std::optional<std::string> aKnown = theIndex.Find(aUID);
      if (aKnown == thePath)
      {
         return;
      }
      try
      {
         if (aKnown && ::faccessat(itsFolder.Get(), aKnown->c_str(), F_OK, 0) == 0)
         {
            throw std::runtime_error("the instance is stored as " + *aKnown);
         }
         theIndex.Add(Read(thePath, true));
      }
      catch (const SQLiteFailure&)
      {
         throw;
      }
      catch (const std::exception& anError)
      {
         SetAside(thePath);
         theTell(thePath + ": set aside in " + kDamagedFolder + ": " + anError.what());
      }
   });
   std::vector<std::string> aMissing;
   theIndex.ForEach([&](const std::string& theUID, const std::string& thePath) {
      if (::faccessat(itsFolder.Get(), thePath.c_str(), F_OK, 0) != 0 && errno == ENOENT)
      {
         aMissing.push_back(theUID);
      }
   });
   for (const std::string& aUID : aMissing)
   {
      theIndex.Remove(aUID);
   }
   theIndex.Commit();
}

// A file that was to replace another is whole if it is there. If not, the other one is found like any that the index
// does not know.
void ArchiveFolder::EndReplacements(IndexDatabase& theIndex) const
{
   std::map<std::string, std::string> aPaths;
   theIndex.ForEachReplacement(
       [&](const std::string& theUID, const std::string& thePath) { aPaths[theUID] = thePath; });
   for (const auto& [aUID, aPath] : aPaths)
   {
      theIndex.Remove(aUID);
      if (::faccessat(itsFolder.Get(), aPath.c_str(), F_OK, 0) != 0)
      {
         continue;
      }
      try
      {
         theIndex.Add(Read(aPath, true));
      }
      catch (const SQLiteFailure&)
      {
         throw;
      }
      catch (const std::runtime_error&)
      {} // it is looked at again with all others, and set aside
   }
   theIndex.ForgetReplacements();
}

void ArchiveFolder::SetAside(const std::string& thePath) const
{
   const Descriptor aFolder = OpenFolder(itsFolder.Get(), kDamagedFolder);
   std::string aName = thePath;
   std::replace(aName.begin(), aName.end(), '/', ',');
   ::renameat(itsFolder.Get(), thePath.c_str(), aFolder.Get(), aName.c_str());
}

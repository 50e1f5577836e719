#include "apps/tn/base/FilesBelow.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace
{
// A link to a folder is none. Some file systems do not tell the kind with the name.
EntryKind KindOf(int theFolder, const dirent& theEntry)
{
   struct stat aState = {};
   switch (theEntry.d_type)
   {
   case DT_REG: return EntryKind::kFile;
   case DT_DIR: return EntryKind::kFolder;
   case DT_UNKNOWN:
      if (::fstatat(theFolder, theEntry.d_name, &aState, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(aState.st_mode))
      {
         return EntryKind::kFolder;
      }
      [[fallthrough]];
   case DT_LNK:
      return ::fstatat(theFolder, theEntry.d_name, &aState, 0) == 0 && S_ISREG(aState.st_mode) ? EntryKind::kFile
                                                                                               : EntryKind::kOther;
   default: return EntryKind::kOther;
   }
}

} // namespace

int ForEachEntry(const std::string& thePath, const std::function<void(std::string_view, EntryKind)>& theVisitor)
{
   const std::unique_ptr<DIR, int (*)(DIR*)> aFolder(::opendir(thePath.c_str()), ::closedir);
   if (!aFolder)
   {
      return errno;
   }
   for (;;)
   {
      errno = 0;
      const dirent* const anEntry = ::readdir(aFolder.get());
      if (anEntry == nullptr)
      {
         return errno;
      }
      const std::string_view aName = anEntry->d_name;
      if (aName != "." && aName != "..")
      {
         theVisitor(aName, KindOf(::dirfd(aFolder.get()), *anEntry));
      }
   }
}

std::vector<std::string> FilesBelow(const fs::path& theFolder, const std::function<void(const std::string&)>& theFault)
{
   std::vector<std::string> aFiles;
   std::vector<fs::path> aFolders = {""};
   while (!aFolders.empty())
   {
      const fs::path aFolder = aFolders.back();
      aFolders.pop_back();
      const fs::path aPath = aFolder.empty() ? theFolder : theFolder / aFolder;
      const int anError = ForEachEntry(aPath.string(), [&](std::string_view theName, EntryKind theKind) {
         if (theKind == EntryKind::kFolder)
         {
            aFolders.push_back(aFolder / theName);
         }
         else if (theKind == EntryKind::kFile)
         {
            aFiles.push_back((aFolder / theName).string());
         }
      });
      if (anError != 0)
      {
         theFault(aPath.string() + ": cannot be read: " + std::generic_category().message(anError));
      }
   }
   std::sort(aFiles.begin(), aFiles.end());
   return aFiles;
}

#include "apps/tn/base/FilesBelow.h"

#include <algorithm>
#include <system_error>

namespace fs = std::filesystem;

std::vector<std::string> FilesBelow(const fs::path& theFolder, const std::function<void(const std::string&)>& theFault)
{
   std::vector<std::string> aFiles;
   std::vector<fs::path> aFolders = {""};
   while (!aFolders.empty())
   {
      const fs::path aFolder = aFolders.back();
      aFolders.pop_back();
      std::error_code anError;
      fs::directory_iterator anEntry(theFolder / aFolder, anError);
      while (!anError && anEntry != fs::directory_iterator())
      {
         const fs::path aPath = aFolder / anEntry->path().filename();
         std::error_code anIgnored; // what vanishes meanwhile is no file
         if (anEntry->is_directory(anIgnored) && !anEntry->is_symlink(anIgnored))
         {
            aFolders.push_back(aPath);
         }
         else if (anEntry->is_regular_file(anIgnored))
         {
            aFiles.push_back(aPath.string());
         }
         anEntry.increment(anError);
      }
      if (anError)
      {
         theFault((aFolder.empty() ? theFolder : theFolder / aFolder).string() +
                  ": cannot be read: " + anError.message());
      }
   }
   std::sort(aFiles.begin(), aFiles.end());
   return aFiles;
}

#include "apps/tn/answers/Worklist.h"

#include <iostream>

#include "apps/tn/base/FilesBelow.h"
#include "apps/tn/base/SystemFailure.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/TNResult.h"

namespace
{
constexpr std::chrono::seconds kInterval{1};

// Larger files are no worklist items.
constexpr off_t kLargest = 16 << 20;

// By itself, or as a part of a hidden folder.
bool IsHidden(const std::string& theName)
{
   return theName.starts_with('.') || theName.find("/.") != std::string::npos;
}
} // namespace

Worklist::Worklist(std::string theFolder) : itsFolder(std::move(theFolder))
{
   if (const int anError = ForEachEntry(itsFolder, [](std::string_view, EntryKind) {}); anError != 0)
   {
      throw SystemFailure("cannot read the worklist folder " + itsFolder, anError);
   }
}

std::vector<Worklist::Item> Worklist::GetItems()
{
   const std::lock_guard aLock(itsMutex);
   if (const auto aNow = Clock::now(); aNow >= itsNextScan)
   {
      Scan();
      itsNextScan = aNow + kInterval;
   }
   std::vector<Item> anItems;
   for (const auto& [aPath, aFile] : itsFiles)
   {
      if (aFile.itsItem != nullptr)
      {
         anItems.push_back(aFile.itsItem);
      }
   }
   return anItems;
}

bool Worklist::File::IsSame(const struct stat& theStatus) const
{
   return itsTime.tv_sec == theStatus.st_mtim.tv_sec && itsTime.tv_nsec == theStatus.st_mtim.tv_nsec &&
          itsSize == theStatus.st_size && itsNumber == theStatus.st_ino;
}

// Loads what is new or has changed. A folder that cannot be read has no items.
void Worklist::Scan()
{
   std::map<std::string, File> aFiles;
   for (const std::string& aName : FilesBelow(itsFolder, [](const std::string&) {}))
   {
      if (IsHidden(aName))
      {
         continue;
      }
      const std::string aPath = itsFolder + "/" + aName;
      struct stat aStatus;
      if (::stat(aPath.c_str(), &aStatus) != 0 || !S_ISREG(aStatus.st_mode) || aStatus.st_size == 0)
      {
         continue;
      }
      const auto aKnown = itsFiles.find(aPath);
      const bool isKnown = aKnown != itsFiles.end() && aKnown->second.IsSame(aStatus);
      aFiles[aPath] = isKnown ? aKnown->second
                              : File{aStatus.st_mtim, aStatus.st_size, aStatus.st_ino,
                                     aStatus.st_size > kLargest ? nullptr : Load(aPath)};
   }
   itsFiles = std::move(aFiles);
}

Worklist::Item Worklist::Load(const std::string& thePath)
{
   auto aDataset = std::make_shared<DICOMDataObject>();
   TNResultCode aResult = TN_NO_ERROR;
   int anError = 0;
   if (!aDataset->LoadFromFile(thePath, aResult, anError))
   {
      std::cerr << OnOneLine("tn serve: worklist item " + thePath + ": " + TNResult::Describe(aResult)) + "\n";
      return nullptr;
   }
   return aDataset;
}

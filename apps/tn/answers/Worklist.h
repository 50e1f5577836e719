// A modality worklist in a folder: each DICOM file below it, but for hidden ones, is an item. Who writes them should
// write under another name (beginning with a dot) first and rename.
//
// One worklist serves all associations. The folder is looked at when somebody asks, once a second at most.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <sys/stat.h>

class DICOMDataObject;

class Worklist
{
public:
   using Item = std::shared_ptr<const DICOMDataObject>;

   // Throws std::runtime_error when it is no folder that can be read.
   explicit Worklist(std::string theFolder);

   // As they are now; of any thread. Files that cannot be read are named on standard error, once, and left out.
   std::vector<Item> GetItems();

private:
   using Clock = std::chrono::steady_clock;

   struct File
   {
      struct timespec itsTime;
      off_t itsSize;
      ino_t itsNumber;
      Item itsItem; // null for one that cannot be read

      bool IsSame(const struct stat& theStatus) const;
   };

   void Scan();
   static Item Load(const std::string& thePath);

   std::string itsFolder;
   std::mutex itsMutex;
   Clock::time_point itsNextScan{};
   std::map<std::string, File> itsFiles;
};

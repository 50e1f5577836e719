#include "apps/tn/archive/IndexCommand.h"

#include <filesystem>
#include <iostream>

#include <CLI/CLI.hpp>

#include "apps/tn/archive/ArchiveFolder.h"
#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/Progress.h"
#include "apps/tn/base/SystemFailure.h"
#include "talvenor/foundation/OneLine.h"

namespace fs = std::filesystem;

IndexCommand::IndexCommand(CLI::App& theProgram)
    : Command(theProgram, "index", "Make the index of a folder that tn serve keeps instances in anew")
{
   itsOptions.add_option("FOLDER", itsFolder, "The folder that tn serve --store was told")
       ->required()
       ->check(CLI::ExistingDirectory);
   itsOptions.add_flag("--check", itsReadsWhole, "Read every file to its end");
   itsOptions.add_flag("--json", itsIsJson, "The result as one JSON object");
   itsOptions.footer("The index is replaced when all files have been read; files that cannot be read are named, left "
                     "where they are and left out.\n\n"
                     "Example:\n  tn index /var/lib/archive");
}

int IndexCommand::Run()
{
   try
   {
      LoadDictionaries("");
      const ArchiveFolder aFolder(itsFolder, false);
      return Rebuild(aFolder);
   }
   catch (const SQLiteFailure& anError)
   {
      std::cerr << OnOneLine("tn index: " + itsFolder + ": " + anError.what()) << "\n";
      return ExitCode::kCouldNotWrite;
   }
   catch (const std::exception& anError)
   {
      std::cerr << OnOneLine("tn index: " + std::string(anError.what())) << "\n";
      return ExitCode::kCouldNotRead;
   }
}

int IndexCommand::Rebuild(const ArchiveFolder& theFolder) const
{
   const std::string aPath = theFolder.GetIndexPath();
   const std::string aNewPath = aPath + ".new";
   const auto aRemove = [](const std::string& theDatabase) {
      for (const char* aSuffix : {"", "-wal", "-shm"})
      {
         fs::remove(theDatabase + aSuffix);
      }
   };
   std::size_t aTotal = 0;
   theFolder.ForEachFile([&](const std::string&) { ++aTotal; });
   std::size_t aFaults = 0;
   std::int64_t aCount = 0;
   aRemove(aNewPath);
   {
      IndexDatabase anIndex(aNewPath);
      anIndex.HurryUp();
      anIndex.Begin();
      Progress aProgress(aTotal);
      theFolder.ForEachFile([&](const std::string& theFile) {
         aProgress.Begin(theFile);
         try
         {
            const IndexedInstance anInstance = theFolder.Read(theFile, itsReadsWhole);
            anIndex.Add(anInstance);
            aProgress.End(anInstance.itsSize);
         }
         catch (const SQLiteFailure&)
         {
            throw;
         }
         catch (const std::exception& anError)
         {
            ++aFaults;
            aProgress.Wipe();
            std::cerr << OnOneLine("tn index: " + theFile + ": " + anError.what()) << "\n";
            aProgress.End(0);
         }
      });
      anIndex.Commit();
      anIndex.SetAgreesWithFiles(true);
      aCount = anIndex.Count();
   }
   aRemove(aPath); // nobody uses it: the folder is locked
   fs::rename(aNewPath, aPath);
   Tell(aCount, aFaults);
   return aFaults != 0 ? ExitCode::kSomeFailed : ExitCode::kDone;
}

void IndexCommand::Tell(std::int64_t theCount, std::size_t theFaults) const
{
   if (itsIsJson)
   {
      JsonWriter aJson(std::cout);
      aJson.BeginObject();
      aJson.Number("indexed", theCount);
      aJson.Number("leftOut", theFaults);
      aJson.EndObject();
      std::cout << "\n";
      return;
   }
   std::cout << theCount << " instances indexed"
             << (theFaults != 0 ? ", " + std::to_string(theFaults) + " files left out" : "") << "\n";
}

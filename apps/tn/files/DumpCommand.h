// tn dump: prints DICOM files.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "apps/tn/base/Command.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;
class InputFile;
class Part10InputStream;

class DumpCommand : public Command
{
public:
   explicit DumpCommand(CLI::App& theProgram);
   ~DumpCommand() override;

   int Run() override;

private:
   void DumpFile(const std::string& theName);
   void DumpElements(InputFile& theFile);
   void DumpSets(InputFile& theFile);
   void DumpJson(const std::string& theName, InputFile& theFile);

   // Into itsObject. Calls theShow when all of the dataset is there that can be read, and then throws when it is not
   // whole.
   void Load(Part10InputStream& theStream, const std::function<void()>& theShow);

   void PrintSet(const DICOMDataObject& theSet);
   UINT16 GetStopGroup() const;
   UINT16 GetStopElement() const;

   std::unique_ptr<DICOMDataObject> itsObject; // of the last file: kept, as the program may end faster than it would go

   std::vector<std::string> itsFiles;
   std::string itsData;
   std::string itsUntil;
   std::optional<UINT32> itsEnd; // the tag that itsUntil names
   bool itsElementsOnly = false;
   bool itsIsJson = false;
   bool itsKnownOnly = false;
   bool itsMetaOnly = false;
};

// tn dicomdir: writes and prints the directories of media (PS3.10 8.6).
#pragma once

#include <string>

#include "apps/tn/base/Command.h"
#include "apps/tn/files/FileID.h"

class DirectoryBuilder;

class DicomdirCommand : public Command
{
public:
   explicit DicomdirCommand(CLI::App& theProgram);

   int Run() override;

private:
   void AddCreate();
   void AddList();
   int Create();
   int List();
   int ListDirectory(const std::string& theFile);

   // Adds the file at thePath, from the folder on; false when it is a DICOM file and had to be left out.
   bool AddFile(DirectoryBuilder& theBuilder, const std::string& thePath);
   void Write(DirectoryBuilder& theBuilder, const std::string& theOutput) const;

   CLI::App* itsCreate = nullptr;
   std::string itsFolder;
   std::string itsOutput;
   std::string itsFileSetID;
   bool itsTakesAnyNames = false;

   std::string itsFile;
   bool itsShowsOffsets = false;
   bool itsIsJson = false;

   std::string itsData;
};

// tn index: makes the index of an archive anew from its files.
#pragma once

#include <cstddef>
#include <cstdint>

#include "apps/tn/base/Command.h"

class ArchiveFolder;

class IndexCommand : public Command
{
public:
   explicit IndexCommand(CLI::App& theProgram);
   int Run() override;

private:
   int Rebuild(const ArchiveFolder& theFolder) const;
   void Tell(std::int64_t theCount, std::size_t theFaults) const;

   std::string itsFolder;
   bool itsReadsWhole = false;
   bool itsIsJson = false;
};

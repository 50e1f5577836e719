// The file of --config: values for options, in a section for each command, and names for peers.
//
//    [peers]
//    archive = "ARCHIVE@pacs.example:104"     # tn echo @archive
//    [send]
//    aet = "WORKSTATION"                      # where the command line does not say otherwise
#pragma once

#include <CLI/CLI.hpp>

class ConfigFile : public CLI::ConfigTOML
{
public:
   // The option, for every command, before it or behind it. The environment may name the file, too (TN_CONFIG).
   static void AddTo(CLI::App& theProgram);

   // theProgram is borrowed.
   explicit ConfigFile(const CLI::App& theProgram) : itsProgram(theProgram) {}

   // The options; the names are learned at once. Throws CLI::ConfigError for a peer that is written wrongly, and for
   // commands and options that there are none of: who wrote them relies on them.
   std::vector<CLI::ConfigItem> from_config(std::istream& theFile) const override;

private:
   void CheckOption(const CLI::ConfigItem& theItem) const;

   const CLI::App& itsProgram;
};

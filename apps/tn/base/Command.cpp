#include "apps/tn/base/Command.h"

#include <CLI/CLI.hpp>

Command::Command(CLI::App& theProgram, const std::string& theName, const std::string& theDescription)
    : itsOptions(*theProgram.add_subcommand(theName, theDescription))
{}

bool Command::IsChosen() const
{
   return itsOptions.parsed();
}

// tn: the DICOM toolkit on the command line.
#include <iostream>

#include <CLI/CLI.hpp>

#include "apps/tn/DumpCommand.h"
#include "apps/tn/ExitCode.h"

namespace
{
int Run(int theCount, char** theArguments)
{
   CLI::App aProgram("tn, the DICOM toolkit on the command line", "tn");
   aProgram.set_version_flag("--version", "tn " TN_VERSION);
   aProgram.require_subcommand(1);
   DumpCommand aDump(aProgram);
   try
   {
      aProgram.parse(theCount, theArguments);
   }
   catch (const CLI::ParseError& anError)
   {
      return aProgram.exit(anError) == 0 ? ExitCode::kDone : ExitCode::kWrongUse;
   }
   return aDump.Run();
}
} // namespace

int main(int theCount, char** theArguments)
{
   std::ios::sync_with_stdio(false);   // whole blocks, not characters
   try
   {
      return Run(theCount, theArguments);
   }
   catch (const std::exception& anError)
   {
      std::cerr << "tn: " << anError.what() << "\n";
      return ExitCode::kSomeFailed;
   }
}

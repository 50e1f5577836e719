// tn: the DICOM toolkit on the command line.
#include <cstdlib>
#include <iostream>
#include <memory>

#include <CLI/CLI.hpp>

#include "apps/tn/archive/IndexCommand.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/files/ConvertCommand.h"
#include "apps/tn/files/DicomdirCommand.h"
#include "apps/tn/files/DumpCommand.h"
#include "apps/tn/files/FramesCommand.h"
#include "apps/tn/help/CompletionsCommand.h"
#include "apps/tn/help/ExplainCommand.h"
#include "apps/tn/help/HelpFormatter.h"
#include "apps/tn/network/ConfigFile.h"
#include "apps/tn/network/EchoCommand.h"
#include "apps/tn/print/PrintCommand.h"
#include "apps/tn/query/FindCommand.h"
#include "apps/tn/query/MoveCommand.h"
#include "apps/tn/send/SendCommand.h"
#include "apps/tn/serve/ServeCommand.h"
#include "talvenor/foundation/TNXInitializer.h"
#include "talvenor/ul/UserInformationItem.h"

namespace
{
// Files are read in blocks of this size.
constexpr unsigned int kFileBuffer = 65536;

// Ends the program without taking its datasets and dictionaries down piece by piece, which for a large file takes as
// long as reading it: the operating system takes the memory back at once.
[[noreturn]] void End(int theResult)
{
   std::cout.flush();
   std::cerr.flush();
   std::quick_exit(theResult);
}

int Run(int theCount, char** theArguments)
{
   CLI::App aProgram("tn, the DICOM toolkit on the command line", "tn");
   aProgram.set_version_flag("--version", "tn " TN_VERSION);
   aProgram.require_subcommand(1);
   aProgram.formatter(std::make_shared<HelpFormatter>());
   aProgram.footer("tn COMMAND --help tells of a command, tn explain WORD of DICOM.");
   ConfigFile::AddTo(aProgram);
   const std::unique_ptr<Command> aCommands[] = {
       std::make_unique<DumpCommand>(aProgram),        std::make_unique<ConvertCommand>(aProgram),
       std::make_unique<FramesCommand>(aProgram),      std::make_unique<DicomdirCommand>(aProgram),
       std::make_unique<EchoCommand>(aProgram),        std::make_unique<SendCommand>(aProgram),
       std::make_unique<FindCommand>(aProgram),        std::make_unique<MoveCommand>(aProgram),
       std::make_unique<PrintCommand>(aProgram),       std::make_unique<ServeCommand>(aProgram),
       std::make_unique<IndexCommand>(aProgram),       std::make_unique<ExplainCommand>(aProgram),
       std::make_unique<CompletionsCommand>(aProgram),
   };
   try
   {
      aProgram.parse(theCount, theArguments);
   }
   catch (const CLI::ParseError& anError)
   {
      return aProgram.exit(anError) == 0 ? ExitCode::kDone : ExitCode::kWrongUse;
   }
   TNXInitializer::SetDefaultFileBufferSize(kFileBuffer);
   UserInformationItem::SetOthersPassedOver(1); // peers may tell who their user is
   for (const std::unique_ptr<Command>& aCommand : aCommands)
   {
      if (aCommand->IsChosen())
      {
         End(aCommand->Run());
      }
   }
   return ExitCode::kWrongUse;
}
} // namespace

int main(int theCount, char** theArguments)
{
   std::ios::sync_with_stdio(false); // whole blocks, not characters
   try
   {
      return Run(theCount, theArguments);
   }
   catch (const std::exception& anError)
   {
      std::cerr << "tn: " << anError.what() << "\n";
      return ExitCode::kSomeFailed;
   }
   catch (const ExceptionBase& anException)
   {
      std::cerr << "tn: " << ErrorText(anException) << "\n";
      return ExitCode::kSomeFailed;
   }
}

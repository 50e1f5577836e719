// tn completions: what bash, zsh and fish need to complete the commands and options of tn, made from the options
// themselves. Not listed in --help: it is for those who package the program.
#pragma once

#include "apps/tn/base/Command.h"

class CompletionsCommand : public Command
{
public:
   explicit CompletionsCommand(CLI::App& theProgram);

   int Run() override;

private:
   const CLI::App& itsProgram;
   std::string itsShell;
};

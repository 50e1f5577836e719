// tn explain: what a UID, a tag, a status or a value representation is.
#pragma once

#include <vector>

#include "apps/tn/base/Command.h"

class ExplainCommand : public Command
{
public:
   explicit ExplainCommand(CLI::App& theProgram);

   int Run() override;

private:
   std::vector<std::string> itsWords;
   std::string itsData;
   bool itsIsJson = false;
};

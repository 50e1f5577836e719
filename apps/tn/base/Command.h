// One of the commands of tn: its options, which its constructor adds to the program, and what it does.
#pragma once

#include <string>

namespace CLI
{
class App;
} // namespace CLI

class Command
{
public:
   virtual ~Command() = default;

   // Whether the command line names it.
   bool IsChosen() const;

   // Returns the exit code of the program.
   virtual int Run() = 0;

protected:
   Command(CLI::App& theProgram, const std::string& theName, const std::string& theDescription);

   CLI::App& itsOptions;
};

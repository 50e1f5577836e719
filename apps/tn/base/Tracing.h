// The options by which a command tells what happens between it and a peer, in every command of the network.
#pragma once

#include <string>

namespace CLI
{
class App;
} // namespace CLI

class Tracing
{
public:
   explicit Tracing(CLI::App& theOptions);

   // Switches on what the options ask for. Throws std::runtime_error when the log cannot be written.
   void Begin() const;

private:
   bool IsWanted() const { return itsIsVerbose || !itsFlags.empty() || !itsLog.empty(); }

   bool itsIsVerbose = false;
   std::string itsFlags;
   std::string itsLog;
};

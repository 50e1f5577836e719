// The option that makes a node a printer.
#pragma once

#include <string>

#include "apps/tn/node/NodeRole.h"

namespace CLI
{
class App;
} // namespace CLI

class PrintOptions
{
public:
   explicit PrintOptions(CLI::App& theOptions);

   // Adds the role of a printer of that name, when one is wanted.
   void AddRoles(NodeRoleMakers& theRoles, const std::string& theTitle) const;

private:
   std::string itsFolder;
   unsigned int itsMegabytes = 1024;
};

// The option that makes a node a printer.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "apps/tn/NodeRole.h"

class PrintOptions
{
public:
   explicit PrintOptions(CLI::App& theOptions);

   // Adds the role of a printer, when one is wanted.
   void AddRoles(NodeRoleMakers& theRoles) const;

private:
   std::string itsFolder;
};

#include "apps/tn/print/PrintOptions.h"

#include <CLI/CLI.hpp>

#include "apps/tn/print/PrintRole.h"

PrintOptions::PrintOptions(CLI::App& theOptions)
{
   theOptions
       .add_option(
           "--print", itsFolder,
           "Be a printer: each film becomes a folder in this one, with its attributes, its images and a picture "
           "of the sheet")
       ->type_name("DIR")
       ->check(CLI::ExistingDirectory)
       ->group("Print");
}

void PrintOptions::AddRoles(NodeRoleMakers& theRoles) const
{
   if (!itsFolder.empty())
   {
      theRoles.push_back([aFolder = itsFolder] { return std::make_unique<PrintRole>(aFolder); });
   }
}

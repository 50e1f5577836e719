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
   theOptions
       .add_option("--print-memory", itsMegabytes,
                   "Megabytes that the print sessions of all clients may hold together; an image may have 128, and a "
                   "quarter of this at most")
       ->type_name("MB")
       ->check(CLI::Range(1, 1 << 20))
       ->capture_default_str()
       ->group("Print");
}

void PrintOptions::AddRoles(NodeRoleMakers& theRoles, const std::string& theTitle) const
{
   if (!itsFolder.empty())
   {
      const auto aPrinter = std::make_shared<Printer>(theTitle, itsFolder, UINT64{itsMegabytes} << 20);
      theRoles.push_back([aPrinter] { return std::make_unique<PrintRole>(aPrinter); });
   }
}

#include "apps/tn/network/ConfigFile.h"

#include <cstdlib>

#include "apps/tn/network/Peer.h"

namespace
{
constexpr char kPeers[] = "peers";
constexpr char kSectionBegins[] = "++"; // items of CLI11's own
constexpr char kSectionEnds[] = "--";
} // namespace

void ConfigFile::AddTo(CLI::App& theProgram)
{
   const char* const aFile = std::getenv("TN_CONFIG");
   theProgram.fallthrough(); // commands pass --config on to the program
   theProgram.config_formatter(std::make_shared<ConfigFile>(theProgram));
   theProgram
       .set_config("--config", aFile != nullptr ? aFile : "",
                   "File with options for commands and names for peers; else the one that TN_CONFIG names",
                   aFile != nullptr && *aFile != '\0')
       ->type_name("FILE");
}

void ConfigFile::CheckOption(const CLI::ConfigItem& theItem) const
{
   const CLI::App* aCommand = &itsProgram;
   std::string aName = aCommand->get_name();
   for (const std::string& aSection : theItem.parents)
   {
      aName += " " + aSection;
      const std::vector<const CLI::App*> aFound =
          aCommand->get_subcommands([&](const CLI::App* theOne) { return theOne->get_name() == aSection; });
      if (aFound.empty())
      {
         throw CLI::ConfigError("configuration file: [" + aSection + "]: there is no command " + aName);
      }
      aCommand = aFound.front();
   }
   if (theItem.name != kSectionBegins && theItem.name != kSectionEnds &&
       aCommand->get_option_no_throw("--" + theItem.name) == nullptr &&
       aCommand->get_option_no_throw("-" + theItem.name) == nullptr)
   {
      throw CLI::ConfigError("configuration file: " + aName + " has no option --" + theItem.name);
   }
}

std::vector<CLI::ConfigItem> ConfigFile::from_config(std::istream& theFile) const
{
   std::vector<CLI::ConfigItem> anOptions;
   for (CLI::ConfigItem& anItem : CLI::ConfigTOML::from_config(theFile))
   {
      if (anItem.parents.empty() || anItem.parents.front() != kPeers)
      {
         CheckOption(anItem);
         anOptions.push_back(std::move(anItem));
      }
      else if (anItem.name != kSectionBegins && anItem.name != kSectionEnds)
      {
         const std::string aText = anItem.inputs.empty() ? "" : anItem.inputs.front();
         if (const std::string aFault = NamePeer(anItem.name, aText); !aFault.empty())
         {
            throw CLI::ConfigError("configuration file: peer " + anItem.name + ": " + aFault);
         }
      }
   }
   return anOptions;
}

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
   theProgram.config_formatter(std::make_shared<ConfigFile>());
   theProgram
       .set_config("--config", aFile != nullptr ? aFile : "",
                   "File with options for commands and names for peers; else the one that TN_CONFIG names")
       ->type_name("FILE");
}

std::vector<CLI::ConfigItem> ConfigFile::from_config(std::istream& theFile) const
{
   std::vector<CLI::ConfigItem> anOptions;
   for (CLI::ConfigItem& anItem : CLI::ConfigTOML::from_config(theFile))
   {
      if (anItem.parents.empty() || anItem.parents.front() != kPeers)
      {
         anOptions.push_back(std::move(anItem));
      }
      else if (anItem.name != kSectionBegins && anItem.name != kSectionEnds)
      {
         const std::string aText = anItem.inputs.empty() ? "" : anItem.inputs.front();
         if (const std::string aFault = NamePeer(anItem.name, aText); !aFault.empty())
         {
            throw CLI::ConfigError("peer " + anItem.name + ": " + aFault);
         }
      }
   }
   return anOptions;
}

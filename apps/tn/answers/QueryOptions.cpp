#include "apps/tn/answers/QueryOptions.h"

#include <CLI/CLI.hpp>

#include "apps/tn/answers/MoveRole.h"
#include "apps/tn/answers/PeerList.h"
#include "apps/tn/answers/QueryRole.h"
#include "apps/tn/answers/Worklist.h"
#include "apps/tn/answers/WorklistRole.h"

namespace
{
constexpr char kGroup[] = "Query and retrieve";
} // namespace

QueryOptions::QueryOptions(CLI::App& theOptions)
{
   theOptions
       .add_option("--peers", itsPeersFile,
                   "File with the destinations of C-MOVE, one AE@HOST:PORT a line; read anew for each C-MOVE")
       ->type_name("FILE")
       ->check(CLI::ExistingFile)
       ->group(kGroup);
   theOptions
       .add_option("--worklist", itsWorklistFolder,
                   "Answer worklist queries with the DICOM files of a folder, as it is at the moment")
       ->type_name("DIR")
       ->check(CLI::ExistingDirectory)
       ->group(kGroup);
   theOptions
       .add_flag("--relational", itsIsRelational,
                 "Queries and retrieves need no unique keys of the levels above their own")
       ->group(kGroup);
}

QueryOptions::~QueryOptions() = default;

void QueryOptions::AddRoles(NodeRoleMakers& theRoles, const std::string& theTitle, Archive* theArchive)
{
   if (!itsPeersFile.empty())
   {
      itsPeers = std::make_unique<PeerList>(itsPeersFile);
   }
   if (!itsWorklistFolder.empty())
   {
      itsWorklist = std::make_unique<Worklist>(itsWorklistFolder);
      theRoles.push_back([this] { return std::make_unique<WorklistRole>(*itsWorklist); });
   }
   if (theArchive != nullptr)
   {
      const QueryPlan::Rules aRules{itsIsRelational, theTitle};
      const ArchiveRetrieve::Settings aSettings{itsIsRelational, theTitle};
      theRoles.push_back([theArchive, aRules] { return std::make_unique<QueryRole>(*theArchive, aRules); });
      theRoles.push_back(
          [this, theArchive, aSettings] { return std::make_unique<MoveRole>(*theArchive, itsPeers.get(), aSettings); });
   }
}

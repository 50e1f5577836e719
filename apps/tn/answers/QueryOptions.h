// The options that make a node answer queries and retrieves, and what they make.
#pragma once

#include <memory>
#include <string>

#include "apps/tn/node/NodeRole.h"

namespace CLI
{
class App;
} // namespace CLI

class Archive;
class PeerList;
class Worklist;

class QueryOptions
{
public:
   explicit QueryOptions(CLI::App& theOptions);
   ~QueryOptions();

   // Adds the roles of a node with theTitle; theArchive, which is borrowed, may be null. Throws std::runtime_error.
   void AddRoles(NodeRoleMakers& theRoles, const std::string& theTitle, Archive* theArchive);

private:
   bool itsIsRelational = false;
   std::string itsPeersFile;
   std::string itsWorklistFolder;
   std::unique_ptr<PeerList> itsPeers;
   std::unique_ptr<Worklist> itsWorklist;
};

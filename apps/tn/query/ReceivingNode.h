// A node that stores what it is sent while another command runs: the destination of a C-MOVE in the same program.
#pragma once

#include <memory>
#include <string>
#include <thread>

#include "apps/tn/archive/Archive.h"
#include "apps/tn/archive/StoreRole.h"
#include "apps/tn/node/Node.h"

class ReceivingNode
{
public:
   // Keeps instances in theFolder, as Archive does. Listens when it is made. Throws std::runtime_error when the folder
   // cannot be used, NetworkFailure when the port is taken.
   ReceivingNode(const std::string& theTitle, int thePort, const std::string& theFolder);

   // Gives associations a moment to end.
   ~ReceivingNode();

   int GetPort() const { return itsNode->GetPort(); }

private:
   std::unique_ptr<Node> MakeNode(const std::string& theTitle, int thePort);

   Archive itsArchive;
   StoreRole::Settings itsSettings;
   std::unique_ptr<Node> itsNode;
   std::thread itsThread; // last: it uses the others
};

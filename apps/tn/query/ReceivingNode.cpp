#include "apps/tn/query/ReceivingNode.h"

#include "apps/tn/base/ExitCode.h"
#include "apps/tn/network/NetworkFailure.h"
#include "apps/tn/node/EchoRole.h"

namespace
{
Archive::Settings SettingsFor(const std::string& theFolder)
{
   Archive::Settings aSettings;
   aSettings.itsFolder = theFolder;
   return aSettings;
}
} // namespace

ReceivingNode::ReceivingNode(const std::string& theTitle, int thePort, const std::string& theFolder)
    : itsArchive(SettingsFor(theFolder)), itsNode(MakeNode(theTitle, thePort)), itsThread([this] { itsNode->Run(); })
{}

ReceivingNode::~ReceivingNode()
{
   itsNode->Stop();
   itsThread.join();
}

std::unique_ptr<Node> ReceivingNode::MakeNode(const std::string& theTitle, int thePort)
{
   itsSettings.itsAcceptsUnknown = true; // what was asked for is wanted, whatever it is
   Node::Settings aSettings;
   aSettings.itsTitle = theTitle;
   aSettings.itsPort = thePort;
   const NodeRoleMakers aRoles = {
       [] { return std::make_unique<EchoRole>(); },
       [this] { return std::make_unique<StoreRole>(itsArchive, nullptr, itsSettings); },
   };
   try
   {
      return std::make_unique<Node>(aSettings, aRoles);
   }
   catch (const std::runtime_error& anError)
   {
      throw NetworkFailure(ExitCode::kNoConnection, anError.what());
   }
}

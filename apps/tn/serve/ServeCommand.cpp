#include "apps/tn/serve/ServeCommand.h"

#include <atomic>
#include <csignal>
#include <iostream>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/NumberCheck.h"
#include "apps/tn/network/Peer.h"
#include "apps/tn/node/EchoRole.h"
#include "talvenor/foundation/TNXInitializer.h"

namespace
{
// The node that a signal stops.
std::atomic<Node*> gNode = nullptr;

void Stop(int)
{
   if (Node* const aNode = gNode)
   {
      aNode->Stop();
   }
}
} // namespace

ServeCommand::ServeCommand(CLI::App& theProgram)
    : Command(theProgram, "serve", "Be a DICOM node: keep what is sent, answer what is asked"), itsStorage(itsOptions),
      itsQuery(itsOptions), itsPrint(itsOptions), itsTracing(itsOptions)
{
   itsOptions.add_option("--aet", itsSettings.itsTitle, "Application entity title of this node")->capture_default_str();
   itsOptions.add_option("--port", itsSettings.itsPort, "Port; 0 is any free one")
       ->check(CLI::Range(0, 65535))
       ->capture_default_str();
   itsOptions.add_option("--bind", itsSettings.itsBindAddress,
                         "Address to listen on; every one of this host otherwise");
   itsOptions
       .add_option("--policy", itsSettings.itsPolicy, "File that lists what is accepted: titles, SOP classes, syntaxes")
       ->check(CLI::ExistingFile);
   itsOptions.add_option("--max-associations", itsSettings.itsMaximumAssociations, "More at the same time are refused")
       ->check(CLI::Range(1, 10000))
       ->capture_default_str();
   GuardedStream::Limits& aLimits = itsSettings.itsLimits;
   itsOptions.add_option("--artim", aLimits.itsRequest, "Seconds for a request to arrive, and for a peer to close")
       ->check(NotNegative())
       ->capture_default_str();
   itsOptions.add_option("--message-timeout", aLimits.itsMessage, "Seconds for a message to arrive and be answered")
       ->check(NotNegative())
       ->capture_default_str();
   itsOptions.add_option("--idle-timeout", aLimits.itsIdle, "Seconds that an association may be idle")
       ->check(NotNegative())
       ->capture_default_str();
   itsOptions.add_option("--max-pdu", itsMaxPDU, "Bytes of the longest PDU that peers may send; 0 is without limit")
       ->check(CLI::Range(0U, 0x7FFFFFFFU))
       ->capture_default_str();
   itsOptions.footer(
       "A limit of 0 seconds is none. SIGTERM and SIGINT end the node; messages under way are finished.\n\n"
       "Example:\n  tn serve --aet ARCHIVE --port 11112 --store /var/lib/archive");
}

// What sockets and associations are made with.
void ServeCommand::SetDefaults() const
{
   constexpr int kAsTheSystemLikes = 0; // it lets the buffers grow with the speed of the connection
   TNXInitializer::SetDefaultTCPReceiveBufferSize(kAsTheSystemLikes);
   TNXInitializer::SetDefaultTCPSendBufferSize(kAsTheSystemLikes);
   TNXInitializer::SetDefaultMaxPDUReceiveLength(itsMaxPDU);
}

int ServeCommand::Run()
{
   if (const std::string aFault = CheckTitle(itsSettings.itsTitle); !aFault.empty())
   {
      std::cerr << "tn serve: --aet " << itsSettings.itsTitle << ": " << aFault << "\n";
      return ExitCode::kWrongUse;
   }
   try
   {
      LoadDictionaries("");
      itsTracing.Begin();
      SetDefaults();
      NodeRoleMakers aRoles = {[] { return std::make_unique<EchoRole>(); }};
      if (itsStorage.IsWanted() && !itsStorage.Begin())
      {
         return ExitCode::kCouldNotWrite;
      }
      itsQuery.AddRoles(aRoles, itsSettings.itsTitle, itsStorage.GetArchive());
      itsPrint.AddRoles(aRoles, itsSettings.itsTitle);
      if (itsStorage.IsWanted())
      {
         aRoles.push_back(itsStorage.MakeRole()); // last: it may take what nobody knows
      }
      Node aNode(itsSettings, aRoles);
      gNode = &aNode;
      std::signal(SIGTERM, Stop);
      std::signal(SIGINT, Stop);
      std::cerr << "tn serve: " << itsSettings.itsTitle << " listens on port " << aNode.GetPort() << std::endl;
      aNode.Run();
      gNode = nullptr;
      itsStorage.End();
      return ExitCode::kDone;
   }
   catch (const std::exception& anError)
   {
      std::cerr << "tn serve: " << anError.what() << "\n";
      return ExitCode::kNoConnection;
   }
}

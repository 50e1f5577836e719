// The options that say whom a command calls, as whom and how patiently, in every command that requests an association;
// and the calling. It sets defaults of the whole process: one requester a run.
#pragma once

#include <chrono>
#include <string>

#include "apps/tn/network/Peer.h"
#include "apps/tn/network/Watchdog.h"

namespace CLI
{
class App;
} // namespace CLI

class NetworkFailure;
class PDU_Service;

class Requester
{
public:
   explicit Requester(CLI::App& theOptions);

   const Peer& GetPeer() const { return itsPeer; }
   const std::string& GetTitle() const { return itsTitle; }
   std::chrono::duration<double> GetTimeout() const { return std::chrono::duration<double>(itsTimeout); }

   // Before the first service is made.
   void SetDefaults() const;

   // Connects theService to the peer and requests what it proposes. Throws NetworkFailure.
   void Associate(PDU_Service& theService, Watchdog& theWatchdog) const;

   // Ends an association, if there still is one, on which the peer did not answer as it should. Takes a second at most.
   void Abort(PDU_Service& theService, Watchdog& theWatchdog) const;

   // What it means that an operation on theService has failed; wasLate is what the watchdog says.
   NetworkFailure ExplainFailure(const PDU_Service& theService, bool wasLate) const;

private:
   Peer itsPeer;
   std::string itsTitle = "TALVENOR";
   double itsTimeout = 30;         // seconds; 0: none
   unsigned int itsMaxPDU = 32768; // bytes; 0: without limit
};

// A DICOM node: listens, and serves each association on a thread of its own.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "apps/tn/node/Deadlines.h"
#include "apps/tn/node/GuardedStream.h"
#include "apps/tn/node/NodeRole.h"
#include "talvenor/association/CheckedPDU_Service.h"
#include "talvenor/ul/Socket.h"

class Node
{
public:
   struct Settings
   {
      std::string itsTitle = "TALVENOR";
      int itsPort = 11112; // 0: any free one
      std::string itsBindAddress;
      std::string itsPolicy; // file of CheckedPDU_Service, empty for none
      unsigned int itsMaximumAssociations = 200;
      GuardedStream::Limits itsLimits;
   };

   // Listens. Throws std::runtime_error when the port is taken or the policy cannot be read.
   Node(const Settings& theSettings, NodeRoleMakers theRoles);
   ~Node();

   int GetPort() const { return itsListener.GetListenPort(); }

   // Serves until Stop. Then no more associations are accepted, idle ones end at once, and others have a moment to
   // finish their message.
   void Run();

   // From any thread, and from a signal handler.
   void Stop()
   {
      itsIsStopped = true;
      itsListener.SetAbortRequestedFlag(1);
   }

private:
   struct Connection;

   void ServeNext();
   void Drain();
   static void ServeOnThread(void* theConnection);

   Settings itsSettings;
   NodeRoleMakers itsRoles;         // of each association
   CheckedPDU_Service itsPrototype; // of the services: its lists are read once
   Socket itsListener;
   std::atomic<bool> itsIsStopped = false;
   Deadlines itsDeadlines;
   std::atomic<unsigned int> itsThreads = 0;      // that serve or refuse
   std::atomic<unsigned int> itsAssociations = 0; // that are served
};

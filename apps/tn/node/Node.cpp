#include "apps/tn/node/Node.h"

#include <cerrno>
#include <cmath>
#include <iostream>
#include <stdexcept>
#include <system_error>

#include "apps/tn/node/NodeService.h"
#include "talvenor/foundation/MThreadHandler.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{
constexpr int kBacklog = 128;
constexpr int kSliceMilliseconds = 100; // how soon a request to stop acts
constexpr std::chrono::milliseconds kPause{100};
constexpr std::chrono::seconds kGrace{2}; // for messages that are under way when the node stops

// Deep enough for what a peer may nest; the pages that are not touched cost nothing.
constexpr int kStackSize = 1 << 20;

// Connections beyond the limit that are answered with a refusal at the same time; others are just closed.
constexpr unsigned int kMaximumRefusals = 32;
} // namespace

struct Node::Connection
{
   Node& itsNode;
   Socket::Handle itsHandle;
   bool itsIsServed; // rather than refused
};

Node::Node(const Settings& theSettings, NodeRoleMakers theRoles)
    : itsSettings(theSettings), itsRoles(std::move(theRoles)),
      itsPrototype(SocketDULStreamFactory::GetInstance(), nullptr)
{
   if (!itsSettings.itsPolicy.empty() && !itsPrototype.InitializeFrom(itsSettings.itsPolicy.c_str()))
   {
      throw std::runtime_error("cannot read the policy " + itsSettings.itsPolicy);
   }
   itsPrototype.SetARRTimer(static_cast<int>(std::ceil(itsSettings.itsLimits.itsRequest)));
   itsListener.SetAbortPollMilliseconds(kSliceMilliseconds);
   if (!itsListener.Listen(itsSettings.itsPort, kBacklog, itsSettings.itsBindAddress))
   {
      throw std::runtime_error("cannot listen on port " + std::to_string(itsSettings.itsPort) + ": " +
                               std::system_category().message(itsListener.GetSystemErrorCode()));
   }
}

Node::~Node() = default;

void Node::Run()
{
   constexpr int kSeconds = 60;
   while (!itsIsStopped)
   {
      if (itsListener.Accept(kSeconds))
      {
         Serve(itsListener.UnmanageConnection());
      }
      else if (itsListener.GetResultCode() == TN_SYSTEM_CALL_FAILED)
      {
         std::this_thread::sleep_for(kPause); // out of descriptors: some will be free soon
      }
   }
   Drain();
}

void Node::Serve(Socket::Handle theConnection)
{
   const bool isServed = itsAssociations < itsSettings.itsMaximumAssociations;
   auto aConnection = std::make_unique<Connection>(Connection{*this, theConnection, isServed});
   itsAssociations += isServed;
   ++itsThreads;
   if ((isServed || itsThreads - itsAssociations <= kMaximumRefusals) &&
       MThreadHandler::CreateDetachedThread(ServeOnThread, aConnection.get(), kStackSize) == 0)
   {
      aConnection.release(); // the thread's
      return;
   }
   itsAssociations -= isServed;
   --itsThreads;
   Socket aSocket;
   aSocket.ManageConnection(theConnection); // closes
}

void Node::ServeOnThread(void* theConnection)
{
   const std::unique_ptr<Connection> aConnection(static_cast<Connection*>(theConnection));
   Node& aNode = aConnection->itsNode;
   try
   {
      auto aStream =
          std::make_unique<GuardedStream>(aConnection->itsHandle, aNode.itsDeadlines, aNode.itsSettings.itsLimits);
      if (aConnection->itsIsServed)
      {
         NodeService(aNode.itsPrototype, aNode.itsRoles).Serve(aStream.release());
      }
      else
      {
         NodeService(aNode.itsPrototype, {}).Refuse(aStream.release());
      }
   }
   catch (const std::exception& anError) // of memory, for example
   {
      std::cerr << "tn serve: " << anError.what() << std::endl;
   }
   aNode.itsAssociations -= aConnection->itsIsServed;
   --aNode.itsThreads; // the last touch of the node
}

void Node::Drain()
{
   itsListener.CloseListenSocket();
   itsDeadlines.EndIdle();
   const auto aWait = [this](std::chrono::milliseconds theTime) {
      const auto anEnd = Deadlines::Clock::now() + theTime;
      while (itsThreads != 0 && Deadlines::Clock::now() < anEnd)
      {
         std::this_thread::sleep_for(kPause / 10);
      }
   };
   aWait(kGrace);
   itsDeadlines.EndAll();
   aWait(kGrace);
}

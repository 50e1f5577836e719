#include "apps/tn/node/Node.h"

#include <cerrno>
#include <cmath>
#include <iostream>
#include <new>
#include <stdexcept>
#include <system_error>

#include "apps/tn/base/Descriptor.h"
#include "apps/tn/node/NodeService.h"
#include "talvenor/foundation/ExceptionBase.h"
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

// Is counted, and closes, unless its handle has been taken.
struct Node::Connection
{
   Connection(Node& theNode, Descriptor theHandle, bool theIsServed)
       : itsNode(theNode), itsHandle(std::move(theHandle)), itsIsServed(theIsServed)
   {
      itsNode.itsAssociations += itsIsServed;
      ++itsNode.itsThreads;
   }
   Connection(const Connection&) = delete;
   Connection& operator=(const Connection&) = delete;
   ~Connection()
   {
      itsHandle.Close();
      itsNode.itsAssociations -= itsIsServed;
      --itsNode.itsThreads; // the last touch of the node
   }

   Node& itsNode;
   Descriptor itsHandle;
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
   while (!itsIsStopped)
   {
      try
      {
         ServeNext();
      }
      catch (const std::bad_alloc&)
      {
         itsListener.CloseConnectionSocket();
         std::this_thread::sleep_for(kPause); // some will be free soon
      }
   }
   Drain();
}

void Node::ServeNext()
{
   constexpr int kSeconds = 60;
   if (!itsListener.Accept(kSeconds))
   {
      if (itsListener.GetResultCode() == TN_SYSTEM_CALL_FAILED)
      {
         std::this_thread::sleep_for(kPause); // out of descriptors: some will be free soon
      }
      return;
   }
   const bool isServed = itsAssociations < itsSettings.itsMaximumAssociations;
   auto aConnection = std::make_unique<Connection>(*this, Descriptor(itsListener.UnmanageConnection()), isServed);
   if ((isServed || itsThreads - itsAssociations <= kMaximumRefusals) &&
       MThreadHandler::CreateDetachedThread(ServeOnThread, aConnection.get(), kStackSize) == 0)
   {
      aConnection.release(); // the thread's
   }
}

void Node::ServeOnThread(void* theConnection)
{
   const std::unique_ptr<Connection> aConnection(static_cast<Connection*>(theConnection));
   Node& aNode = aConnection->itsNode;
   try
   {
      auto aStream = std::make_unique<GuardedStream>(aConnection->itsHandle.Get(), aNode.itsDeadlines,
                                                     aNode.itsSettings.itsLimits);
      aConnection->itsHandle.Release();
      if (aConnection->itsIsServed)
      {
         NodeService(aNode.itsPrototype, aNode.itsRoles).Serve(aStream.release());
      }
      else
      {
         NodeService(aNode.itsPrototype, {}).Refuse(aStream.release());
      }
   }
   catch (const std::exception& anError) // of memory, for example: the association ends, and nothing else
   {
      std::cerr << "tn serve: " << anError.what() << std::endl;
   }
   catch (const ExceptionBase& anException)
   {
      std::cerr << "tn serve: " << anException.why() << std::endl;
   }
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

// A node that keeps in memory what is stored on it, byte for byte as it arrives, and answers as a test wants it to.
// Each association has a thread of its own.
#pragma once

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/services/StorageClasses.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/ul/SocketDULStream.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

class StoringNode
{
public:
   // What becomes of an instance, besides statuses.
   enum Answer
   {
      kClose = -1,   // the connection is closed instead
      kSilence = -2, // nothing is read or answered until the end
   };

   struct Instance
   {
      std::string itsSOPInstanceUID;
      std::string itsTransferSyntaxUID;
      std::string itsBytes; // of the dataset
   };

   // theAnswers are given in turn, then 0.
   explicit StoringNode(std::vector<std::string> theSyntaxes, std::vector<int> theAnswers = {})
       : itsSyntaxes(std::move(theSyntaxes)), itsAnswers(std::move(theAnswers))
   {
      itsListener.SetAbortPollMilliseconds(20);
      itsListener.Listen(0, 16, "127.0.0.1");
      itsThread = std::thread([this] { Listen(); });
   }
   ~StoringNode() { Finish(); }
   StoringNode(const StoringNode&) = delete;
   StoringNode& operator=(const StoringNode&) = delete;

   std::string Address() const { return "NODE@127.0.0.1:" + std::to_string(itsListener.GetListenPort()); }

   // By the end of the senders: what arrived, by SOP instance UID.
   std::map<std::string, Instance> Finish()
   {
      itsIsEnding = true;
      itsListener.SetAbortRequestedFlag(1);
      if (itsThread.joinable())
      {
         itsThread.join();
      }
      itsConnections.clear(); // joins
      return itsInstances;
   }

   unsigned int GetAssociationCount() const { return itsAssociationCount; }

private:
   class Service : public PDU_Service
   {
   public:
      explicit Service(const StoringNode& theNode)
          : PDU_Service(SocketDULStreamFactory::GetInstance()), itsNode(theNode)
      {}

      int CanYouHandleTransferSyntax(const TransferSyntaxItem& theSyntax) override
      {
         const auto& aSyntaxes = itsNode.itsSyntaxes;
         return std::find(aSyntaxes.begin(), aSyntaxes.end(), theSyntax.GetUID().ToString()) != aSyntaxes.end();
      }
      const TransferSyntaxItem* GetPreferredTransferSyntax(const AbstractSyntaxSubItem&,
                                                           const TransferSyntaxCandidates& theCandidates) override
      {
         return &theCandidates.front();
      }

   private:
      const StoringNode& itsNode;
   };

   class Storage : public UnknownStorage
   {
   public:
      Storage(StoringNode& theNode, PDU_Service& theService, Instance& theInstance)
          : itsNode(theNode), itsService(theService), itsInstance(theInstance)
      {}

      int DoStore(DICOMDataObject&, InputTransferSyntax& theInput, const RWCString&, const RWCString&,
                  UINT16& theStatus, RWCString&, RWTValOrderedVector<MAttributeTag>&) override
      {
         const int anAnswer = itsNode.NextAnswer();
         if (anAnswer == kSilence)
         {
            itsNode.AwaitEnd();
         }
         unsigned char aBuffer[4096];
         while (const unsigned int aCount = theInput.GetStream().Read(aBuffer, sizeof aBuffer))
         {
            itsInstance.itsBytes.append(reinterpret_cast<const char*>(aBuffer), aCount);
         }
         if (anAnswer == kClose || anAnswer == kSilence)
         {
            itsService.GetDULStream()->Close();
            return 0;
         }
         theStatus = static_cast<UINT16>(anAnswer);
         if (anAnswer == 0 || (anAnswer & 0xF000) == 0xB000)
         {
            itsNode.Keep(itsInstance);
         }
         return anAnswer == 0;
      }

   private:
      StoringNode& itsNode;
      PDU_Service& itsService;
      Instance& itsInstance;
   };

   void Listen()
   {
      while (!itsIsEnding)
      {
         if (itsListener.Accept(1))
         {
            ++itsAssociationCount;
            auto aStream = std::make_unique<SocketDULStream>();
            aStream->ManageConnection(itsListener.UnmanageConnection());
            itsConnections.emplace_back([this, aConnection = aStream.release()] { Serve(aConnection); });
         }
      }
   }

   void Serve(DULStream* theConnection)
   {
      Service aService(*this);
      if (!aService.WaitForAssociationRequest(theConnection))
      {
         return;
      }
      for (DICOMCommandObject aCommand; aService.ReadCommand(aCommand);)
      {
         Instance anInstance;
         aCommand.GetString(0, 0x1000, anInstance.itsSOPInstanceUID);
         anInstance.itsTransferSyntaxUID = aService.GetCurrentPresentationContext()->GetTransferSyntaxUID().ToString();
         DICOMDataObject anIgnored;
         if (!Storage(*this, aService, anInstance).Read(aService, aCommand, anIgnored))
         {
            return;
         }
      }
   }

   int NextAnswer()
   {
      const std::size_t aTurn = itsTurn++;
      return aTurn < itsAnswers.size() ? itsAnswers[aTurn] : 0;
   }

   void Keep(const Instance& theInstance)
   {
      const std::lock_guard aLock(itsMutex);
      itsInstances[theInstance.itsSOPInstanceUID] = theInstance;
   }

   void AwaitEnd() const
   {
      while (!itsIsEnding)
      {
         std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
   }

   const std::vector<std::string> itsSyntaxes;
   const std::vector<int> itsAnswers;
   std::atomic<std::size_t> itsTurn = 0;
   std::atomic<bool> itsIsEnding = false;
   std::atomic<unsigned int> itsAssociationCount = 0;
   std::mutex itsMutex;
   std::map<std::string, Instance> itsInstances;
   Socket itsListener;
   std::vector<std::jthread> itsConnections;
   std::thread itsThread;
};

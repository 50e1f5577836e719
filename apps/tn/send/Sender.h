// Sends the files of a queue on one association, and on the next when that one is lost and may be replaced. One of
// several that may share queue and report, each on its thread.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>

#include "apps/tn/network/NetworkFailure.h"
#include "apps/tn/send/SendAssociation.h"
#include "apps/tn/send/SendQueue.h"
#include "apps/tn/send/SendReport.h"

class Requester;

class Sender
{
public:
   struct Settings
   {
      unsigned int itsRetries = 0; // how often a file is tried again
      bool itsFailsFast = false;   // the first failure ends all
   };

   // All are borrowed.
   Sender(const Requester& theRequester, const Settings& theSettings, std::span<const SendFile> theFiles,
          const SendBatch& theBatch, SendQueue& theQueue, SendReport& theReport);

   // Until the queue is empty or stopped, or there is no association any more: returns why then.
   std::optional<NetworkFailure> Run();

   // How many associations it had.
   unsigned int GetAssociationCount() const { return itsAssociationCount; }

private:
   // A file that is opened and waits for its turn.
   struct Turn
   {
      SendQueue::Item itsItem;
      std::unique_ptr<OutgoingFile> itsFile;
   };

   std::optional<Turn> NextTurn();
   void Serve(Turn& theTurn);
   void SendTurn(Turn& theTurn);
   void TakeAnswer(const SendQueue::Item& theItem, const SendAssociation::Answer& theAnswer);
   bool OpenAssociation();
   void TakeLoss(const SendQueue::Item& theItem, const NetworkFailure& theFailure);
   void Report(const SendQueue::Item& theItem, SendReport::Outcome theOutcome, const std::string& theText,
               int theExitCode);
   void Pause(unsigned int theAttempt) const;

   const Requester& itsRequester;
   const Settings& itsSettings;
   std::span<const SendFile> itsFiles;
   const SendBatch& itsBatch;
   SendQueue& itsQueue;
   SendReport& itsReport;
   std::unique_ptr<SendAssociation> itsAssociation;
   std::optional<Turn> itsNext; // prepared while an answer was awaited
   std::optional<NetworkFailure> itsEnd;
   unsigned int itsAssociationCount = 0;
   unsigned int itsVainCalls = 0;     // since the last association
   bool itsIsNothingAccepted = false; // of the contexts of the batch
};

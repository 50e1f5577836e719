#include "apps/tn/send/Sender.h"

#include <algorithm>
#include <system_error>

#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/Interruption.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/network/Requester.h"
#include "apps/tn/network/StatusText.h"
#include "apps/tn/send/SendFile.h"
#include "apps/tn/send/SendPlan.h"

using Outcome = SendReport::Outcome;

Sender::Sender(const Requester& theRequester, const Settings& theSettings, std::span<const SendFile> theFiles,
               const SendBatch& theBatch, SendQueue& theQueue, SendReport& theReport)
    : itsRequester(theRequester), itsSettings(theSettings), itsFiles(theFiles), itsBatch(theBatch), itsQueue(theQueue),
      itsReport(theReport)
{}

std::optional<NetworkFailure> Sender::Run()
{
   while (!itsEnd)
   {
      if (!itsNext)
      {
         itsNext = NextTurn();
      }
      if (!itsNext || itsQueue.IsStopped())
      {
         break;
      }
      Turn aTurn = std::move(*itsNext);
      itsNext.reset();
      Serve(aTurn);
   }
   if (itsNext)
   {
      itsQueue.PutBack(itsNext->itsItem);
   }
   if (itsAssociation && itsAssociation->IsOpen())
   {
      itsAssociation->Close();
   }
   return itsEnd;
}

// The next file that can be read.
std::optional<Sender::Turn> Sender::NextTurn()
{
   if (Interruption::HasCome())
   {
      itsQueue.Stop();
   }
   while (const std::optional<SendQueue::Item> anItem = itsQueue.Take())
   {
      try
      {
         const unsigned int aBlockSize = itsAssociation ? itsAssociation->GetBlockSize() : 0;
         return Turn{*anItem, std::make_unique<OutgoingFile>(itsFiles[anItem->itsFile], aBlockSize)};
      }
      catch (const ExceptionBase& anException)
      {
         Report(*anItem, Outcome::Failed, ErrorText(anException), ExitCode::kCouldNotRead);
      }
      catch (const IncompleteDataset& anError)
      {
         Report(*anItem, Outcome::Failed, anError.what(), ExitCode::kCouldNotRead);
      }
   }
   return std::nullopt;
}

void Sender::Serve(Turn& theTurn)
{
   const SendQueue::Item& anItem = theTurn.itsItem;
   if (!OpenAssociation())
   {
      itsQueue.PutBack(anItem);
      return;
   }
   try
   {
      SendTurn(theTurn);
   }
   catch (const NotAccepted& aRefusal)
   {
      Report(anItem, Outcome::Failed, aRefusal.what(), ExitCode::kNoContext);
   }
   catch (const NetworkFailure& aFailure)
   {
      TakeLoss(anItem, aFailure);
   }
   catch (const IncompleteDataset& anError)
   {
      Report(anItem, Outcome::Failed, anError.what(), ExitCode::kCouldNotRead);
   }
   catch (const ExceptionBase& anException)
   {
      Report(anItem, Outcome::Failed, ErrorText(anException), ExitCode::kCouldNotRead);
   }
}

void Sender::SendTurn(Turn& theTurn)
{
   const SendFile& aFile = itsFiles[theTurn.itsItem.itsFile];
   const SendAssociation::Route aRoute = itsAssociation->FindRoute(aFile);
   itsReport.Begin(aFile.itsPath);
   itsAssociation->Send(*theTurn.itsFile, aRoute);
   itsNext = NextTurn(); // while the peer stores
   TakeAnswer(theTurn.itsItem, itsAssociation->ReadAnswer());
}

void Sender::TakeAnswer(const SendQueue::Item& theItem, const SendAssociation::Answer& theAnswer)
{
   std::string aText = DescribeStatus(StatusService::Storage, theAnswer.itsStatus);
   if (!theAnswer.itsComment.empty())
   {
      aText += ": " + theAnswer.itsComment;
   }
   const StatusKind aKind = KindOfStatus(theAnswer.itsStatus);
   if (aKind == StatusKind::Success || aKind == StatusKind::Warning)
   {
      Report(theItem, aKind == StatusKind::Success ? Outcome::Sent : Outcome::Warning, aText, ExitCode::kDone);
   }
   else if (IsOutOfResources(theAnswer.itsStatus) && theItem.itsAttempts < itsSettings.itsRetries)
   {
      itsReport.Tell(itsFiles[theItem.itsFile].itsPath + ": " + aText + "; it is sent again later");
      itsQueue.Defer({theItem.itsFile, theItem.itsAttempts + 1});
      Pause(theItem.itsAttempts + 1);
   }
   else
   {
      Report(theItem, Outcome::Failed, aText, ExitCode::kPeerFailed);
   }
}

// False when there is none any more, and itsEnd says why.
bool Sender::OpenAssociation()
{
   while (!itsIsNothingAccepted && (!itsAssociation || !itsAssociation->IsOpen()))
   {
      try
      {
         itsAssociation =
             std::make_unique<SendAssociation>(itsRequester, [this](UINT64 theBytes) { itsReport.Advance(theBytes); });
         itsAssociation->Open(itsBatch);
         ++itsAssociationCount;
         itsVainCalls = 0;
      }
      catch (const NetworkFailure& aFailure)
      {
         if (aFailure.GetExitCode() == ExitCode::kNoContext)
         {
            itsIsNothingAccepted = true; // each file is told what the peer said to it
            return true;
         }
         if (itsVainCalls++ >= itsSettings.itsRetries || Interruption::HasCome())
         {
            itsEnd = aFailure;
            return false;
         }
         itsReport.Tell(itsRequester.GetPeer().Text() + ": " + aFailure.what() + "; trying again");
         Pause(itsVainCalls);
      }
      catch (const std::system_error& anError) // there is no thread to watch it
      {
         itsEnd = NetworkFailure(ExitCode::kNoConnection, std::string("no association: ") + anError.what());
         return false;
      }
   }
   return true;
}

// What the peer did with a file that has no answer is not known: sending it again is safe, as it is the same instance.
void Sender::TakeLoss(const SendQueue::Item& theItem, const NetworkFailure& theFailure)
{
   const bool isCancelled = theFailure.GetExitCode() == ExitCode::kCancelled;
   if (!isCancelled && theItem.itsAttempts < itsSettings.itsRetries)
   {
      itsReport.Tell(itsFiles[theItem.itsFile].itsPath + ": " + theFailure.what() + "; sending it again");
      itsQueue.PutBack({theItem.itsFile, theItem.itsAttempts + 1});
      Pause(theItem.itsAttempts + 1);
      return;
   }
   Report(theItem, Outcome::Failed, theFailure.what(), theFailure.GetExitCode());
   if (isCancelled)
   {
      itsEnd = theFailure;
   }
   else if (itsSettings.itsRetries == 0)
   {
      itsEnd = NetworkFailure(theFailure.GetExitCode(),
                              std::string(theFailure.what()) + "; --retry would go on with a new association");
   }
}

void Sender::Report(const SendQueue::Item& theItem, Outcome theOutcome, const std::string& theText, int theExitCode)
{
   const SendFile& aFile = itsFiles[theItem.itsFile];
   itsReport.Add({aFile.itsPath, aFile.itsSOPInstanceUID, theOutcome, theText, aFile.GetDatasetSize(), theExitCode});
   if (theOutcome == Outcome::Failed && itsSettings.itsFailsFast)
   {
      itsQueue.Stop();
   }
}

// Longer each time, so that a peer in trouble is left alone.
void Sender::Pause(unsigned int theAttempt) const
{
   constexpr double kFirst = 0.25; // seconds
   constexpr unsigned int kMostDoublings = 5;
   Interruption::Sleep(std::chrono::duration<double>(kFirst * (1u << std::min(theAttempt - 1, kMostDoublings))));
}

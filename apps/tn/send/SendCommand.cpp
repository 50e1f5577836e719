#include "apps/tn/send/SendCommand.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <mutex>
#include <new>
#include <numeric>
#include <optional>
#include <system_error>
#include <thread>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/FilesBelow.h"
#include "apps/tn/base/Interruption.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/InputFile.h"
#include "apps/tn/network/AssociationAnswers.h"
#include "apps/tn/send/SendQueue.h"

namespace fs = std::filesystem;

using Outcome = SendReport::Outcome;

namespace
{
constexpr int kMostAssociations = 64;
constexpr int kMostRetries = 1000;

UINT64 SizeOf(const std::vector<SendFile>& theFiles, const std::vector<std::size_t>& theIndices)
{
   return std::accumulate(theIndices.begin(), theIndices.end(), UINT64{0}, [&](UINT64 theSum, std::size_t theIndex) {
      return theSum + theFiles[theIndex].GetDatasetSize();
   });
}

// On so many threads, this one among them, or on as many as there can be.
void RunAtOnce(std::size_t theCount, const std::function<void()>& theWork)
{
   std::vector<std::jthread> aThreads;
   for (std::size_t i = 1; i < theCount; ++i)
   {
      try
      {
         aThreads.emplace_back(theWork);
      }
      catch (const std::system_error&)
      {
         break;
      }
   }
   theWork();
}
} // namespace

SendCommand::SendCommand(CLI::App& theProgram)
    : Command(theProgram, "send", "Send files to a peer (C-STORE)"), itsRequester(itsOptions), itsTracing(itsOptions)
{
   itsOptions.add_option("PATH", itsPaths, "Files; with -r folders, too")->required();
   itsOptions.add_flag("-r,--recursive", itsIsRecursive, "All files below the folders that are named");
   itsOptions.add_option("--parallel", itsParallel, "How many associations share the files")
       ->type_name("N")
       ->check(CLI::Range(1, kMostAssociations))
       ->capture_default_str();
   itsOptions
       .add_option("--retry", itsSettings.itsRetries,
                   "How often a file is sent again when the association is lost or the peer is out of resources")
       ->type_name("N")
       ->check(CLI::Range(0, kMostRetries))
       ->capture_default_str();
   itsOptions.add_flag("--fail-fast", itsSettings.itsFailsFast, "End with the first file that fails");
   itsOptions.add_flag("--no-decompress", itsIsKeptCompressed,
                       "Compressed files fail at a peer that takes them uncompressed only");
   itsOptions
       .add_option("--report", itsReportPath,
                   "Write a line for each file: path, SOP instance UID, outcome and status in words, with tabs between "
                   "them; - is standard output")
       ->type_name("FILE");
   itsOptions.add_flag("--dry-run", itsIsDryRun, "Only say what would be proposed and sent");
   itsOptions.add_flag("--json", itsIsJson, "The summary as one JSON object");
   itsOptions.footer(
       "Files go as they are where the peer takes their transfer syntax; uncompressed ones are encoded on the way for\n"
       "a peer that takes another uncompressed one, and compressed ones are decompressed for a peer that takes them "
       "in\n"
       "no other way. What is no DICOM file is named and left out.\n\n"
       "Exit codes: 0 all sent, 1 some not sent or no DICOM files, 2 wrong use, 3 not readable, 4 the report cannot "
       "be\n"
       "written, 5 no connection, 6 association rejected, 7 nothing accepted, 8 the peer failed or refused, 9 no "
       "answer\n"
       "in time, 10 interrupted.\n\n"
       "Examples:\n  tn send ARCHIVE@pacs.example:104 image.dcm\n"
       "  tn send -r --retry 5 --report sent.txt ARCHIVE@pacs.example:104 study/");
}

int SendCommand::Run()
{
   if (itsIsJson && itsReportPath == "-")
   {
      std::cerr << "tn send: --json and --report - both write to standard output; give the report a file\n";
      return ExitCode::kWrongUse;
   }
   try
   {
      itsTracing.Begin();
      LoadDictionaries("");
      itsRequester.SetDefaults();
      Interruption::Take();
      SendReport aReport(itsIsDryRun ? "" : itsReportPath, itsIsJson);
      const int aResult = Send(aReport);
      if (itsIsJson)
      {
         WriteJson(aReport, aResult);
      }
      else if (!itsIsDryRun)
      {
         (itsReportPath == "-" ? std::cerr : std::cout) << aReport.Summary() << std::endl;
      }
      return aResult;
   }
   catch (const std::bad_alloc&)
   {
      std::cerr << "tn send: out of memory; what was not reported may not have been sent\n";
      return ExitCode::kSomeFailed;
   }
   catch (const ExceptionBase& anException)
   {
      std::cerr << "tn send: " << ErrorText(anException) << "\n";
      return ExitCode::kSomeFailed;
   }
   catch (const std::exception& anError) // the log or the report
   {
      std::cerr << "tn send: " << anError.what() << "\n";
      return ExitCode::kCouldNotWrite;
   }
}

int SendCommand::Send(SendReport& theReport)
{
   LookAtFiles(theReport);
   itsBatches = PlanBatches(itsFiles, kMostContexts, !itsIsKeptCompressed);
   const bool isOver = itsSettings.itsFailsFast && theReport.Count(Outcome::Failed) > 0;
   if (itsIsDryRun)
   {
      ShowPlan();
   }
   else if (!itsFiles.empty() && !isOver)
   {
      theReport.BeginSending(itsFiles.size(), TotalBytes());
      SendBatches(theReport);
      theReport.EndSending();
   }
   if (Interruption::HasCome())
   {
      return ExitCode::kCancelled;
   }
   if (itsEnd)
   {
      return itsEnd->GetExitCode();
   }
   return itsIsDryRun && theReport.GetTotal() == 0 && !itsFiles.empty() ? ExitCode::kDone : theReport.GetExitCode();
}

std::vector<std::string> SendCommand::FindFiles(SendReport& theReport) const
{
   std::vector<std::string> aFiles;
   for (const std::string& aPath : itsPaths)
   {
      std::error_code anIgnored; // opening it tells
      if (!fs::is_directory(aPath, anIgnored))
      {
         aFiles.push_back(aPath);
         continue;
      }
      if (!itsIsRecursive)
      {
         theReport.Add(
             {aPath, "", Outcome::Failed, "it is a folder; -r sends the files below it", 0, ExitCode::kCouldNotRead});
         continue;
      }
      bool isWhole = true;
      const std::vector<std::string> aFound = FilesBelow(aPath, [&](const std::string& theText) {
         isWhole = false;
         theReport.Add({aPath, "", Outcome::Failed, theText, 0, ExitCode::kCouldNotRead});
      });
      for (const std::string& aFile : aFound)
      {
         aFiles.push_back((fs::path(aPath) / aFile).string());
      }
      if (aFound.empty() && isWhole)
      {
         theReport.Tell(aPath + ": there are no files in this folder");
      }
   }
   return aFiles;
}

void SendCommand::LookAtFiles(SendReport& theReport)
{
   const std::vector<std::string> aPaths = FindFiles(theReport);
   Progress aProgress(aPaths.size());
   for (const std::string& aPath : aPaths)
   {
      if (Interruption::HasCome())
      {
         return;
      }
      aProgress.Begin(aPath);
      LookAt(aPath, theReport);
      aProgress.End(itsFiles.empty() ? 0 : itsFiles.back().itsIdentity.itsSize);
   }
}

void SendCommand::LookAt(const std::string& thePath, SendReport& theReport)
{
   const auto aFail = [&](Outcome theOutcome, const std::string& theText, int theExitCode) {
      theReport.Add({thePath, "", theOutcome, theText, 0, theExitCode});
   };
   try
   {
      SendFile aFile = LookAtFile(thePath);
      if (!itsKnown.insert({aFile.itsIdentity.itsDevice, aFile.itsIdentity.itsInode}).second)
      {
         theReport.Tell(thePath + ": it was named before and is sent once");
         return;
      }
      itsFiles.push_back(std::move(aFile));
   }
   catch (const NotDICOM& anException)
   {
      aFail(Outcome::Skipped, ErrorText(anException), ExitCode::kSomeFailed);
   }
   catch (const ExceptionBase& anException)
   {
      aFail(Outcome::Failed, ErrorText(anException), ExitCode::kCouldNotRead);
   }
   catch (const IncompleteDataset& anError)
   {
      aFail(Outcome::Failed, anError.what(), ExitCode::kCouldNotRead);
   }
}

UINT64 SendCommand::TotalBytes() const
{
   return std::accumulate(itsFiles.begin(), itsFiles.end(), UINT64{0},
                          [](UINT64 theSum, const SendFile& theFile) { return theSum + theFile.GetDatasetSize(); });
}

void SendCommand::SendBatches(SendReport& theReport)
{
   for (const SendBatch& aBatch : itsBatches)
   {
      SendOneBatch(aBatch, theReport);
   }
   if (itsEnd)
   {
      theReport.EndSending(); // no progress in between
      TellPeerLines("send", itsRequester.GetPeer().Text(), itsEnd->what());
   }
}

void SendCommand::SendOneBatch(const SendBatch& theBatch, SendReport& theReport)
{
   SendQueue aQueue(theBatch.itsFiles);
   const bool isOver =
       itsEnd || Interruption::HasCome() || (itsSettings.itsFailsFast && theReport.Count(Outcome::Failed) > 0);
   if (!isOver)
   {
      const std::size_t aFailed = theReport.Count(Outcome::Failed);
      const std::optional<NetworkFailure> anEnd = RunSenders(theBatch, aQueue, theReport);
      if (anEnd && aQueue.IsEmpty() && theReport.Count(Outcome::Failed) == aFailed)
      {
         theReport.Tell(itsRequester.GetPeer().Text() + ": " + anEnd->what() + "; other associations sent all");
      }
      else
      {
         itsEnd = anEnd;
      }
   }
   TellRest(aQueue, theReport);
}

// Returns why one of the associations has ended, if one has. Throws when the report cannot be written, or there is no
// memory.
std::optional<NetworkFailure> SendCommand::RunSenders(const SendBatch& theBatch, SendQueue& theQueue,
                                                      SendReport& theReport)
{
   std::mutex aMutex;
   std::exception_ptr aFault;
   std::optional<NetworkFailure> anEnd;
   RunAtOnce(std::min<std::size_t>(itsParallel, theBatch.itsFiles.size()), [&] {
      try
      {
         Sender aSender(itsRequester, itsSettings, itsFiles, theBatch, theQueue, theReport);
         const std::optional<NetworkFailure> aLoss = aSender.Run();
         const std::lock_guard aLock(aMutex);
         itsAssociationCount += aSender.GetAssociationCount();
         anEnd = anEnd ? anEnd : aLoss;
      }
      catch (...)
      {
         const std::lock_guard aLock(aMutex);
         aFault = std::current_exception();
         theQueue.Stop();
      }
   });
   if (aFault)
   {
      std::rethrow_exception(aFault);
   }
   return anEnd;
}

void SendCommand::TellRest(SendQueue& theQueue, SendReport& theReport) const
{
   const char* const aReason = Interruption::HasCome() ? "interrupted before its turn"
                               : itsEnd                ? "there was no association any more"
                                                       : "a file before it failed";
   const int aCode = itsEnd ? itsEnd->GetExitCode() : int{ExitCode::kSomeFailed};
   for (const SendQueue::Item& anItem : theQueue.TakeRest())
   {
      const SendFile& aFile = itsFiles[anItem.itsFile];
      theReport.Add({aFile.itsPath, aFile.itsSOPInstanceUID, Outcome::NotSent, aReason, 0, aCode});
   }
}

void SendCommand::ShowPlan() const
{
   for (std::size_t i = 0; i < itsBatches.size(); ++i)
   {
      const SendBatch& aBatch = itsBatches[i];
      std::cout << "association " << i + 1 << " with " << itsRequester.GetPeer().Text() << ": "
                << aBatch.itsFiles.size() << (aBatch.itsFiles.size() == 1 ? " file, " : " files, ")
                << SizeOf(itsFiles, aBatch.itsFiles) << " bytes\n";
      unsigned int anID = 1;
      for (const SendContext& aContext : aBatch.itsContexts)
      {
         std::cout << "  context " << anID << ": " << NameOfUID(aContext.itsSOPClassUID);
         const char* aSeparator = " in ";
         for (const RWCString& aSyntax : aContext.itsTransferSyntaxUIDs)
         {
            std::cout << aSeparator << NameOfUID(aSyntax);
            aSeparator = " or ";
         }
         std::cout << "\n";
         anID += 2;
      }
      for (const std::size_t aFile : aBatch.itsFiles)
      {
         std::cout << "  " << itsFiles[aFile].itsPath << "\n";
      }
   }
   std::cout.flush();
}

void SendCommand::WriteJson(const SendReport& theReport, int theExitCode) const
{
   JsonWriter aJson(std::cout);
   aJson.BeginObject();
   aJson.Text("calledTitle", itsRequester.GetPeer().itsTitle);
   aJson.Text("host", itsRequester.GetPeer().itsHost);
   aJson.Text("port", itsRequester.GetPeer().itsPort);
   aJson.Text("callingTitle", itsRequester.GetTitle());
   aJson.Number("associations", itsAssociationCount);
   aJson.Number("sent", theReport.Count(Outcome::Sent));
   aJson.Number("warnings", theReport.Count(Outcome::Warning));
   aJson.Number("failed", theReport.Count(Outcome::Failed));
   aJson.Number("skipped", theReport.Count(Outcome::Skipped));
   aJson.Number("notSent", theReport.Count(Outcome::NotSent));
   aJson.Number("bytes", theReport.GetBytes());
   aJson.Number("seconds", theReport.GetSeconds());
   aJson.BeginArray("faults");
   for (const SendReport::Entry& anEntry : theReport.GetFaults())
   {
      aJson.BeginObject();
      aJson.Text("path", anEntry.itsPath);
      aJson.Text("sopInstanceUID", anEntry.itsSOPInstanceUID);
      aJson.Text("outcome", SendReport::NameOf(anEntry.itsOutcome));
      aJson.Text("text", anEntry.itsText);
      aJson.EndObject();
   }
   aJson.EndArray();
   aJson.Number("exitCode", theExitCode);
   if (itsEnd)
   {
      aJson.Text("failure", itsEnd->what());
   }
   aJson.EndObject();
   std::cout << std::endl;
}

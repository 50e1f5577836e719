// tn send: sends files to a peer (C-STORE, PS3.4 B).
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "apps/tn/base/Command.h"
#include "apps/tn/base/Tracing.h"
#include "apps/tn/network/Requester.h"
#include "apps/tn/send/SendFile.h"
#include "apps/tn/send/SendPlan.h"
#include "apps/tn/send/Sender.h"

class SendCommand : public Command
{
public:
   explicit SendCommand(CLI::App& theProgram);

   int Run() override;

private:
   int Send(SendReport& theReport);
   std::vector<std::string> FindFiles(SendReport& theReport) const;
   void LookAtFiles(SendReport& theReport);
   void LookAt(const std::string& thePath, SendReport& theReport);
   void SendBatches(SendReport& theReport);
   void SendOneBatch(const SendBatch& theBatch, SendReport& theReport);
   std::optional<NetworkFailure> RunSenders(const SendBatch& theBatch, SendQueue& theQueue, SendReport& theReport);
   void TellRest(SendQueue& theQueue, SendReport& theReport) const;
   UINT64 TotalBytes() const;
   void ShowPlan() const;
   void WriteJson(const SendReport& theReport, int theExitCode) const;

   Requester itsRequester;
   Tracing itsTracing;
   std::vector<std::string> itsPaths;
   bool itsIsRecursive = false;
   unsigned int itsParallel = 1;
   Sender::Settings itsSettings;
   std::string itsReportPath;
   bool itsIsDryRun = false;
   bool itsIsKeptCompressed = false;
   bool itsIsJson = false;

   std::vector<SendFile> itsFiles;
   std::set<std::pair<UINT64, UINT64>> itsKnown; // devices and inodes of the files
   std::vector<SendBatch> itsBatches;
   std::optional<NetworkFailure> itsEnd; // why the sending ended early
   unsigned int itsAssociationCount = 0;
};

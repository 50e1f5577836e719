// tn echo: asks a peer whether it is there (C-ECHO, PS3.4 A).
#pragma once

#include <string>
#include <vector>

#include "apps/tn/base/Command.h"
#include "apps/tn/base/Tracing.h"
#include "apps/tn/network/Requester.h"

class PDU_Service;

class EchoCommand : public Command
{
public:
   explicit EchoCommand(CLI::App& theProgram);

   int Run() override;

private:
   void Echo(PDU_Service& theService);
   void Associate(PDU_Service& theService);
   double EchoOnce(PDU_Service& theService); // in milliseconds
   void Release(PDU_Service& theService);
   void ShowSummary() const;
   void WriteJson(int theExitCode, const std::string& theFailure) const;

   Requester itsRequester;
   Tracing itsTracing;
   Watchdog* itsWatchdog = nullptr; // of the run
   unsigned int itsRepeat = 1;
   double itsInterval = 1;
   bool itsIsJson = false;

   // What came of it.
   struct Association
   {
      double itsMilliseconds = 0; // 0: there was none
      std::string itsImplementation;
      std::string itsImplementationUID;
      std::string itsTransferSyntax;
      unsigned int itsMaximumLength = 0;
   };
   Association itsAssociation;
   unsigned int itsSent = 0;
   std::vector<double> itsRoundTrips; // in milliseconds
};

#include "apps/tn/network/EchoCommand.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <memory>
#include <numeric>
#include <sstream>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/Interruption.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/NumberCheck.h"
#include "apps/tn/network/AssociationAnswers.h"
#include "apps/tn/network/NetworkFailure.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/CommandSetTexts.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/services/Verification.h"
#include "talvenor/transfer/TransferSyntaxType.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{
using Clock = std::chrono::steady_clock;

constexpr UINT16 kMessageIDBeingRespondedTo = 0x0120;
constexpr UINT16 kStatus = 0x0900;

double MillisecondsSince(Clock::time_point theStart)
{
   return std::chrono::duration<double, std::milli>(Clock::now() - theStart).count();
}

// What a service proposes: one context, in either of the syntaxes that every peer knows one of.
void Propose(PDU_Service& theService)
{
   UID aSOPClass;
   Verification().GetUID(aSOPClass);
   auto aProposals = std::make_unique<PresentationContextProposals>(aSOPClass.ToString());
   aProposals->AddTransferSyntaxList(new PresentationContextProposals::TransferSyntaxList{
       TransferSyntaxType::TSLEImplicitUID, TransferSyntaxType::TSLEExplicitUID});
   theService.AddPresentationContextProposals(aProposals.release());
}

std::string Hexadecimal(UINT16 theNumber)
{
   std::ostringstream aText;
   aText << std::hex << std::uppercase << std::setfill('0') << std::setw(4) << theNumber << "H";
   return aText.str();
}

// Success is nothing but the answer to this request with status 0.
void CheckAnswer(const DICOMCommandObject& theAnswer, UINT16 theMessageID)
{
   UINT16 aMessageID = 0;
   if (!theAnswer.GetUINT16(0, kMessageIDBeingRespondedTo, aMessageID) || aMessageID != theMessageID)
   {
      throw NetworkFailure(ExitCode::kPeerFailed, "the answer is to message " + std::to_string(aMessageID) +
                                                      ", asked was message " + std::to_string(theMessageID));
   }
   UINT16 aStatus = 0;
   if (!theAnswer.GetUINT16(0, kStatus, aStatus))
   {
      throw NetworkFailure(ExitCode::kPeerFailed, "the answer has no status");
   }
   if (aStatus != 0)
   {
      throw NetworkFailure(ExitCode::kPeerFailed, "the peer answers with status " + Hexadecimal(aStatus) + ": " +
                                                      std::string(StatusText(aStatus)));
   }
}

struct Summary
{
   explicit Summary(const std::vector<double>& theTimes)
       : itsMinimum(*std::min_element(theTimes.begin(), theTimes.end())),
         itsAverage(std::accumulate(theTimes.begin(), theTimes.end(), 0.0) / static_cast<double>(theTimes.size())),
         itsMaximum(*std::max_element(theTimes.begin(), theTimes.end()))
   {}

   double itsMinimum;
   double itsAverage;
   double itsMaximum;
};

// UIDs are told by name where the dictionaries are found.
void LoadNames()
{
   try
   {
      LoadDictionaries("");
   }
   catch (const std::exception&)
   {}
}
} // namespace

EchoCommand::EchoCommand(CLI::App& theProgram)
    : Command(theProgram, "echo", "Ask a peer whether it is there (C-ECHO)"), itsRequester(itsOptions),
      itsTracing(itsOptions)
{
   itsOptions.add_option("--repeat", itsRepeat, "How many echoes, on one association")
       ->type_name("N")
       ->check(Positive())
       ->capture_default_str();
   itsOptions.add_option("--interval", itsInterval, "Pause between two echoes")
       ->type_name("SECONDS")
       ->check(NotNegative())
       ->capture_default_str();
   itsOptions.add_flag("--json", itsIsJson, "The result as one JSON object");
   itsOptions.footer("Exit codes: 0 answered, 2 wrong use, 5 no connection, 6 association rejected, 7 Verification not "
                     "accepted,\n8 the peer failed, 9 no answer in time, 10 interrupted.\n\n"
                     "Example:\n  tn echo --aet WORKSTATION ARCHIVE@pacs.example:104");
}

int EchoCommand::Run()
{
   int aResult = ExitCode::kDone;
   std::string aFailure;
   try
   {
      itsTracing.Begin();
      Interruption::Take();
      LoadNames();
      itsRequester.SetDefaults();
      Watchdog aWatchdog;
      itsWatchdog = &aWatchdog;
      PDU_Service aService(SocketDULStreamFactory::GetInstance());
      Echo(aService);
      aResult = itsSent < itsRepeat ? ExitCode::kCancelled : ExitCode::kDone;
   }
   catch (const NetworkFailure& aNetworkFailure)
   {
      aResult = aNetworkFailure.GetExitCode();
      aFailure = aNetworkFailure.what();
   }
   catch (const std::runtime_error& anError)
   {
      aResult = ExitCode::kCouldNotWrite;
      aFailure = anError.what();
   }
   itsIsJson ? WriteJson(aResult, aFailure) : ShowSummary();
   std::cout.flush();
   TellPeerLines("echo", itsRequester.GetPeer().Text(), aFailure);
   return aResult;
}

void EchoCommand::Echo(PDU_Service& theService)
{
   Propose(theService);
   Associate(theService);
   for (unsigned int i = 1; i <= itsRepeat && !Interruption::HasCome(); ++i)
   {
      ++itsSent;
      itsRoundTrips.push_back(EchoOnce(theService));
      if (!itsIsJson)
      {
         std::cout << "echo " << i << ": " << std::fixed << std::setprecision(3) << itsRoundTrips.back() << " ms"
                   << std::endl;
      }
      if (i < itsRepeat)
      {
         Interruption::Sleep(std::chrono::duration<double>(itsInterval));
      }
   }
   Release(theService);
}

void EchoCommand::Associate(PDU_Service& theService)
{
   const Clock::time_point aStart = Clock::now();
   itsRequester.Associate(theService, *itsWatchdog);
   itsAssociation.itsMilliseconds = MillisecondsSince(aStart);
   const UserInformationItem& anAnswer = theService.AAssociateACPDU::GetUserInformationItem();
   itsAssociation.itsImplementation = static_cast<const char*>(anAnswer.GetVersion().Version());
   itsAssociation.itsImplementationUID = anAnswer.GetClass().ImplementationName().ToString();
   itsAssociation.itsMaximumLength = anAnswer.GetMax().GetMaximumLength();
   PDU_Service::UsableContextList aContexts;
   theService.GetUsablePresentationContexts(aContexts);
   itsAssociation.itsTransferSyntax = aContexts.front().GetTransferSyntaxUID().ToString();
   if (!itsIsJson)
   {
      std::cout << "associated in " << std::fixed << std::setprecision(3) << itsAssociation.itsMilliseconds
                << OnOneLine(" ms with " + itsAssociation.itsImplementation + " (" +
                             itsAssociation.itsImplementationUID + "), " + NameOfUID(itsAssociation.itsTransferSyntax) +
                             ", PDUs up to " + std::to_string(itsAssociation.itsMaximumLength) + " bytes")
                << std::endl;
   }
}

double EchoCommand::EchoOnce(PDU_Service& theService)
{
   DICOMCommandObject anAnswer;
   UINT16 aMessageID = 0;
   itsWatchdog->Begin(itsRequester.GetTimeout());
   const Clock::time_point aStart = Clock::now();
   const int isAnswered = Verification().Write(theService, anAnswer, aMessageID);
   const double aTime = MillisecondsSince(aStart);
   const bool wasLate = itsWatchdog->End();
   try
   {
      if (!isAnswered)
      {
         throw itsRequester.ExplainFailure(theService, wasLate);
      }
      CheckAnswer(anAnswer, aMessageID);
   }
   catch (const NetworkFailure&)
   {
      itsRequester.Abort(theService, *itsWatchdog);
      throw;
   }
   return aTime;
}

// The echoes were answered: that the peer does not take leave properly is worth a remark, not a failure.
void EchoCommand::Release(PDU_Service& theService)
{
   itsWatchdog->Begin(itsRequester.GetTimeout());
   const int isReleased = theService.Close();
   const bool wasLate = itsWatchdog->End();
   if (!isReleased)
   {
      TellPeerLines("echo", itsRequester.GetPeer().Text(),
                    std::string("the association was not released properly: ") +
                        itsRequester.ExplainFailure(theService, wasLate).what());
   }
}

void EchoCommand::ShowSummary() const
{
   if (itsRepeat == 1 || itsSent == 0)
   {
      return;
   }
   std::cout << itsSent << " sent, " << itsRoundTrips.size() << " answered";
   if (!itsRoundTrips.empty())
   {
      const Summary aSummary(itsRoundTrips);
      std::cout << ", min/avg/max " << std::fixed << std::setprecision(3) << aSummary.itsMinimum << "/"
                << aSummary.itsAverage << "/" << aSummary.itsMaximum << " ms";
   }
   std::cout << "\n";
}

void EchoCommand::WriteJson(int theExitCode, const std::string& theFailure) const
{
   JsonWriter aJson(std::cout);
   aJson.BeginObject();
   aJson.Text("calledTitle", itsRequester.GetPeer().itsTitle);
   aJson.Text("host", itsRequester.GetPeer().itsHost);
   aJson.Text("port", itsRequester.GetPeer().itsPort);
   aJson.Text("callingTitle", itsRequester.GetTitle());
   if (itsAssociation.itsMilliseconds > 0)
   {
      aJson.BeginObject("association");
      aJson.Number("milliseconds", itsAssociation.itsMilliseconds);
      aJson.Text("implementationVersionName", itsAssociation.itsImplementation);
      aJson.Text("implementationClassUID", itsAssociation.itsImplementationUID);
      aJson.Text("transferSyntaxUID", itsAssociation.itsTransferSyntax);
      aJson.Number("maximumLength", itsAssociation.itsMaximumLength);
      aJson.EndObject();
   }
   aJson.Number("sent", itsSent);
   aJson.BeginArray("milliseconds");
   for (const double aTime : itsRoundTrips)
   {
      aJson.Number("", aTime);
   }
   aJson.EndArray();
   if (!itsRoundTrips.empty())
   {
      const Summary aSummary(itsRoundTrips);
      aJson.Number("minimum", aSummary.itsMinimum);
      aJson.Number("average", aSummary.itsAverage);
      aJson.Number("maximum", aSummary.itsMaximum);
   }
   aJson.Number("exitCode", theExitCode);
   if (!theFailure.empty())
   {
      aJson.Text("failure", theFailure);
   }
   aJson.EndObject();
   std::cout << "\n";
}

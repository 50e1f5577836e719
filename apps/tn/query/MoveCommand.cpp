#include "apps/tn/query/MoveCommand.h"

#include <chrono>
#include <iostream>
#include <stdexcept>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/Interruption.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/network/NetworkFailure.h"
#include "apps/tn/query/QueryKeys.h"
#include "apps/tn/query/QueryLevel.h"
#include "apps/tn/query/QuerySession.h"
#include "apps/tn/query/ReceivingNode.h"
#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr UINT32 kAccessionNumber = 0x00080050;
constexpr UINT32 kStudyInstanceUID = 0x0020000D;
constexpr UINT32 kPatientID = 0x00100020;

constexpr UINT16 kDestinationUnknown = 0xA801;
constexpr UINT16 kIdentifierDoesNotMatch = 0xA900;

// The numbers of a C-MOVE on the terminal, as they come; nothing where standard error is none.
class SuboperationProgress
{
public:
   explicit SuboperationProgress(const std::string& theName) : itsName(theName), itsIsShown(isatty(STDERR_FILENO) == 1)
   {}
   ~SuboperationProgress()
   {
      if (itsWasShown)
      {
         std::cerr << kWipe << std::flush;
      }
   }
   SuboperationProgress(const SuboperationProgress&) = delete;
   SuboperationProgress& operator=(const SuboperationProgress&) = delete;

   void Show(const QueryOutcome& theOutcome)
   {
      constexpr std::chrono::milliseconds kInterval(100);
      const Clock::time_point aNow = Clock::now();
      if (!itsIsShown || aNow - itsLastShown < kInterval)
      {
         return;
      }
      itsLastShown = aNow;
      itsWasShown = true;
      std::cerr << kWipe << OnOneLine(itsName) << ": " << theOutcome.itsCompleted + theOutcome.itsWarning << " done, "
                << theOutcome.itsFailed << " failed, " << theOutcome.itsRemaining << " to come" << std::flush;
   }

private:
   using Clock = std::chrono::steady_clock;
   static constexpr char kWipe[] = "\r\x1b[K";

   const std::string itsName;
   const bool itsIsShown;
   bool itsWasShown = false;
   Clock::time_point itsLastShown;
};

std::vector<std::string> ModelNames()
{
   std::vector<std::string> aNames;
   for (const QueryModel& aModel : QueryModels())
   {
      aNames.emplace_back(aModel.itsName);
   }
   return aNames;
}

// A UID that is none is the peer's fault then, not the user's.
QueryOutcome FindAnswered(QuerySession& theSession, const char* theSOPClass, QueryKeys& theKeys,
                          const QuerySession::Matches& theMatches)
{
   try
   {
      return theSession.Find(theSOPClass, theKeys.GetIdentifier(), theMatches);
   }
   catch (const std::invalid_argument& anError)
   {
      throw NetworkFailure(ExitCode::kPeerFailed, RWCString("the peer's answer cannot be used: ") + anError.what());
   }
}

// Of several requests.
int Together(int theOne, int theOther)
{
   return theOne == theOther ? theOne : ExitCode::kSomeFailed;
}
} // namespace

MoveCommand::MoveCommand(CLI::App& theProgram)
    : Command(theProgram, "move", "Have an archive send what it keeps to a node (C-MOVE)"), itsRequester(itsOptions),
      itsTracing(itsOptions)
{
   itsOptions.add_option("--to", itsDestination, "The AE title of the node, as the archive knows it")
       ->type_name("TITLE")
       ->check(CheckTitle)
       ->required();
   itsOptions.add_option("--study", itsStudies, "Studies by their UIDs")->type_name("UID")->allow_extra_args(false);
   itsOptions.add_option("--series", itsSeries, "Series by their UIDs, with the --study that they belong to")
       ->type_name("UID")
       ->allow_extra_args(false);
   itsOptions
       .add_option("--instance", itsInstances,
                   "Instances by their UIDs, with the --study and the --series that they belong to")
       ->type_name("UID")
       ->allow_extra_args(false);
   itsOptions.add_option("--accession", itsAccessions, "Studies by their accession numbers, which are looked up first")
       ->type_name("NUMBER")
       ->allow_extra_args(false);
   itsOptions
       .add_option("--patient", itsPatient,
                   "A patient by ID, or the one that the rest belongs to, with --model patient")
       ->type_name("ID");
   itsOptions.add_option("--model", itsModel, "The information model")
       ->check(CLI::IsMember(ModelNames()))
       ->capture_default_str();
   CLI::Option* const aFolder =
       itsOptions.add_option("--receive", itsFolder, "Be that node, and keep what comes in this folder")
           ->type_name("DIR");
   itsOptions.add_flag("--json", itsIsJson, "One JSON object a line for each request that the archive was sent");
   itsOptions.add_option("--port", itsPort, "The port to receive on, as the archive knows it; 0 is any free one")
       ->check(CLI::Range(0, 65535))
       ->capture_default_str()
       ->needs(aFolder);
   itsOptions.footer(
       "Without any of what is to be moved, standard input is read: the lines of tn find --json.\n\n"
       "Exit codes: 0 all moved, 1 some instances failed or nothing matched, 2 wrong use, 5 no connection, 6 "
       "association\n"
       "rejected, 7 retrieval was not accepted, 8 the peer failed, 9 no answer in time, 10 interrupted.\n\n"
       "Examples:\n"
       "  tn move --to WORKSTATION --accession A4711 ARCHIVE@pacs.example:104\n"
       "  tn move --to WORKSTATION --receive study/ --port 11112 --study 1.2.3 ARCHIVE@pacs.example:104\n"
       "  tn find --json -k 'PatientName=LE*' ARCHIVE@pacs.example:104 | tn move --to WORKSTATION "
       "ARCHIVE@pacs.example:104");
}

int MoveCommand::Run()
{
   return RunTellingFaults("move", itsRequester.GetPeer(), [this] {
      CheckSelection();
      itsTracing.Begin();
      LoadDictionaries("");
      Select();
      itsRequester.SetDefaults();
      Interruption::Take();
      return itsFolder.empty() ? Move() : Receive();
   });
}

const QueryModel& MoveCommand::GetModel() const
{
   return QueryModelNamed(itsModel);
}

bool MoveCommand::IsSelected() const
{
   return !itsPatient.empty() || !itsStudies.empty() || !itsSeries.empty() || !itsInstances.empty() ||
          !itsAccessions.empty();
}

void MoveCommand::CheckSelection() const
{
   if (!IsSelected() && isatty(STDIN_FILENO) == 1)
   {
      throw std::invalid_argument(
          "nothing is said to be moved: --study, --series, --instance, --accession, or the lines "
          "of tn find --json on standard input");
   }
   if ((!itsSeries.empty() && itsStudies.size() > 1) || (!itsInstances.empty() && itsSeries.size() > 1))
   {
      throw std::invalid_argument(
          "it is not clear what belongs to what: one --study with --series, and one --series with "
          "--instance");
   }
   if (!itsPatient.empty() && GetModel().itsFirst != QueryLevel::Patient)
   {
      throw std::invalid_argument("the model study has no patients; --model patient has");
   }
   for (const std::string& anAccession : itsAccessions)
   {
      if (anAccession.empty() || anAccession.find_first_of("*?\\") != std::string::npos)
      {
         throw std::invalid_argument("--accession takes whole numbers; use tn find --json for wild cards");
      }
   }
}

void MoveCommand::Select()
{
   const std::string aStudy = itsStudies.empty() ? "" : itsStudies.front();
   const std::string aSeries = itsSeries.empty() ? "" : itsSeries.front();
   if (!IsSelected())
   {
      itsRequests.AddJsonLines(std::cin);
   }
   else if (!itsInstances.empty())
   {
      for (const std::string& anInstance : itsInstances)
      {
         itsRequests.Add(itsPatient, aStudy, aSeries, anInstance);
      }
   }
   else if (!itsSeries.empty())
   {
      for (const std::string& aUID : itsSeries)
      {
         itsRequests.Add(itsPatient, aStudy, aUID, "");
      }
   }
   else if (!itsStudies.empty())
   {
      for (const std::string& aUID : itsStudies)
      {
         itsRequests.Add(itsPatient, aUID, "", "");
      }
   }
   else if (!itsPatient.empty() && itsAccessions.empty())
   {
      itsRequests.Add(itsPatient, "", "", "");
   }
   for (const MoveRequest& aRequest : itsRequests.Get())
   {
      if (aRequest.itsLevel < GetModel().itsFirst || aRequest.itsLevel > GetModel().itsLast)
      {
         throw std::invalid_argument("the model " + itsModel + " cannot move " + aRequest.Text() +
                                     "; another --model can");
      }
   }
}

int MoveCommand::Receive()
{
   const ReceivingNode aNode(itsDestination, itsPort, itsFolder);
   std::cerr << "tn move: " << itsDestination << " listens on port " << aNode.GetPort() << std::endl;
   return Move();
}

int MoveCommand::Move()
{
   if (itsRequests.Get().empty() && itsAccessions.empty())
   {
      Tell("nothing to move: standard input has no matches");
      return ExitCode::kSomeFailed;
   }
   std::vector<std::string> aClasses = {GetModel().itsRetrieve};
   if (!itsAccessions.empty())
   {
      aClasses.insert(aClasses.begin(), GetModel().itsQuery);
   }
   QuerySession aSession(itsRequester, aClasses);
   for (const std::string& anAccession : itsAccessions)
   {
      LookUp(aSession, anAccession);
   }
   const int aResult = MoveAll(aSession);
   aSession.Release();
   return aResult;
}

// A peer that does not match accession numbers answers with every study that it has: what has another one stays.
void MoveCommand::LookUp(QuerySession& theSession, const std::string& theAccession)
{
   QueryKeys aKeys;
   aKeys.Add("AccessionNumber=" + theAccession);
   aKeys.Add("StudyInstanceUID");
   if (GetModel().itsFirst == QueryLevel::Patient)
   {
      aKeys.Add("PatientID=" + itsPatient);
   }
   aKeys.SetLevel(QueryLevelText(QueryLevel::Study));
   unsigned int aCount = 0;
   const auto aTake = [&](const DICOMDataObject& theMatch) {
      if (TextOf(theMatch, kAccessionNumber) == theAccession)
      {
         itsRequests.Add(GetModel().itsFirst == QueryLevel::Patient ? TextOf(theMatch, kPatientID) : "",
                         TextOf(theMatch, kStudyInstanceUID), "", "");
         ++aCount;
      }
      return true;
   };
   const QueryOutcome anOutcome = FindAnswered(theSession, GetModel().itsQuery, aKeys, aTake);
   if (anOutcome.Kind() != StatusKind::Success)
   {
      throw NetworkFailure(Interruption::HasCome() ? ExitCode::kCancelled : ExitCode::kPeerFailed,
                           "looking up accession number " + theAccession + ": " + anOutcome.Text(StatusService::Find));
   }
   if (aCount == 0)
   {
      throw NetworkFailure(ExitCode::kSomeFailed, "no study has the accession number " + theAccession);
   }
}

int MoveCommand::MoveAll(QuerySession& theSession)
{
   int aResult = -1;
   for (const MoveRequest& aRequest : itsRequests.Get())
   {
      const int anEnd = MoveOne(theSession, aRequest);
      if (anEnd == ExitCode::kCancelled)
      {
         return anEnd;
      }
      aResult = aResult < 0 ? anEnd : Together(aResult, anEnd);
   }
   return aResult;
}

int MoveCommand::MoveOne(QuerySession& theSession, const MoveRequest& theRequest)
{
   QueryKeys aKeys;
   for (const std::string& aKey : theRequest.Keys(GetModel().itsFirst))
   {
      aKeys.Add(aKey);
   }
   aKeys.SetLevel(QueryLevelText(theRequest.itsLevel));
   QueryOutcome anOutcome;
   {
      SuboperationProgress aProgress(theRequest.Text());
      anOutcome = theSession.Move(GetModel().itsRetrieve, aKeys.GetIdentifier(), itsDestination,
                                  [&](const QueryOutcome& theOutcome) {
                                     aProgress.Show(theOutcome);
                                     return true;
                                  });
   }
   return Report(theRequest, anOutcome);
}

void MoveCommand::Show(const MoveRequest& theRequest, const QueryOutcome& theOutcome) const
{
   std::cout << theRequest.Text() << ": " << theOutcome.itsCompleted << " completed, " << theOutcome.itsFailed
             << " failed, " << theOutcome.itsWarning << " with warnings\n";
   for (const std::string& anInstance : theOutcome.itsFailedInstances)
   {
      std::cout << "failed " << OnOneLine(anInstance) << "\n";
   }
}

void MoveCommand::WriteJson(const MoveRequest& theRequest, const QueryOutcome& theOutcome) const
{
   JsonWriter aJson(std::cout);
   aJson.BeginObject();
   aJson.Text("level", QueryLevelText(theRequest.itsLevel));
   aJson.BeginArray("uids");
   for (const std::string& aUID : theRequest.itsUIDs)
   {
      aJson.Text("", aUID);
   }
   aJson.EndArray();
   aJson.Number("status", theOutcome.itsStatus);
   aJson.Text("meaning", theOutcome.Text(StatusService::Move));
   aJson.Number("completed", theOutcome.itsCompleted);
   aJson.Number("failed", theOutcome.itsFailed);
   aJson.Number("warnings", theOutcome.itsWarning);
   aJson.BeginArray("failedInstances");
   for (const std::string& anInstance : theOutcome.itsFailedInstances)
   {
      aJson.Text("", anInstance);
   }
   aJson.EndArray();
   aJson.EndObject();
   std::cout << "\n";
}

int MoveCommand::Report(const MoveRequest& theRequest, const QueryOutcome& theOutcome) const
{
   itsIsJson ? WriteJson(theRequest, theOutcome) : Show(theRequest, theOutcome);
   std::cout.flush();
   if (Interruption::HasCome())
   {
      Tell(theRequest.Text() + ": interrupted, the peer was asked to cancel");
      return ExitCode::kCancelled;
   }
   switch (theOutcome.Kind())
   {
   case StatusKind::Success:
      return theOutcome.itsFailed == 0 && theOutcome.itsFailedInstances.empty() ? ExitCode::kDone
                                                                                : ExitCode::kSomeFailed;
   case StatusKind::Warning:
      Tell(theRequest.Text() + ": " + theOutcome.Text(StatusService::Move));
      return ExitCode::kSomeFailed;
   default: break;
   }
   std::string aText = theRequest.Text() + ": " + theOutcome.Text(StatusService::Move);
   if (theOutcome.itsStatus == kDestinationUnknown)
   {
      aText += "\n" + itsDestination + " has to be made known to the archive, with its host and port";
   }
   if (theOutcome.itsStatus == kIdentifierDoesNotMatch && theRequest.itsLevel > GetModel().itsFirst)
   {
      aText += "\nit may want to know what it belongs to: --patient, --study, --series";
   }
   Tell(aText);
   return ExitCode::kPeerFailed;
}

void MoveCommand::Tell(const std::string& theText) const
{
   TellPeerLines("move", itsRequester.GetPeer().Text(), theText);
}

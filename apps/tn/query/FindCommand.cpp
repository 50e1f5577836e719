#include "apps/tn/query/FindCommand.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <stdexcept>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/Interruption.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/Terminal.h"
#include "apps/tn/network/NetworkFailure.h"
#include "apps/tn/query/QuerySession.h"

namespace
{
constexpr char kStandardInput[] = "-";
constexpr UINT16 kIdentifierDoesNotMatch = 0xA900;

MatchWriter::Form FormOf(bool theIsJson, bool theIsCommaSeparated)
{
   return theIsJson             ? MatchWriter::Form::Json
          : theIsCommaSeparated ? MatchWriter::Form::CommaSeparated
                                : MatchWriter::Form::Table;
}

std::vector<std::string> ModelNames()
{
   std::vector<std::string> aNames;
   for (const QueryModel& aModel : QueryModels())
   {
      aNames.emplace_back(aModel.itsName);
   }
   return aNames;
}
} // namespace

FindCommand::FindCommand(CLI::App& theProgram)
    : Command(theProgram, "find", "Ask an archive or a worklist what it has (C-FIND)"), itsRequester(itsOptions),
      itsTracing(itsOptions)
{
   itsOptions
       .add_option("-k,--key", itsKeys,
                   "KEYWORD=VALUE or (gggg,eeee)=VALUE to match, without =VALUE to be told; SEQUENCE.KEYWORD for one "
                   "in an item; - reads them from standard input, a line each, an empty line between two queries. "
                   "Without any, standard input is read unless it is a terminal")
       ->type_name("KEY")
       ->allow_extra_args(false);
   itsOptions.add_option("--level", itsLevel, "What is looked for [default: the uppermost of the model]")
       ->check(CLI::IsMember(QueryLevelNames()));
   itsOptions.add_option("--model", itsModel, "The information model")
       ->check(CLI::IsMember(ModelNames()))
       ->capture_default_str();
   itsOptions.add_flag("--worklist", itsIsWorklist, "Ask for scheduled procedure steps")
       ->excludes("--level")
       ->excludes("--model");
   itsOptions.add_flag("--utf8", itsIsUTF8, "Tell the peer that the query is in UTF-8: some answer in the same");
   itsOptions.add_option("--limit", itsLimit, "Cancel after so many matches of a query; 0 is without limit")
       ->type_name("N")
       ->capture_default_str();
   CLI::Option* const aTable = itsOptions.add_flag("--table", itsIsTable, "Aligned columns (the default)");
   CLI::Option* const aList = itsOptions.add_flag("--csv", itsIsCommaSeparated, "Comma-separated values");
   CLI::Option* const aJson = itsOptions.add_flag("--json", itsIsJson, "One JSON object a line for each match");
   aTable->excludes(aList)->excludes(aJson);
   aList->excludes(aJson);
   itsOptions.footer("Exit codes: 0 answered, also when nothing matches, 2 wrong use, 5 no connection, 6 association "
                     "rejected, 7 the\n"
                     "query was not accepted, 8 the peer failed, 9 no answer in time, 10 interrupted.\n\n"
                     "Examples:\n"
                     "  tn find -k 'PatientName=LE*' -k StudyDate=20240101-20241231 ARCHIVE@pacs.example:104\n"
                     "  tn find --level image -k StudyInstanceUID=1.2.3 -k SeriesInstanceUID=1.2.3.4 --json "
                     "ARCHIVE@pacs.example:104\n"
                     "  tn find --worklist -k ScheduledProcedureStepSequence.Modality=CT RIS@ris.example:104");
}

int FindCommand::Run()
{
   return RunTellingFaults("find", itsRequester.GetPeer(), [this] {
      CheckLevel();
      itsTracing.Begin();
      LoadDictionaries("");
      itsRequester.SetDefaults();
      Interruption::Take();
      return Find();
   });
}

const QueryModel& FindCommand::GetModel() const
{
   return itsIsWorklist ? WorklistModel() : QueryModelNamed(itsModel);
}

QueryLevel FindCommand::GetLevel() const
{
   return itsLevel.empty() ? GetModel().itsFirst : QueryLevelNamed(itsLevel);
}

void FindCommand::CheckLevel() const
{
   if (GetLevel() < GetModel().itsFirst || GetLevel() > GetModel().itsLast)
   {
      throw std::invalid_argument("the model " + itsModel + " has no level " + itsLevel +
                                  (itsModel == "study" ? "; --model patient has" : ""));
   }
}

bool FindCommand::ReadsStandardInput() const
{
   return itsKeys.empty() ? isatty(STDIN_FILENO) == 0
                          : std::find(itsKeys.begin(), itsKeys.end(), kStandardInput) != itsKeys.end();
}

int FindCommand::Find()
{
   KeyList aKeys = itsKeys;
   aKeys.erase(std::remove(aKeys.begin(), aKeys.end(), kStandardInput), aKeys.end());
   MakeKeys(aKeys); // a mistake is told before anybody is called
   std::vector<KeyList> aQueries;
   KeyList aRead;
   while (ReadsStandardInput() && ReadKeys(std::cin, aRead))
   {
      aQueries.push_back(aKeys);
      aQueries.back().insert(aQueries.back().end(), aRead.begin(), aRead.end());
      MakeKeys(aQueries.back());
   }
   if (aQueries.empty())
   {
      aQueries.push_back(aKeys);
   }

   QuerySession aSession(itsRequester, {GetModel().itsQuery});
   int aResult = ExitCode::kDone;
   for (const KeyList& aQuery : aQueries)
   {
      const int anEnd = Find(aSession, aQuery);
      aResult = aResult == ExitCode::kDone ? anEnd : aResult;
      if (anEnd == ExitCode::kCancelled || anEnd == ExitCode::kCouldNotWrite)
      {
         break;
      }
   }
   aSession.Release();
   return aResult;
}

int FindCommand::Find(QuerySession& theSession, const KeyList& theKeys)
{
   QueryKeys aKeys = MakeKeys(theKeys);
   const auto aWriter = MatchWriter::Make(FormOf(itsIsJson, itsIsCommaSeparated), std::cout, aKeys.GetColumns(),
                                          TerminalWidth(STDOUT_FILENO));
   unsigned int aCount = 0;
   const QueryOutcome anOutcome =
       theSession.Find(GetModel().itsQuery, aKeys.GetIdentifier(), [&](const DICOMDataObject& theMatch) {
          aWriter->Write(theMatch);
          ++aCount;
          return aCount != itsLimit && std::cout.good();
       });
   aWriter->Finish();
   std::cout.flush();
   if (!std::cout.good())
   {
      Tell("standard output cannot be written");
      return ExitCode::kCouldNotWrite;
   }
   if (anOutcome.itsHasUnsupportedKeys)
   {
      Tell("some of the keys were not matched, the peer does not support them");
   }
   if (Interruption::HasCome())
   {
      Tell("interrupted after " + std::to_string(aCount) + " matches; the query was cancelled");
      return ExitCode::kCancelled;
   }
   const bool isCancelled = anOutcome.itsIsCancelled && anOutcome.Kind() == StatusKind::Cancelled;
   if (isCancelled || anOutcome.itsIsCut)
   {
      Tell("cancelled after " + std::to_string(aCount) + (aCount == 1 ? " match" : " matches") + ", there may be more");
   }
   if (isCancelled)
   {
      return ExitCode::kDone;
   }
   if (anOutcome.Kind() != StatusKind::Success)
   {
      const bool isRefused = anOutcome.itsStatus == kIdentifierDoesNotMatch;
      Tell(anOutcome.Text(StatusService::Find) + (isRefused ? HintFor(aKeys) : ""));
      return ExitCode::kPeerFailed;
   }
   return ExitCode::kDone;
}

QueryKeys FindCommand::MakeKeys(const KeyList& theKeys) const
{
   QueryKeys aKeys;
   for (const char* const aKey : DefaultKeys(GetModel(), GetLevel()))
   {
      aKeys.Add(aKey);
   }
   for (const std::string& aKey : theKeys)
   {
      aKeys.Add(aKey);
   }
   aKeys.SetLevel(QueryLevelText(GetLevel()));
   if (itsIsUTF8)
   {
      aKeys.SetUTF8();
   }
   return aKeys;
}

// Hierarchical peers want exactly one entity at every level above (PS3.4 C.4.1.3.1.1).
std::string FindCommand::HintFor(QueryKeys& theKeys) const
{
   for (int i = static_cast<int>(GetModel().itsFirst); i < static_cast<int>(GetLevel()); ++i)
   {
      const auto aLevel = static_cast<QueryLevel>(i);
      if (TextOf(theKeys.GetIdentifier(), UniqueKeyOf(aLevel)).empty())
      {
         return "\nit may want one " + QueryLevelNames()[static_cast<std::size_t>(i)] + " at this level: -k " +
                DefaultKeys(GetModel(), aLevel).back() + "=...";
      }
   }
   return "";
}

void FindCommand::Tell(const std::string& theText) const
{
   TellPeerLines("find", itsRequester.GetPeer().Text(), theText);
}

// tn find: asks an archive what it has, or a worklist what is to be done (C-FIND, PS3.4 C and K).
#pragma once

#include <string>
#include <vector>

#include "apps/tn/base/Command.h"
#include "apps/tn/base/Tracing.h"
#include "apps/tn/network/Requester.h"
#include "apps/tn/query/MatchWriter.h"
#include "apps/tn/query/QueryLevel.h"

class QuerySession;

class FindCommand : public Command
{
public:
   explicit FindCommand(CLI::App& theProgram);

   int Run() override;

private:
   using KeyList = std::vector<std::string>;

   const QueryModel& GetModel() const;
   QueryLevel GetLevel() const;
   void CheckLevel() const;
   bool ReadsStandardInput() const;
   int Find();
   int Find(QuerySession& theSession, const KeyList& theKeys);
   QueryKeys MakeKeys(const KeyList& theKeys) const;
   std::string HintFor(QueryKeys& theKeys) const;
   void Tell(const std::string& theText) const;

   Requester itsRequester;
   Tracing itsTracing;
   std::string itsModel = "study";
   std::string itsLevel;
   bool itsIsWorklist = false;
   KeyList itsKeys;
   bool itsIsUTF8 = false;
   unsigned int itsLimit = 0; // 0: none
   bool itsIsTable = false;
   bool itsIsCommaSeparated = false;
   bool itsIsJson = false;
};

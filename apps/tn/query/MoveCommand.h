// tn move: has an archive send what it keeps to a node (C-MOVE, PS3.4 C.4.2).
#pragma once

#include <string>
#include <vector>

#include "apps/tn/base/Command.h"
#include "apps/tn/base/Tracing.h"
#include "apps/tn/network/Requester.h"
#include "apps/tn/query/MoveRequests.h"

class QuerySession;
struct QueryModel;
struct QueryOutcome;

class MoveCommand : public Command
{
public:
   explicit MoveCommand(CLI::App& theProgram);

   int Run() override;

private:
   using TextList = std::vector<std::string>;

   const QueryModel& GetModel() const;
   bool IsSelected() const;
   void Select();
   void CheckSelection() const;
   int Receive();
   int Move();
   int MoveAll(QuerySession& theSession);
   int MoveOne(QuerySession& theSession, const MoveRequest& theRequest);
   void LookUp(QuerySession& theSession, const std::string& theAccession);
   void Show(const MoveRequest& theRequest, const QueryOutcome& theOutcome) const;
   void WriteJson(const MoveRequest& theRequest, const QueryOutcome& theOutcome) const;
   int Report(const MoveRequest& theRequest, const QueryOutcome& theOutcome) const;
   void Tell(const std::string& theText) const;

   Requester itsRequester;
   Tracing itsTracing;
   std::string itsDestination;
   std::string itsModel = "study";
   std::string itsPatient;
   TextList itsStudies;
   TextList itsSeries;
   TextList itsInstances;
   TextList itsAccessions;
   std::string itsFolder; // to receive in; empty: another node does
   int itsPort = 11112;
   bool itsIsJson = false;
   MoveRequests itsRequests;
};

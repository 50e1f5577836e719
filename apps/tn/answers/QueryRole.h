// The query service of the Query/Retrieve models (PS3.4 C.4.1) as a node gives it, from the index of an archive.
#pragma once

#include <optional>

#include "apps/tn/answers/QueryPlan.h"
#include "apps/tn/archive/SQLite.h"
#include "apps/tn/node/NodeLog.h"
#include "apps/tn/node/NodeRole.h"

class Archive;
class QueryAnswers;

class QueryRole : public NodeRole
{
public:
   // theArchive is shared by all associations and outlives them.
   QueryRole(Archive& theArchive, QueryPlan::Rules theRules) : itsArchive(theArchive), itsRules(std::move(theRules)) {}

   bool Accepts(const RWCString& theAbstractSyntax) const override;
   int Serve(PDU_Service& theService, DICOMCommandObject& theCommand) override;
   std::string Describe() const override;

private:
   int Answer(QueryAnswers& theAnswers, IndexModel theModel, const DICOMDataObject& theIdentifier);

   static void Search(SQLiteDatabase& theIndex, const QueryPlan& thePlan, QueryAnswers& theAnswers);

   Archive& itsArchive;
   QueryPlan::Rules itsRules;
   std::optional<SQLiteDatabase> itsIndex; // opened when it is asked
   LimitedLog itsLog;
   unsigned long itsQueries = 0;
   unsigned long itsMatches = 0;
};

// The matches that the index of an archive has for an identifier, one after another as they are asked for. What is not
// yet in the index when the first is asked for is not found: flush it before.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/tn/answers/QueryPlan.h"
#include "apps/tn/archive/SQLite.h"
#include "apps/tn/base/CharacterSet.h"

class DICOMDataObject;

class IndexQuery
{
public:
   // Both are borrowed; one query at a time on theIndex. Throws SQLiteFailure.
   IndexQuery(SQLiteDatabase& theIndex, const QueryPlan& thePlan);
   IndexQuery(const IndexQuery&) = delete;
   IndexQuery& operator=(const IndexQuery&) = delete;

   // Null at the end. Throws SQLiteFailure.
   std::unique_ptr<DICOMDataObject> Next();

private:
   using Answer = QueryPlan::Answer;

   bool Matches(std::int64_t theMatcher, std::string_view theText, std::string_view theTerms);
   const CharacterSet& FindCharacterSet(std::string_view theTerms);
   std::unique_ptr<DICOMDataObject> MakeMatch();
   void Fill(DICOMDataObject& theMatch, const std::vector<Answer>& theAnswers, bool theIsUTF8);
   std::string TextOf(const Answer& theAnswer) const;
   std::string UTF8Of(const Answer& theAnswer);
   bool HasOneCharacterSet() const;

   const QueryPlan& itsPlan;
   std::optional<SQLiteStatement> itsStatement;
   std::map<std::string, CharacterSet, std::less<>> itsCharacterSets; // by defined terms
};

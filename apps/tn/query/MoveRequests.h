// What is to be moved, a request each: entities of one level that belong to the same entities above it.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "apps/tn/query/QueryLevel.h"

struct MoveRequest
{
   QueryLevel itsLevel;
   std::string itsPatient; // may be empty, as the next two where they are above the level or below
   std::string itsStudy;
   std::string itsSeries;
   std::vector<std::string> itsUIDs; // of the level; of a patient the ID

   // "series 1.2.3.4", "12 instances of series 1.2.3.4"
   std::string Text() const;

   // As keys of a query in the model, whose levels begin with theFirst.
   std::vector<std::string> Keys(QueryLevel theFirst) const;
};

class MoveRequests
{
public:
   // The most specific of the four that are not empty is moved, the others tell where it belongs. Joins what can be
   // asked for together; what is there already is left out. Throws std::invalid_argument for what is no UID, and when
   // all are empty.
   void Add(const std::string& thePatient, const std::string& theStudy, const std::string& theSeries,
            const std::string& theInstance);

   // From the lines of tn find --json. Throws std::invalid_argument, which names the line.
   void AddJsonLines(std::istream& theInput);

   const std::vector<MoveRequest>& Get() const { return itsRequests; }

private:
   std::vector<MoveRequest> itsRequests;
};

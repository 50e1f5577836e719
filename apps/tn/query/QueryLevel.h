// The levels and the information models of Query/Retrieve (PS3.4 C.6) and of the Modality Worklist (K.6), as users of
// tn name them, and what a query asks for when nothing else is said.
#pragma once

#include <string>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

// In descending order.
enum class QueryLevel
{
   Patient,
   Study,
   Series,
   Image,
   Step // of a worklist, which has no levels
};

struct QueryModel
{
   const char* itsName; // on the command line
   const char* itsQuery;
   const char* itsRetrieve; // null: nothing can be retrieved
   QueryLevel itsFirst;
   QueryLevel itsLast;
};

const std::vector<QueryModel>& QueryModels();
const QueryModel& QueryModelNamed(const std::string& theName);
const QueryModel& WorklistModel();

// The names of levels in order, and of a level in an identifier (0008,0052); empty for worklists.
const std::vector<std::string>& QueryLevelNames();
QueryLevel QueryLevelNamed(const std::string& theName);
const char* QueryLevelText(QueryLevel theLevel);

// Which attribute names an entity of the level uniquely, as a tag.
UINT32 UniqueKeyOf(QueryLevel theLevel);

// What to ask for, as keys of the command line. In a hierarchical query only attributes of the level itself and the
// unique keys above it may be asked for; those of the patient belong to studies where that is the uppermost level.
std::vector<const char*> DefaultKeys(const QueryModel& theModel, QueryLevel theLevel);

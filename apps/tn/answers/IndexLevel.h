// The levels of the Query/Retrieve information models (PS3.4 C.6) in the index of an archive, and what the identifiers
// of peers must have.
#pragma once

#include <stdexcept>
#include <string>

#include "apps/tn/archive/InstanceKeys.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;

// The information models, by the numbers of StandardQuery and StandardRetrieve.
enum class IndexModel
{
   kPatientRoot = 1,
   kStudyRoot = 2,
   kPatientStudyOnly = 3
};

struct IndexLevel
{
   const char* itsName; // value of Query/Retrieve Level (0008,0052)
   KeyLevel itsLevel;
   UINT32 itsUniqueKey;
   const char* itsUniqueName; // column of the index
   const char* itsTable;
   const char* itsJoin; // to the table of the level above
};

// That an identifier is not one of its model (0xA900 of PS3.4 C.4.1.1.4). The text says why.
class BadIdentifier : public std::runtime_error
{
public:
   using std::runtime_error::runtime_error;
};

const IndexLevel& GetIndexLevel(KeyLevel theLevel);

// The level that the identifier names. Throws BadIdentifier when it is none of the model.
const IndexLevel& FindIndexLevel(IndexModel theModel, const DICOMDataObject& theIdentifier);

// Throws BadIdentifier unless the identifier has a single value for the unique key of each level of the model that is
// above theLevel (PS3.4 C.4.1.2.1).
void CheckUniqueKeys(IndexModel theModel, const IndexLevel& theLevel, const DICOMDataObject& theIdentifier);

// The tables of theLevel and of those above, joined: what stands behind FROM.
std::string JoinTables(const IndexLevel& theLevel);

// " IN (?, ?)" for as many values.
std::string IsOneOf(std::size_t theCount);

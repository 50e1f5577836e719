// The keys of a query as users write them:
//
//    PatientID=4711                                    an attribute by its keyword, and what it has to match
//    (0010,0010)=LE*                                   by its tag
//    StudyDescription                                  one that is only to be told
//    ScheduledProcedureStepSequence.Modality=CT        one in the item of a sequence
//
// Keywords are those of the dictionary. Values are UTF-8.
#pragma once

#include <functional>
#include <istream>
#include <string>
#include <vector>

#include "talvenor/dataset/DICOMDataObject.h"

class QueryKeys
{
public:
   // A key that is asked for: its path of tags, and the name by which it was given.
   struct Column
   {
      std::string itsName;
      std::vector<UINT32> itsPath;
   };

   // Throws std::invalid_argument, whose text says what is wrong with the key and what would be right. A key that is
   // there already gets the new value.
   void Add(const std::string& theKey);

   // Tells Query/Retrieve Level, unless it is empty.
   void SetLevel(const std::string& theLevel);

   // Says that the identifier is in UTF-8, which it does of itself where a value needs it.
   void SetUTF8();

   // The identifier, which says in which character set it is when that matters.
   DICOMDataObject& GetIdentifier() { return itsIdentifier; }

   // In the order in which they were first added.
   const std::vector<Column>& GetColumns() const { return itsColumns; }

private:
   DICOMDataObject itsIdentifier;
   std::vector<Column> itsColumns;
};

// The keys of a query, a line each; empty lines are between queries, lines with # at the beginning are skipped. False
// at the end.
bool ReadKeys(std::istream& theInput, std::vector<std::string>& theKeys);

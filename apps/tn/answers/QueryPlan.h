// How an identifier of the Query/Retrieve models (PS3.4 C.4.1) is answered from the index of an archive: what is asked
// of the database, which calls back for what it cannot compare, and what a match has.
//
// Attributes of the level that is asked for and of those above are keys, the numbers of related studies, series and
// instances too. Others are answered without a value and not matched. Without relational queries (PS3.4 C.4.1.2.2.1)
// the identifier must have the unique keys of all levels above its own.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/tn/answers/IndexLevel.h"
#include "apps/tn/answers/ValueMatcher.h"
#include "apps/tn/base/CharacterSet.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMObject;
class VR;

class QueryPlan
{
public:
   struct Rules
   {
      bool itsIsRelational = false;
      std::string itsRetrieveTitle; // of the node that has the instances
   };

   // What an attribute of the identifier is answered with.
   struct Answer
   {
      UINT32 itsTag;
      UINT16 itsType;
      int itsColumn = -1; // of the row; -1: itsText, always
      std::string itsText;
      KeyLevel itsLevel = KeyLevel::kPatient; // in whose character set the column is
      std::vector<Answer> itsItem;            // of a sequence, which has one item
   };

   // Throws BadIdentifier.
   QueryPlan(IndexModel theModel, const DICOMDataObject& theIdentifier, Rules theRules);

   // What the database compares by calling matches(NUMBER, value, character set).
   struct Matcher
   {
      ValueMatcher itsMatcher;
      UINT16 itsType;
   };

   // The first columns of a row are the character sets, by KeyLevel, of the level and those above.
   std::string MakeStatement() const;
   const std::vector<Matcher>& GetMatchers() const { return itsMatchers; } // by their numbers
   const std::vector<std::string>& GetParameters() const { return itsParameters; }

   const IndexLevel& GetLevel() const { return *itsLevel; }

   // In the order of their tags.
   const std::vector<Answer>& GetAnswers() const { return itsAnswers; }

   // Whether each attribute of the identifier is a key.
   bool KnowsAllKeys() const { return itsKnowsAllKeys; }

private:
   std::vector<Answer> MakeAnswers(const DICOMObject& theKeys, UINT32 theSequence);
   Answer MakeAnswer(const VR& theVR, UINT32 theSequence);
   std::optional<std::string> FindConstant(UINT32 theTag) const;
   bool SelectColumn(Answer& theAnswer, const VR& theVR, UINT32 theSequence);
   bool SelectCollected(Answer& theAnswer, const VR& theVR);
   void Select(Answer& theAnswer, KeyLevel theLevel, const std::string& theExpression);
   void Match(const Answer& theAnswer, const VR& theVR, bool theIsExact);

   Rules itsRules;
   const IndexLevel* itsLevel;
   CharacterSet itsCharacterSet; // of the identifier
   std::vector<std::string> itsExpressions;
   std::vector<std::string> itsConditions;
   std::vector<std::string> itsParameters; // of the conditions
   std::vector<Matcher> itsMatchers;
   bool itsKnowsAllKeys = true;
   std::vector<Answer> itsAnswers; // last: made with the others
};

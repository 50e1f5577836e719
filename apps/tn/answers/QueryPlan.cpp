#include "apps/tn/answers/QueryPlan.h"

#include <algorithm>
#include <iterator>

#include "apps/tn/archive/InstanceKeys.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"

namespace
{
constexpr UINT32 kSpecificCharacterSet = 0x00080005;
constexpr UINT32 kQueryRetrieveLevel = 0x00080052;
constexpr UINT32 kRetrieveTitle = 0x00080054;
constexpr UINT32 kInstanceAvailability = 0x00080056;

// Attributes that are counted or collected when they are asked for (PS3.4 C.3.4).
struct Collected
{
   UINT32 itsTag;
   KeyLevel itsLevel; // whose they are
   const char* itsExpression;
};

constexpr Collected kCollected[] = {
    {0x00080061, KeyLevel::kStudy,
     "(SELECT replace(group_concat(DISTINCT s.Modality), ',', '\\') FROM series s WHERE s.study = study.row)"},
    {0x00080062, KeyLevel::kStudy,
     "(SELECT replace(group_concat(DISTINCT i.SOPClassUID), ',', '\\') FROM series s JOIN instance i ON i.series = "
     "s.row "
     "WHERE s.study = study.row)"},
    {0x00201200, KeyLevel::kPatient, "(SELECT count(*) FROM study t WHERE t.patient = patient.row)"},
    {0x00201202, KeyLevel::kPatient,
     "(SELECT count(*) FROM study t JOIN series s ON s.study = t.row WHERE t.patient = patient.row)"},
    {0x00201204, KeyLevel::kPatient,
     "(SELECT count(*) FROM study t JOIN series s ON s.study = t.row JOIN instance i ON i.series = s.row "
     "WHERE t.patient = patient.row)"},
    {0x00201206, KeyLevel::kStudy, "(SELECT count(*) FROM series s WHERE s.study = study.row)"},
    {0x00201208, KeyLevel::kStudy,
     "(SELECT count(*) FROM series s JOIN instance i ON i.series = s.row WHERE s.study = study.row)"},
    {0x00201209, KeyLevel::kSeries, "(SELECT count(*) FROM instance i WHERE i.series = series.row)"},
};

bool IsASCII(const std::string& theText)
{
   return std::none_of(theText.begin(), theText.end(),
                       [](char theByte) { return (static_cast<unsigned char>(theByte) & 0x80) != 0; });
}
} // namespace

QueryPlan::QueryPlan(IndexModel theModel, const DICOMDataObject& theIdentifier, Rules theRules)
    : itsRules(std::move(theRules)), itsLevel(&FindIndexLevel(theModel, theIdentifier)),
      itsCharacterSet(TextOf(theIdentifier, kSpecificCharacterSet))
{
   if (!itsRules.itsIsRelational)
   {
      CheckUniqueKeys(theModel, *itsLevel, theIdentifier);
   }
   for (int aLevel = 0; aLevel <= static_cast<int>(itsLevel->itsLevel); ++aLevel)
   {
      itsExpressions.push_back(std::string(GetIndexLevel(static_cast<KeyLevel>(aLevel)).itsTable) +
                               ".SpecificCharacterSet");
   }
   itsAnswers = MakeAnswers(theIdentifier, 0);
}

// theSequence is that whose item theKeys are, 0 for the identifier.
std::vector<QueryPlan::Answer> QueryPlan::MakeAnswers(const DICOMObject& theKeys, UINT32 theSequence)
{
   std::vector<Answer> anAnswers;
   DICOMObjectIterator anIterator(theKeys, ExplicitNoGroupLength);
   for (const VR* aVR = anIterator.First(); aVR != nullptr; aVR = anIterator.Next())
   {
      if (aVR->GetTag() != kSpecificCharacterSet)
      {
         anAnswers.push_back(MakeAnswer(*aVR, theSequence));
      }
   }
   return anAnswers;
}

QueryPlan::Answer QueryPlan::MakeAnswer(const VR& theVR, UINT32 theSequence)
{
   Answer anAnswer;
   anAnswer.itsTag = theVR.GetTag();
   anAnswer.itsType = theVR.GetTypeCode();
   const bool isOfDataset = theSequence == 0;
   if (const auto anItems = ItemsOf(&theVR); isOfDataset && !anItems.empty())
   {
      anAnswer.itsItem = MakeAnswers(*anItems.front(), anAnswer.itsTag);
   }
   else if (const auto aConstant = FindConstant(anAnswer.itsTag); isOfDataset && aConstant)
   {
      anAnswer.itsText = *aConstant;
   }
   else if (!SelectColumn(anAnswer, theVR, theSequence) && !(isOfDataset && SelectCollected(anAnswer, theVR)))
   {
      itsKnowsAllKeys = false;
   }
   return anAnswer;
}

bool QueryPlan::SelectColumn(Answer& theAnswer, const VR& theVR, UINT32 theSequence)
{
   const auto aColumns = InstanceKeys::GetColumns();
   const auto aColumn = std::find_if(aColumns.begin() + 1, aColumns.end(), [&](const KeyColumn& theColumn) {
      return theColumn.itsTag == theAnswer.itsTag && theColumn.itsSequence == theSequence;
   });
   if (aColumn == aColumns.end() || aColumn->itsLevel > itsLevel->itsLevel)
   {
      return false;
   }
   Select(theAnswer, aColumn->itsLevel,
          std::string(GetIndexLevel(aColumn->itsLevel).itsTable) + "." + aColumn->itsName);
   Match(theAnswer, theVR, theAnswer.itsType == VRCode::UI || aColumn->itsIsIndexed);
   return true;
}

bool QueryPlan::SelectCollected(Answer& theAnswer, const VR& theVR)
{
   const auto* const aRow = std::find_if(std::begin(kCollected), std::end(kCollected),
                                         [&](const Collected& theRow) { return theRow.itsTag == theAnswer.itsTag; });
   if (aRow == std::end(kCollected) || aRow->itsLevel > itsLevel->itsLevel)
   {
      return false;
   }
   Select(theAnswer, aRow->itsLevel, aRow->itsExpression);
   Match(theAnswer, theVR, false);
   return true;
}

std::optional<std::string> QueryPlan::FindConstant(UINT32 theTag) const
{
   switch (theTag)
   {
   case kQueryRetrieveLevel: return itsLevel->itsName;
   case kRetrieveTitle: return itsRules.itsRetrieveTitle;
   case kInstanceAvailability: return "ONLINE";
   default: return std::nullopt;
   }
}

void QueryPlan::Select(Answer& theAnswer, KeyLevel theLevel, const std::string& theExpression)
{
   theAnswer.itsColumn = static_cast<int>(itsExpressions.size());
   theAnswer.itsLevel = theLevel;
   itsExpressions.push_back(theExpression);
}

// theIsExact: the column is stored as it is compared, whatever the character set, so that the database can look values
// up.
void QueryPlan::Match(const Answer& theAnswer, const VR& theVR, bool theIsExact)
{
   try
   {
      ValueMatcher aMatcher(theAnswer.itsType, ValueText(theVR, itsCharacterSet));
      if (aMatcher.IsUniversal())
      {
         return;
      }
      const std::string& anExpression = itsExpressions.back();
      const std::vector<std::string> aValues = aMatcher.GetExactValues();
      if (theIsExact && !aValues.empty() && std::all_of(aValues.begin(), aValues.end(), IsASCII))
      {
         itsConditions.push_back(anExpression + IsOneOf(aValues.size()));
         itsParameters.insert(itsParameters.end(), aValues.begin(), aValues.end());
         return;
      }
      itsConditions.push_back("matches(" + std::to_string(itsMatchers.size()) + ", " + anExpression + ", " +
                              itsExpressions[static_cast<std::size_t>(theAnswer.itsLevel)] + ")");
      itsMatchers.push_back({std::move(aMatcher), theAnswer.itsType});
   }
   catch (const ValueMatcher::BadKey& aFault)
   {
      throw BadIdentifier(TagText(theAnswer.itsTag) + ": " + aFault.what());
   }
}

std::string QueryPlan::MakeStatement() const
{
   std::string aText = "SELECT ";
   for (const std::string& anExpression : itsExpressions)
   {
      aText += (&anExpression == &itsExpressions.front() ? "" : ", ") + anExpression;
   }
   aText += " FROM " + JoinTables(*itsLevel);
   for (const std::string& aCondition : itsConditions)
   {
      aText += (&aCondition == &itsConditions.front() ? " WHERE " : " AND ") + aCondition;
   }
   return aText;
}

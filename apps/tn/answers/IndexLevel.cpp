#include "apps/tn/answers/IndexLevel.h"

#include <algorithm>
#include <iterator>

#include "apps/tn/base/Tags.h"
#include "talvenor/dataset/DICOMDataObject.h"

namespace
{
constexpr UINT32 kQueryRetrieveLevel = 0x00080052;

// By KeyLevel.
constexpr IndexLevel kLevels[] = {
    {"PATIENT", KeyLevel::kPatient, 0x00100020, "PatientID", "patient", ""},
    {"STUDY", KeyLevel::kStudy, 0x0020000D, "StudyInstanceUID", "study",
     " JOIN patient ON study.patient = patient.row"},
    {"SERIES", KeyLevel::kSeries, 0x0020000E, "SeriesInstanceUID", "series", " JOIN study ON series.study = study.row"},
    {"IMAGE", KeyLevel::kInstance, 0x00080018, "SOPInstanceUID", "instance",
     " JOIN series ON instance.series = series.row"},
};

struct ModelLevels
{
   KeyLevel itsFirst;
   KeyLevel itsLast;
};

ModelLevels LevelsOf(IndexModel theModel)
{
   switch (theModel)
   {
   case IndexModel::kStudyRoot: return {KeyLevel::kStudy, KeyLevel::kInstance};
   case IndexModel::kPatientStudyOnly: return {KeyLevel::kPatient, KeyLevel::kStudy};
   case IndexModel::kPatientRoot: break;
   }
   return {KeyLevel::kPatient, KeyLevel::kInstance};
}
} // namespace

const IndexLevel& GetIndexLevel(KeyLevel theLevel)
{
   return kLevels[static_cast<std::size_t>(theLevel)];
}

const IndexLevel& FindIndexLevel(IndexModel theModel, const DICOMDataObject& theIdentifier)
{
   const RWCString aName = TextOf(theIdentifier, kQueryRetrieveLevel);
   if (aName.empty())
   {
      throw BadIdentifier("the query/retrieve level is missing");
   }
   const auto* const aLevel = std::find_if(std::begin(kLevels), std::end(kLevels),
                                           [&](const IndexLevel& theLevel) { return aName == theLevel.itsName; });
   const ModelLevels aLevels = LevelsOf(theModel);
   if (aLevel == std::end(kLevels) || aLevel->itsLevel < aLevels.itsFirst || aLevel->itsLevel > aLevels.itsLast)
   {
      throw BadIdentifier("no level of the model: " + aName);
   }
   return *aLevel;
}

void CheckUniqueKeys(IndexModel theModel, const IndexLevel& theLevel, const DICOMDataObject& theIdentifier)
{
   for (const IndexLevel& aLevel : kLevels)
   {
      if (aLevel.itsLevel < LevelsOf(theModel).itsFirst || aLevel.itsLevel >= theLevel.itsLevel)
      {
         continue;
      }
      const RWCString aValue = TextOf(theIdentifier, aLevel.itsUniqueKey);
      if (aValue.empty())
      {
         throw BadIdentifier(std::string(aLevel.itsUniqueName) + " is missing");
      }
      if (aValue.find_first_of("\\*?") != RWCString::npos)
      {
         throw BadIdentifier(std::string(aLevel.itsUniqueName) + " is not a single value");
      }
   }
}

std::string JoinTables(const IndexLevel& theLevel)
{
   std::string aText = theLevel.itsTable;
   for (std::size_t anIndex = static_cast<std::size_t>(theLevel.itsLevel) + 1; anIndex-- != 0;)
   {
      aText += kLevels[anIndex].itsJoin;
   }
   return aText;
}

std::string IsOneOf(std::size_t theCount)
{
   std::string aText = " IN (?";
   for (std::size_t anIndex = 1; anIndex < theCount; ++anIndex)
   {
      aText += ", ?";
   }
   return aText + ")";
}

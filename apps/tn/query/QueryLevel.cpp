#include "apps/tn/query/QueryLevel.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "talvenor/services/InformationModel.h"

namespace
{
struct Level
{
   const char* itsName;
   const char* itsText;
   UINT32 itsUniqueKey;
   std::vector<const char*> itsKeys; // the unique one is the last
};

// In the order of QueryLevel. PS3.4 C.6.1.1, C.6.2.1, K.6.1.2.2.
const std::vector<Level>& Levels()
{
   static const std::vector<Level> aLevels = {
       {"patient",
        "PATIENT",
        0x00100020,
        {"PatientName", "PatientBirthDate", "PatientSex", "NumberOfPatientRelatedStudies", "PatientID"}},
       {"study",
        "STUDY",
        0x0020000D,
        {"StudyDate", "StudyTime", "AccessionNumber", "StudyID", "StudyDescription", "ModalitiesInStudy",
         "NumberOfStudyRelatedSeries", "NumberOfStudyRelatedInstances", "StudyInstanceUID"}},
       {"series",
        "SERIES",
        0x0020000E,
        {"Modality", "SeriesNumber", "SeriesDescription", "NumberOfSeriesRelatedInstances", "SeriesInstanceUID"}},
       {"image", "IMAGE", 0x00080018, {"InstanceNumber", "SOPClassUID", "SOPInstanceUID"}},
       {"step",
        "",
        0,
        {"PatientName", "PatientID", "PatientBirthDate", "PatientSex", "AccessionNumber", "RequestedProcedureID",
         "RequestedProcedureDescription", "StudyInstanceUID", "ScheduledProcedureStepSequence.Modality",
         "ScheduledProcedureStepSequence.ScheduledStationAETitle",
         "ScheduledProcedureStepSequence.ScheduledProcedureStepStartDate",
         "ScheduledProcedureStepSequence.ScheduledProcedureStepStartTime",
         "ScheduledProcedureStepSequence.ScheduledPerformingPhysicianName",
         "ScheduledProcedureStepSequence.ScheduledProcedureStepDescription",
         "ScheduledProcedureStepSequence.ScheduledProcedureStepID"}},
   };
   return aLevels;
}

const Level& LevelOf(QueryLevel theLevel)
{
   return Levels()[static_cast<std::size_t>(theLevel)];
}

constexpr const char* kPatientKeysOfStudies[] = {"PatientName", "PatientID", "PatientBirthDate", "PatientSex"};
} // namespace

const std::vector<QueryModel>& QueryModels()
{
   static const std::vector<QueryModel> aModels = {
       {"patient", QuerySOPClass::kPatientRoot, RetrieveSOPClass::kPatientRoot, QueryLevel::Patient, QueryLevel::Image},
       {"study", QuerySOPClass::kStudyRoot, RetrieveSOPClass::kStudyRoot, QueryLevel::Study, QueryLevel::Image},
       {"patient-study", QuerySOPClass::kPatientStudyOnly, RetrieveSOPClass::kPatientStudyOnly, QueryLevel::Patient,
        QueryLevel::Study},
   };
   return aModels;
}

const QueryModel& WorklistModel()
{
   static const QueryModel aModel = {"worklist", QuerySOPClass::kModalityWorklist, nullptr, QueryLevel::Step,
                                     QueryLevel::Step};
   return aModel;
}

const QueryModel& QueryModelNamed(const std::string& theName)
{
   const auto aModel = std::find_if(QueryModels().begin(), QueryModels().end(),
                                    [&](const QueryModel& theModel) { return theModel.itsName == theName; });
   return aModel != QueryModels().end() ? *aModel : throw std::invalid_argument("no model " + theName);
}

const std::vector<std::string>& QueryLevelNames()
{
   static const std::vector<std::string> aNames = {"patient", "study", "series", "image"};
   return aNames;
}

QueryLevel QueryLevelNamed(const std::string& theName)
{
   const auto aLevel = std::find(QueryLevelNames().begin(), QueryLevelNames().end(), theName);
   return static_cast<QueryLevel>(aLevel - QueryLevelNames().begin());
}

const char* QueryLevelText(QueryLevel theLevel)
{
   return LevelOf(theLevel).itsText;
}

UINT32 UniqueKeyOf(QueryLevel theLevel)
{
   return LevelOf(theLevel).itsUniqueKey;
}

std::vector<const char*> DefaultKeys(const QueryModel& theModel, QueryLevel theLevel)
{
   std::vector<const char*> aKeys;
   for (int i = static_cast<int>(theModel.itsFirst); i < static_cast<int>(theLevel); ++i)
   {
      aKeys.push_back(Levels()[static_cast<std::size_t>(i)].itsKeys.back());
   }
   if (theLevel == QueryLevel::Study && theModel.itsFirst == QueryLevel::Study)
   {
      aKeys.insert(aKeys.end(), std::begin(kPatientKeysOfStudies), std::end(kPatientKeysOfStudies));
   }
   const std::vector<const char*>& anOwn = LevelOf(theLevel).itsKeys;
   aKeys.insert(aKeys.end(), anOwn.begin(), anOwn.end());
   return aKeys;
}

#include "talvenor/services/InformationModel.h"

#include "talvenor/dictionary/UID.h"

namespace
{
struct Row
{
   const char* itsSOPClass;
   InformationModel itsModel;
};

constexpr Row kQueries[] = {
    {QuerySOPClass::kPatientRoot, PatientRootModel},
    {QuerySOPClass::kStudyRoot, StudyRootModel},
    {QuerySOPClass::kPatientStudyOnly, PatientStudyOnlyModel},
    {QuerySOPClass::kModalityWorklist, ModalityWorklistModel},
};

constexpr Row kRetrieves[] = {
    {RetrieveSOPClass::kPatientRoot, PatientRootModel},
    {RetrieveSOPClass::kStudyRoot, StudyRootModel},
    {RetrieveSOPClass::kPatientStudyOnly, PatientStudyOnlyModel},
};

template <class Rows>
InformationModel Find(const Rows& theRows, const UID& theSOPClass)
{
   for (const Row& aRow : theRows)
   {
      if (theSOPClass == aRow.itsSOPClass)
      {
         return aRow.itsModel;
      }
   }
   return NoInformationModel;
}
} // namespace

InformationModel FindQueryModel(const UID& theSOPClass)
{
   return Find(kQueries, theSOPClass);
}

InformationModel FindRetrieveModel(const UID& theSOPClass)
{
   return Find(kRetrieves, theSOPClass);
}

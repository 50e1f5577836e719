// The queries: one class for each information model. See StandardQuery. A host derives from one and overrides DoQuery
// and CFindProgressCallback.
#pragma once

#include "talvenor/dictionary/UID.h"
#include "talvenor/services/StandardQuery.h"

template <const char* SOPClass>
class QueryOf : public StandardQuery
{
public:
   int uGetUID(UID& theUID) const override
   {
      theUID.Set(SOPClass, -1);
      return 1;
   }
};

class TALVENOR_API PatientRootQuery : public QueryOf<QuerySOPClass::kPatientRoot>
{};
class TALVENOR_API StudyRootQuery : public QueryOf<QuerySOPClass::kStudyRoot>
{};
class TALVENOR_API PatientStudyOnlyQuery : public QueryOf<QuerySOPClass::kPatientStudyOnly>
{};

// Scheduled procedure steps (PS3.4 K.6.1): no levels, one match a step.
class TALVENOR_API ModalityWorklistQuery : public StandardQuery
{
public:
   int GetUID(UID& theUID) const override
   {
      theUID.Set(QuerySOPClass::kModalityWorklist, -1);
      return 1;
   }
   int uGetUID(UID& theUID) const override { return GetUID(theUID); }

   int Write(PDU_Service& theService, DICOMDataObject& theIdentifier)
   {
      return StandardQuery::Write(theService, theIdentifier);
   }
   int Read(PDU_Service& theService, const DICOMCommandObject& theCommand, UINT16& theStatus,
            RWCString& theErrorComment, unsigned int& theMatchCount)
   {
      return StandardQuery::Read(theService, theCommand, theStatus, theErrorComment, theMatchCount);
   }
};

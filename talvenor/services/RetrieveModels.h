// The retrieves: one class for each information model. See StandardRetrieve. A host derives from one and overrides the
// hooks of the role that it plays.
#pragma once

#include "talvenor/dictionary/UID.h"
#include "talvenor/services/StandardRetrieve.h"

template <const char* SOPClass>
class RetrieveOf : public StandardRetrieve
{
public:
   int uGetUID(UID& theUID) const override
   {
      theUID.Set(SOPClass, -1);
      return 1;
   }
};

class TALVENOR_API PatientRootRetrieve : public RetrieveOf<RetrieveSOPClass::kPatientRoot>
{};
class TALVENOR_API StudyRootRetrieve : public RetrieveOf<RetrieveSOPClass::kStudyRoot>
{};
class TALVENOR_API PatientStudyOnlyRetrieve : public RetrieveOf<RetrieveSOPClass::kPatientStudyOnly>
{};

// The N-DELETE response (PS3.7 10.3.6). DIMSE_N_Services.h tells what its operations do.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class MAttributeTag;
class PDU_Service;
class UID;

class TALVENOR_API NDeleteRSP
{
public:
   virtual int GetUID(UID& theUID) const = 0;

   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance, UINT16 theStatus,
             const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending) const;
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
             UINT16 theStatus) const;

   // TN_UNEXPECTED_DATASET when theCommand announces a data set.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService) const;

protected:
   ~NDeleteRSP() = default;
};

// The N-EVENT-REPORT response (PS3.7 10.3.1). DIMSE_N_Services.h tells what its operations do.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class DICOMDataObject;
class MAttributeTag;
class PDU_Service;
class UID;

class TALVENOR_API NEventReportRSP
{
public:
   virtual int GetUID(UID& theUID) const = 0;

   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
             DICOMDataObject& theAttributes, UINT16 theEventTypeID, UINT16 theStatus, const RWCString& theErrorComment,
             const RWTValOrderedVector<MAttributeTag>& theOffending) const;
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
             UINT16 theEventTypeID, UINT16 theStatus, const RWCString& theErrorComment,
             const RWTValOrderedVector<MAttributeTag>& theOffending) const;
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
             DICOMDataObject& theAttributes, UINT16 theEventTypeID, UINT16 theStatus) const;
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
             UINT16 theEventTypeID, UINT16 theStatus) const;

   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theAttributes) const;

protected:
   int WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                    UINT16 theEventTypeID, UINT16 theStatus, const RWCString& theErrorComment,
                    const RWTValOrderedVector<MAttributeTag>& theOffending, UINT16 theDataSetType,
                    UID& theSOPClass) const;

   ~NEventReportRSP() = default;
};

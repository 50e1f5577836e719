// The N-EVENT-REPORT response (PS3.7 10.3.1). See DIMSE_N_Services.h for what the messages have in common.
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
   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Answers theRequest on the current context, in the name of the SOP class that the request names, with attributes or
   // without. The comment and the tags of the elements that caused a failure are left out when they are empty, as in
   // the short forms. TN_SOP_CLASS_UNSUPPORTED when the service has no SOP class.
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

   // Whether theCommand is this response, whatever its status. Replaces the contents of theAttributes by the data set
   // that follows it; without one, theAttributes is unchanged. TN_COMMAND_NOT_SUPPORTED when it is another message.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theAttributes) const;

protected:
   // Sends the command set alone. theDataSetType is 0x0102 when a data set will follow, which keeps the PDU open, and
   // 0x0101 otherwise. theSOPClass is set to what the message names.
   int WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                    UINT16 theEventTypeID, UINT16 theStatus, const RWCString& theErrorComment,
                    const RWTValOrderedVector<MAttributeTag>& theOffending, UINT16 theDataSetType,
                    UID& theSOPClass) const;

   ~NEventReportRSP() = default; // no virtual destructor: nobody owns a service through one of its messages
};

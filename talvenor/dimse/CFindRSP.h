// The C-FIND response (PS3.7 9.3.2.2), one for each match and a last one. See DIMSE_C_Services.h for what the messages
// have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class DICOMDataObject;
class MAttributeTag;
class PDU_Service;
class UID;

class TALVENOR_API CFindRSP
{
public:
   virtual ~CFindRSP();

   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Answers theRequest on the current context, in the name of the SOP class that the request names, with a match or
   // without. The comment and the tags of the elements that caused a failure are left out when they are empty.
   // TN_SOP_CLASS_UNSUPPORTED when the service has no SOP class; without a match, TN_INVALID_ARGUMENT for a pending
   // status (0xFF00, 0xFF01).
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
             const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending,
             DICOMDataObject& theIdentifier) const;
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
             const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending) const;

   // Succeeds without touching theIdentifier when theCommand announces no data set, and replaces its contents by the
   // data set otherwise. The status is left to the caller. TN_COMMAND_NOT_SUPPORTED when theCommand is another message.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theIdentifier) const;

protected:
   // Sends the command set alone. theDataSetType is 0x0102 when an identifier will follow, which keeps the PDU open,
   // and 0x0101 otherwise. theSOPClass is set to what the response names.
   int WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                    const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending,
                    UINT16 theDataSetType, UID& theSOPClass) const;
};

// The N-CREATE request (PS3.7 10.3.5). See DIMSE_N_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class DICOMDataObject;
class PDU_Service;
class UID;

class TALVENOR_API NCreateRQ
{
public:
   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Sends the request, with the attributes of the new instance or without. TN_SOP_CLASS_UNSUPPORTED when there is no
   // SOP class.
   int Write(PDU_Service& theService, DICOMDataObject& theAttributeList, const UID& theInstance) const;
   int Write(PDU_Service& theService, const UID& theInstance) const;

   // Whether theCommand is this request, with a data set, by which the contents of theAttributeList are replaced. 0
   // without a result code when it is another message or has no data set.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theAttributeList) const;

protected:
   // Sends the command set alone. theDataSetType is 0x0102 when a data set will follow, which keeps the PDU open, and
   // 0x0101 otherwise. theSOPClass is set to what the message names.
   int WriteCommand(PDU_Service& theService, const UID& theInstance, UINT16 theDataSetType, UID& theSOPClass) const;

   ~NCreateRQ() = default; // no virtual destructor: nobody owns a service through one of its messages
};

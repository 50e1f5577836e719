// The N-SET request (PS3.7 10.3.3). See DIMSE_N_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class DICOMDataObject;
class PDU_Service;
class UID;

class TALVENOR_API NSetRQ
{
public:
   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Sends the request and the attributes to change. TN_SOP_CLASS_UNSUPPORTED when there is no SOP class.
   int Write(PDU_Service& theService, DICOMDataObject& theModificationList, const UID& theInstance) const;

   // Whether theCommand is this request, with the data set that it must have, by which the contents of
   // theModificationList are replaced. 0 without a result code when it is another message or has no data set.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theModificationList) const;

protected:
   ~NSetRQ() = default; // no virtual destructor: nobody owns a service through one of its messages
};

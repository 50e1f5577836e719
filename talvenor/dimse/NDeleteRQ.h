// The N-DELETE request (PS3.7 10.3.6). See DIMSE_N_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class PDU_Service;
class UID;

class TALVENOR_API NDeleteRQ
{
public:
   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Sends the request. TN_SOP_CLASS_UNSUPPORTED when there is no SOP class.
   int Write(PDU_Service& theService, const UID& theInstance) const;

   // Whether theCommand is this request. 0 without a result code when it is another message, TN_UNEXPECTED_DATASET when
   // it announces a data set.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService) const;

protected:
   ~NDeleteRQ() = default; // no virtual destructor: nobody owns a service through one of its messages
};

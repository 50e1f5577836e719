// The N-DELETE response (PS3.7 10.3.6). See DIMSE_N_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class MAttributeTag;
class PDU_Service;
class UID;

class TALVENOR_API NDeleteRSP
{
public:
   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Answers theRequest on the current context, in the name of the SOP class that the request names. The comment and
   // the tags of the elements that caused a failure are left out when they are empty, as in the short form.
   // TN_SOP_CLASS_UNSUPPORTED when the service has no SOP class.
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance, UINT16 theStatus,
             const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending) const;
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
             UINT16 theStatus) const;

   // Whether theCommand is this response, whatever its status. TN_COMMAND_NOT_SUPPORTED when it is another message,
   // TN_UNEXPECTED_DATASET when it announces a data set.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService) const;

protected:
   ~NDeleteRSP() = default; // no virtual destructor: nobody owns a service through one of its messages
};

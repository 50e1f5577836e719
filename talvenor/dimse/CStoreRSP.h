// The C-STORE response (PS3.7 9.3.1.2). See DIMSE_C_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class MAttributeTag;
class PDU_Service;
class UID;

class TALVENOR_API CStoreRSP
{
public:
   virtual ~CStoreRSP();

   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Answers theRequest on the current context, in the name of the SOP class and the instance that the request names.
   // The comment and the tags of the elements that caused a failure are left out when they are empty.
   // TN_NO_SOP_CLASS_UID when neither the service nor the request has a SOP class.
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
             const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending) const;

   // Whether theCommand is this response, whatever its status. Sets no result code.
   int Read(const DICOMCommandObject& theCommand) const;
};

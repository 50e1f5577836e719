// The C-ECHO request (PS3.7 9.3.5.1). See DIMSE_C_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class PDU_Service;
class UID;

class TALVENOR_API CEchoRQ
{
public:
   virtual ~CEchoRQ();

   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Sends the request on a context of the SOP class. TN_SOP_CLASS_UNSUPPORTED when there is no SOP class.
   int Write(PDU_Service& theService) const;

   // An addition: the same, and tells the Message ID that the response has to name. 0 when none was taken.
   int Write(PDU_Service& theService, UINT16& theMessageID) const;

   // Whether theCommand is this request. Sets no result code, so that several messages can be tried in turn.
   int Read(const DICOMCommandObject& theCommand) const;
};

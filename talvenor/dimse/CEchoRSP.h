// The C-ECHO response (PS3.7 9.3.5.2). See DIMSE_C_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class PDU_Service;
class UID;

class TALVENOR_API CEchoRSP
{
public:
   virtual ~CEchoRSP();

   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Answers theRequest on the current context, in the name of the SOP class that the request names.
   // TN_SOP_CLASS_UNSUPPORTED when the service has no SOP class.
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus) const;

   // Whether theCommand is this response, whatever its status. Sets no result code.
   int Read(const DICOMCommandObject& theCommand) const;
};

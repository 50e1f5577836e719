// The C-FIND request (PS3.7 9.3.2.1). See DIMSE_C_Services.h for what the messages have in common.
#pragma once

#include "talvenor/Export.h"

class DICOMCommandObject;
class DICOMDataObject;
class PDU_Service;
class UID;

class TALVENOR_API CFindRQ
{
public:
   virtual ~CFindRQ();

   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Sends the request and what to look for on a context of the SOP class. TN_SOP_CLASS_UNSUPPORTED when there is no
   // SOP class.
   int Write(PDU_Service& theService, DICOMDataObject& theIdentifier) const;

   // Replaces the contents of theIdentifier by the data set that follows theCommand. TN_COMMAND_NOT_SUPPORTED when
   // theCommand is another message, TN_DATASET_MISSING when it announces no data set; theIdentifier is unchanged then.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theIdentifier) const;
};

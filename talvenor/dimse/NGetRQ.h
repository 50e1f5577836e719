// The N-GET request (PS3.7 10.3.2). See DIMSE_N_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class DICOMDataObject;
class PDU_Service;
class UID;

class TALVENOR_API NGetRQ
{
public:
   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Asks for the attributes that theAttributeList has elements of, whatever their values; an empty one asks for an
   // empty list. TN_SOP_CLASS_UNSUPPORTED when there is no SOP class.
   int Write(PDU_Service& theService, DICOMDataObject& theAttributeList, const UID& theInstance) const;

   // Whether theCommand is this request. Replaces the contents of theAttributeList by an empty element for each
   // attribute that is asked for, typed by the dictionary; it is unchanged when theCommand has no list, which asks for
   // all. 0 without a result code when it is another message.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theAttributeList) const;

protected:
   ~NGetRQ() = default; // no virtual destructor: nobody owns a service through one of its messages
};

// The messages of the boxes that come with a film box, for images and annotations: they are only changed (PS3.4 H.4.3,
// H.4.4), in both roles.
//
// Operations return non-zero for success and 0 for failure. Those of an SCU send one request, wait for its response and
// tell theMeta of failures (AbstractPrintManagementMeta::ErrorCallback), which may let the operation go on. An event
// report that comes in place of the response is handled, and the operation succeeds without its response.
//
// Those of an SCP take a command that has been read. When it names another SOP class than this one, or no instance, or
// its data set cannot be read, they return 0 and send nothing. The form without theDecision answers with Success; the
// other one accepts a request without data set, where the message may have none, and answers what theDecision says: its
// result is 1 when the request was carried out and the answer sent.
#pragma once

#include "talvenor/dimse/NSetRQ.h"
#include "talvenor/dimse/NSetRSP.h"
#include "talvenor/print/PrintAnswer.h"

class AbstractPrintManagementMeta;

class TALVENOR_API StandardBox : public NSetRQ, public NSetRSP
{
public:
   int GetUID(UID& theUID) const override; // from uGetUID
   virtual int uGetUID(UID& theUID) const = 0;
   virtual ~StandardBox();

   int Write(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theBox,
             AbstractPrintManagementMeta& theMeta) const;

   int Read(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget) const;
   int Read(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
            const PrintDecision& theDecision) const;
};

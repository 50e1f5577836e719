// The messages of the boxes that exist for themselves and are referenced by others, overlays and look-up tables:
// created, changed and deleted (PS3.4 H.4.9), in both roles.
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

#include "talvenor/dimse/NCreateRQ.h"
#include "talvenor/dimse/NCreateRSP.h"
#include "talvenor/dimse/NDeleteRQ.h"
#include "talvenor/dimse/NDeleteRSP.h"
#include "talvenor/dimse/NSetRQ.h"
#include "talvenor/dimse/NSetRSP.h"
#include "talvenor/print/PrintAnswer.h"

class AbstractPrintManagementMeta;

class TALVENOR_API StandardAdvancedBox : public NSetRQ,
                                         public NSetRSP,
                                         public NCreateRQ,
                                         public NCreateRSP,
                                         public NDeleteRQ,
                                         public NDeleteRSP
{
public:
   int GetUID(UID& theUID) const override; // from uGetUID
   virtual int uGetUID(UID& theUID) const = 0;
   virtual ~StandardAdvancedBox();

   // theInstance, made when it is empty, becomes the one of the response; the attributes of the response are merged
   // into theDataset. An empty theDataset is not sent.
   int WriteCreate(PDU_Service& theService, UID& theInstance, DICOMDataObject& theDataset,
                   AbstractPrintManagementMeta& theMeta) const;
   int WriteSet(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theDataset,
                AbstractPrintManagementMeta& theMeta) const;
   int WriteDelete(PDU_Service& theService, const UID& theInstance, AbstractPrintManagementMeta& theMeta) const;

   int ReadCreate(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget) const;
   int ReadCreate(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
                  const PrintDecision& theDecision) const;
   int ReadSet(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget) const;
   int ReadSet(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
               const PrintDecision& theDecision) const;
   int ReadDelete(PDU_Service& theService, const DICOMCommandObject& theRequest) const;
};

// The messages of printer and print job: asked for their attributes, and reporting events (PS3.4 H.4.5, H.4.6), in both
// roles.
//
// Operations return non-zero for success and 0 for failure. WriteGet and WriteEventReport send one request, wait for
// its response and tell theMeta of failures (AbstractPrintManagementMeta::ErrorCallback). The others take a command
// that has been read; when it is not for this SOP class, or for another instance, they return 0 and send nothing.
#pragma once

#include "talvenor/dimse/NEventReportRQ.h"
#include "talvenor/dimse/NEventReportRSP.h"
#include "talvenor/dimse/NGetRQ.h"
#include "talvenor/dimse/NGetRSP.h"

class AbstractPrintManagementMeta;

class TALVENOR_API StandardStatus : public NGetRQ, public NGetRSP, public NEventReportRQ, public NEventReportRSP
{
public:
   int GetUID(UID& theUID) const override; // from uGetUID
   virtual int uGetUID(UID& theUID) const = 0;
   virtual ~StandardStatus();

   // SCU: asks for the attributes that theAttributes has elements of, and replaces its contents by those of the
   // response.
   int WriteGet(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theAttributes,
                AbstractPrintManagementMeta& theMeta) const;

   // SCP: reports an event of the instance to a client, and waits for its response. A request of the client that comes
   // meanwhile is lost: a host whose clients go on calls NEventReportRQ::Write instead, and takes the response
   // (NEventReportRSP::Read) among the commands that it reads.
   int WriteEventReport(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theInformation,
                        UINT16 theEventTypeID, AbstractPrintManagementMeta& theMeta) const;

   // SCP: answers with those of theSource that are asked for, or all; with the warning 0x0107 and their tags when it
   // lacks some.
   int ReadGet(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theSource) const;

   // SCU: takes an event report of theInstance, or of any instance when that is empty, fills theInformation and answers
   // at once with Success. The result is that of the answer.
   int ReadEventReport(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theInformation,
                       const UID& theInstance) const;
};

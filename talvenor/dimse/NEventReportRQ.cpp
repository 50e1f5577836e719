#include "talvenor/dimse/NEventReportRQ.h"

#include "talvenor/dimse/NMessage.h"

int NEventReportRQ::Write(PDU_Service& theService, DICOMDataObject& theEventInformation, const UID& theInstance,
                          UINT16 theEventTypeID) const
{
   UID aSOPClass;
   return WriteCommand(theService, theInstance, theEventTypeID, DataSetType::kDataset, aSOPClass) &&
          SendNRequestDataset(kNEventReport, theService, aSOPClass, theEventInformation);
}

int NEventReportRQ::Write(PDU_Service& theService, const UID& theInstance, UINT16 theEventTypeID) const
{
   UID aSOPClass;
   return WriteCommand(theService, theInstance, theEventTypeID, DataSetType::kNoDataset, aSOPClass);
}

int NEventReportRQ::WriteCommand(PDU_Service& theService, const UID& theInstance, UINT16 theEventTypeID,
                                 UINT16 theDataSetType, UID& theSOPClass) const
{
   const NRequest aRequest = {theInstance, theDataSetType, theEventTypeID, nullptr, kNWriteCommand};
   return WriteNRequest(*this, kNEventReport, theService, aRequest, theSOPClass);
}

int NEventReportRQ::Read(const DICOMCommandObject& theCommand, PDU_Service& theService,
                         DICOMDataObject& theEventInformation) const
{
   return ReadNRequest(kNEventReport, theCommand, theService, theEventInformation, 1);
}

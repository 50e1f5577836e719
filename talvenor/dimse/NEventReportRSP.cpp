#include "talvenor/dimse/NEventReportRSP.h"

#include "talvenor/dimse/NMessage.h"

int NEventReportRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                           DICOMDataObject& theAttributes, UINT16 theEventTypeID, UINT16 theStatus,
                           const RWCString& theErrorComment,
                           const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   UID aSOPClass;
   return WriteCommand(theService, theRequest, theInstance, theEventTypeID, theStatus, theErrorComment, theOffending,
                       DataSetType::kDataset, aSOPClass) &&
          SendNResponseDataset(kNEventReport, theService, theAttributes);
}

int NEventReportRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                           UINT16 theEventTypeID, UINT16 theStatus, const RWCString& theErrorComment,
                           const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   UID aSOPClass;
   return WriteCommand(theService, theRequest, theInstance, theEventTypeID, theStatus, theErrorComment, theOffending,
                       DataSetType::kNoDataset, aSOPClass);
}

int NEventReportRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                           DICOMDataObject& theAttributes, UINT16 theEventTypeID, UINT16 theStatus) const
{
   return Write(theService, theRequest, theInstance, theAttributes, theEventTypeID, theStatus, "", {});
}

int NEventReportRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                           UINT16 theEventTypeID, UINT16 theStatus) const
{
   return Write(theService, theRequest, theInstance, theEventTypeID, theStatus, "", {});
}

int NEventReportRSP::WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                                  UINT16 theEventTypeID, UINT16 theStatus, const RWCString& theErrorComment,
                                  const RWTValOrderedVector<MAttributeTag>& theOffending, UINT16 theDataSetType,
                                  UID& theSOPClass) const
{
   const NResponse aResponse = {theRequest,   theInstance,    theStatus,     theErrorComment,
                                theOffending, theDataSetType, theEventTypeID};
   return WriteNResponse(*this, kNEventReport, theService, aResponse, theSOPClass);
}

int NEventReportRSP::Read(const DICOMCommandObject& theCommand, PDU_Service& theService,
                          DICOMDataObject& theAttributes) const
{
   return ReadNResponse(kNEventReport, theCommand, theService, theAttributes);
}

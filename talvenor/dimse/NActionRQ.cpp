#include "talvenor/dimse/NActionRQ.h"

#include "talvenor/dimse/NMessage.h"

int NActionRQ::Write(PDU_Service& theService, DICOMDataObject& theActionInformation, const UID& theInstance,
                     UINT16 theActionTypeID) const
{
   UID aSOPClass;
   return WriteCommand(theService, theInstance, theActionTypeID, DataSetType::kDataset, aSOPClass) &&
          SendNRequestDataset(kNAction, theService, aSOPClass, theActionInformation);
}

int NActionRQ::Write(PDU_Service& theService, const UID& theInstance, UINT16 theActionTypeID) const
{
   UID aSOPClass;
   return WriteCommand(theService, theInstance, theActionTypeID, DataSetType::kNoDataset, aSOPClass);
}

int NActionRQ::WriteCommand(PDU_Service& theService, const UID& theInstance, UINT16 theActionTypeID,
                            UINT16 theDataSetType, UID& theSOPClass) const
{
   const NRequest aRequest = {theInstance, theDataSetType, theActionTypeID, nullptr, kNWriteCommand};
   return WriteNRequest(*this, kNAction, theService, aRequest, theSOPClass);
}

int NActionRQ::Read(const DICOMCommandObject& theCommand, PDU_Service& theService,
                    DICOMDataObject& theActionInformation) const
{
   return ReadNRequest(kNAction, theCommand, theService, theActionInformation, 1);
}

#include "talvenor/dimse/NCreateRQ.h"

#include "talvenor/dimse/NMessage.h"

int NCreateRQ::Write(PDU_Service& theService, DICOMDataObject& theAttributeList, const UID& theInstance) const
{
   UID aSOPClass;
   return WriteCommand(theService, theInstance, DataSetType::kDataset, aSOPClass) &&
          SendNRequestDataset(kNCreate, theService, aSOPClass, theAttributeList);
}

int NCreateRQ::Write(PDU_Service& theService, const UID& theInstance) const
{
   UID aSOPClass;
   return WriteCommand(theService, theInstance, DataSetType::kNoDataset, aSOPClass);
}

int NCreateRQ::WriteCommand(PDU_Service& theService, const UID& theInstance, UINT16 theDataSetType,
                            UID& theSOPClass) const
{
   const NRequest aRequest = {theInstance, theDataSetType, 0, nullptr, kNWriteCommand};
   return WriteNRequest(*this, kNCreate, theService, aRequest, theSOPClass);
}

int NCreateRQ::Read(const DICOMCommandObject& theCommand, PDU_Service& theService,
                    DICOMDataObject& theAttributeList) const
{
   return ReadNRequest(kNCreate, theCommand, theService, theAttributeList, 0);
}

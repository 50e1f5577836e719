#include "talvenor/dimse/NSetRQ.h"

#include "talvenor/dimse/NMessage.h"

int NSetRQ::Write(PDU_Service& theService, DICOMDataObject& theModificationList, const UID& theInstance) const
{
   UID aSOPClass;
   return WriteNRequest(*this, kNSet, theService, {theInstance, DataSetType::kDataset}, aSOPClass) &&
          SendNRequestDataset(kNSet, theService, aSOPClass, theModificationList);
}

int NSetRQ::Read(const DICOMCommandObject& theCommand, PDU_Service& theService,
                 DICOMDataObject& theModificationList) const
{
   return ReadNRequest(kNSet, theCommand, theService, theModificationList, 0);
}

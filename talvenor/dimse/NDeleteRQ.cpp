#include "talvenor/dimse/NDeleteRQ.h"

#include "talvenor/dimse/NMessage.h"

int NDeleteRQ::Write(PDU_Service& theService, const UID& theInstance) const
{
   UID aSOPClass;
   return WriteNRequest(*this, kNDelete, theService, {theInstance}, aSOPClass);
}

int NDeleteRQ::Read(const DICOMCommandObject& theCommand, PDU_Service& theService) const
{
   return RecogniseNRequest(kNDelete, theCommand) && RefuseDataset(theCommand, theService);
}

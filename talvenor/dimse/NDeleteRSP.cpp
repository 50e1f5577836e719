#include "talvenor/dimse/NDeleteRSP.h"

#include "talvenor/dimse/NMessage.h"

int NDeleteRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                      UINT16 theStatus, const RWCString& theErrorComment,
                      const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   const NResponse aResponse = {
       theRequest, theInstance, theStatus, theErrorComment, theOffending, DataSetType::kNoDataset, 0, kNWrite};
   UID aSOPClass;
   return WriteNResponse(*this, kNDelete, theService, aResponse, aSOPClass);
}

int NDeleteRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                      UINT16 theStatus) const
{
   return Write(theService, theRequest, theInstance, theStatus, "", {});
}

int NDeleteRSP::Read(const DICOMCommandObject& theCommand, PDU_Service& theService) const
{
   return RequireNResponse(kNDelete, theCommand, theService) && RefuseDataset(theCommand, theService);
}

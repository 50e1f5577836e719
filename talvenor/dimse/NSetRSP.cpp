#include "talvenor/dimse/NSetRSP.h"

#include "talvenor/dimse/NMessage.h"

int NSetRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                   DICOMDataObject& theAttributes, UINT16 theStatus, const RWCString& theErrorComment,
                   const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   UID aSOPClass;
   return WriteCommand(theService, theRequest, theInstance, theStatus, theErrorComment, theOffending,
                       DataSetType::kDataset, aSOPClass) &&
          SendNResponseDataset(kNSet, theService, theAttributes);
}

int NSetRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                   UINT16 theStatus, const RWCString& theErrorComment,
                   const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   UID aSOPClass;
   return WriteCommand(theService, theRequest, theInstance, theStatus, theErrorComment, theOffending,
                       DataSetType::kNoDataset, aSOPClass);
}

int NSetRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                   DICOMDataObject& theAttributes, UINT16 theStatus) const
{
   return Write(theService, theRequest, theInstance, theAttributes, theStatus, "", {});
}

int NSetRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                   UINT16 theStatus) const
{
   return Write(theService, theRequest, theInstance, theStatus, "", {});
}

int NSetRSP::WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                          UINT16 theStatus, const RWCString& theErrorComment,
                          const RWTValOrderedVector<MAttributeTag>& theOffending, UINT16 theDataSetType,
                          UID& theSOPClass) const
{
   const NResponse aResponse = {theRequest, theInstance, theStatus, theErrorComment, theOffending, theDataSetType};
   return WriteNResponse(*this, kNSet, theService, aResponse, theSOPClass);
}

int NSetRSP::Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theAttributes) const
{
   return ReadNResponse(kNSet, theCommand, theService, theAttributes);
}

#include "talvenor/dimse/NActionRSP.h"

#include "talvenor/dimse/NMessage.h"

int NActionRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                      DICOMDataObject& theAttributes, UINT16 theActionTypeID, UINT16 theStatus,
                      const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   UID aSOPClass;
   return WriteCommand(theService, theRequest, theInstance, theActionTypeID, theStatus, theErrorComment, theOffending,
                       DataSetType::kDataset, aSOPClass) &&
          SendNResponseDataset(kNAction, theService, theAttributes);
}

int NActionRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                      UINT16 theActionTypeID, UINT16 theStatus, const RWCString& theErrorComment,
                      const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   UID aSOPClass;
   return WriteCommand(theService, theRequest, theInstance, theActionTypeID, theStatus, theErrorComment, theOffending,
                       DataSetType::kNoDataset, aSOPClass);
}

int NActionRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                      DICOMDataObject& theAttributes, UINT16 theActionTypeID, UINT16 theStatus) const
{
   return Write(theService, theRequest, theInstance, theAttributes, theActionTypeID, theStatus, "", {});
}

int NActionRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                      UINT16 theActionTypeID, UINT16 theStatus) const
{
   return Write(theService, theRequest, theInstance, theActionTypeID, theStatus, "", {});
}

int NActionRSP::WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, const UID& theInstance,
                             UINT16 theActionTypeID, UINT16 theStatus, const RWCString& theErrorComment,
                             const RWTValOrderedVector<MAttributeTag>& theOffending, UINT16 theDataSetType,
                             UID& theSOPClass) const
{
   const NResponse aResponse = {theRequest,   theInstance,    theStatus,      theErrorComment,
                                theOffending, theDataSetType, theActionTypeID};
   return WriteNResponse(*this, kNAction, theService, aResponse, theSOPClass);
}

int NActionRSP::Read(const DICOMCommandObject& theCommand, PDU_Service& theService,
                     DICOMDataObject& theAttributes) const
{
   return ReadNResponse(kNAction, theCommand, theService, theAttributes);
}

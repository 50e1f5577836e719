// The C-STORE request (PS3.7 9.3.1.1). See DIMSE_C_Services.h for what the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class AETitle;
class DICOMCommandObject;
class DICOMDataObject;
class InputTransferSyntax;
class PDU_Service;
class UID;

class TALVENOR_API CStoreRQ
{
public:
   virtual ~CStoreRQ();

   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Sends the request and theDataset, on the context with theContextID or, when that is 0, on one of the SOP class.
   // The originator of a C-MOVE that this belongs to is named when its title is not null, its message when the ID is
   // not 0.
   //
   // TN_SOP_CLASS_UNSUPPORTED when there is no SOP class, TN_NO_SOP_CLASS_UID, TN_SOP_CLASS_MISMATCH or
   // TN_NO_SOP_INSTANCE_UID when the dataset lacks one, has another or lacks its instance UID: nothing is sent then.
   int Write(PDU_Service& theService, DICOMDataObject& theDataset, const AETitle& theMoveOriginator,
             UINT16 theMoveOriginatorMessageID, unsigned char theContextID) const;

   // Fills theCommand without sending it, for a data set that is streamed. theSOPClass has to be that of the service
   // (TN_SOP_CLASS_MISMATCH). The originator's title and message ID are added together, when the title is not null.
   int Compose(DICOMCommandObject& theCommand, PDU_Service& theService, const UID& theSOPClass,
               const UID& theSOPInstance, UINT16 theMoveOriginatorMessageID, const AETitle& theMoveOriginator) const;

   // A decoder on the data set that follows theCommand, owned by the caller. Null with TN_COMMAND_NOT_SUPPORTED when
   // theCommand is another message, and with TN_DATASET_MISSING when it announces no data set.
   InputTransferSyntax* GetDatasetInputTransferSyntax(const DICOMCommandObject& theCommand,
                                                      PDU_Service& theService) const;

   // Replaces the contents of theDataset by the data set that follows theCommand. Fails as
   // GetDatasetInputTransferSyntax does; theDataset is unchanged then.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theDataset) const;
};

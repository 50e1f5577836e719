// The Storage service class (PS3.4 B), base of the classes for single SOP classes (StorageClasses.h). C-STORE in both
// roles, on an association that is established before.
//
// As SCU either a whole dataset, or one that is streamed and never held:
//
//    OutputTransferSyntax& anOutput =
//       aStorage.GetDatasetOutputTransferSyntax(aService, anID, aClass, anInstance, 0, "");
//    while (VR* aVR = aSource.NextVR()) anOutput.SaveVR(aVR);
//    aStorage.FinishDatasetTransmission();
//    if (aStorage.ReadResponse(aService, aResponse)) ...
//
// As SCP a host derives and says in DoStore what to do with an instance:
//
//    if (aService.ReadCommand(aCommand)) aStorage.Read(aService, aCommand, aDataset);
//
// Write and Read return non-zero for success and 0 for failure, with the cause in PDU_Service::GetResultCode; none ends
// the association of itself. The operations of a streamed transmission throw StreamIOException. One object serves one
// association at a time; the service of a transmission must outlive it. A copy starts without a transmission.
#pragma once

#include <memory>

#include "talvenor/dimse/CStoreRQ.h"
#include "talvenor/dimse/CStoreRSP.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMMessageOutputStream;
class OutputStream;
class OutputTransferSyntax;
class UsablePresentationContext;

class TALVENOR_API StandardStorage : public CStoreRQ, public CStoreRSP
{
public:
   StandardStorage();
   StandardStorage(const StandardStorage& theOther);
   StandardStorage& operator=(const StandardStorage& theOther); // finishes a transmission of this object
   ~StandardStorage() override; // finishes a transmission, and says nothing when that fails

   // The SOP class, from uGetUID.
   int GetUID(UID& theUID) const override;

   // The host's hook: an instance has been announced. Reads it from theInput, into theDataset or elsewhere, and stores
   // it; what is left unread is skipped. Non-zero is answered with Success, whatever else was set; 0 with theStatus, or
   // 0xC006 where that is still 0, with theErrorComment and the tags of the elements at fault. An exception is answered
   // with 0xC006. thePeerTitle comes without padding; thePeerHost is the peer's name or address.
   virtual int DoStore(DICOMDataObject& theDataset, InputTransferSyntax& theInput, const RWCString& thePeerTitle,
                       const RWCString& thePeerHost, UINT16& theStatus, RWCString& theErrorComment,
                       RWTValOrderedVector<MAttributeTag>& theOffending) = 0;

   // Sets the SOP class and returns 1; 0 when every class is served.
   virtual int uGetUID(UID& theUID) const = 0;

   // Sends theDataset and waits for the answer. 1 for Success and the warnings 0xB000, 0xB006 and 0xB007; another
   // status leaves the result code as it was. TN_NO_STATUS when there is none.
   int Write(PDU_Service& theService, DICOMDataObject& theDataset) const;

   // The same on a context of the caller's choice, or any of the SOP class for ID 0; the status is the caller's.
   // TN_COMMAND_NOT_SUPPORTED when another message comes.
   int Write(PDU_Service& theService, DICOMDataObject& theDataset, DICOMCommandObject& theResponse,
             unsigned char theContextID) const;

   // The answer to a streamed transmission, likewise.
   int ReadResponse(PDU_Service& theService, DICOMCommandObject& theResponse) const;

   // Sends a request and returns the encoder for its data set, lent until the transmission ends. One that is in
   // progress is finished first. Throws with TN_INTERNAL_ERROR for a context that is not usable, with
   // TN_TRANSFER_SYNTAX_UNSUPPORTED for one in a syntax that is not registered, and with the cause when the request
   // cannot be sent.
   OutputTransferSyntax& GetDatasetOutputTransferSyntax(PDU_Service& theService, unsigned char theContextID,
                                                        const UID& theSOPClass, const UID& theSOPInstance,
                                                        UINT16 theMoveOriginatorMessageID,
                                                        const AETitle& theMoveOriginator);

   // An addition: the same for a data set that is encoded already. What is written to the stream is the data set, in
   // the transfer syntax of the context, which need not be registered: a file's bytes go out as they are.
   OutputStream& GetDatasetOutputStream(PDU_Service& theService, unsigned char theContextID, const UID& theSOPClass,
                                        const UID& theSOPInstance, UINT16 theMoveOriginatorMessageID,
                                        const AETitle& theMoveOriginator);

   // An addition: the message ID of the last streamed request, to which the answer refers.
   UINT16 GetMessageID() const { return itsMessageID; }

   // Ends a transmission; the data set is on its way then. Without one it does nothing. Throws what sending throws, and
   // the transmission is over all the same.
   void FinishDatasetTransmission();

   // Takes a command that ReadCommand has read: has DoStore store the instance that follows it, and answers. The result
   // is that of the answer, also when the instance was refused. TN_SOP_CLASS_MISMATCH for another SOP class or none,
   // TN_COMMAND_NOT_SUPPORTED for another message, TN_DATASET_MISSING without a data set; nothing is sent then, so that
   // another object can be tried.
   int Read(PDU_Service& theService, DICOMCommandObject& theCommand, DICOMDataObject& theDataset);

private:
   struct Answer;

   UsablePresentationContext BeginTransmission(PDU_Service& theService, unsigned char theContextID);
   void Announce(PDU_Service& theService, const UsablePresentationContext& theContext, const UID& theSOPClass,
                 const UID& theSOPInstance, UINT16 theMoveOriginatorMessageID, const AETitle& theMoveOriginator);
   void WriteRequestCommand(PDU_Service& theService, unsigned char theContextID, const UID& theSOPClass,
                            const UID& theSOPInstance, UINT16 theMoveOriginatorMessageID,
                            const AETitle& theMoveOriginator);
   Answer Store(PDU_Service& theService, InputTransferSyntax& theInput, DICOMDataObject& theDataset);

   std::unique_ptr<DICOMMessageOutputStream> itsMessage;  // of a transmission
   std::unique_ptr<OutputTransferSyntax> itsOutputSyntax; // writes into it; null when the caller does
   bool itsIsAnnounced = false;                           // the request of the message has gone out
   UINT16 itsMessageID = 0;
};

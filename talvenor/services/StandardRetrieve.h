// The retrieve part of the Query/Retrieve service classes (PS3.4 C.4.2), base of the classes for the information models
// (RetrieveModels.h). C-MOVE in both roles: the requester asks for instances to be sent to a third node, its
// destination, and the provider sends each of them there by a C-STORE of its own.
//
// As SCU a host derives and takes the numbers of sub-operations in CMoveProgressCallback:
//
//    if (aRetrieve.Write(aService, anIdentifier, "WORKSTATION")) ...
//
// As SCP a host derives, says in DoQuery what matches, in GetMoveDestination who is called what, in RetrieveHeader
// where the instances are, and keeps a second service for the destination:
//
//    if (aService.ReadCommand(aCommand))
//       aRetrieve.Read(aService, aStoreService, aCommand, aStatus, aComment, aCompleted, aFailed, aWarning);
//
// An instance passes from its file to the destination element by element; only what comes before its pixel data is
// held. It is sent in the syntax in which it is stored, or decompressed when the destination takes that in no
// compressed form. A host may have its bytes sent as they are stored: OpenStoredDataset.
//
// Write and Read return non-zero for success and 0 for failure, with the cause in PDU_Service::GetResultCode; none ends
// the association of the C-MOVE of itself. No data: an object serves any number of operations one after the other, and
// several at a time if the host's hooks do.
#pragma once

#include "talvenor/dimse/CMoveRQ.h"
#include "talvenor/dimse/CMoveRSP.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/TNResult.h"
#include "talvenor/services/InformationModel.h"
#include "talvenor/services/QueryProgress.h"

class DICOMObject;
class InputStream;
class InputTransferSyntax;
class PixelDataFragmentInputStreamVR;
class RetrieveOperation;
class TransferSyntaxType;
class UsablePresentationContext;
class VR;

class TALVENOR_API StandardRetrieve : public CMoveRQ, public CMoveRSP
{
public:
   // What the provider's callback is told, and which association, object, status and message come with it.
   enum CMoveProgressType
   {
      IdentifierRead = 1,     // C-MOVE; identifier
      ModelUnknown = 2,       // C-MOVE; identifier, 0xC000, a text. Nothing was sent
      QueryRefused = 3,       // store; identifier, status and comment of the response that was sent
      DestinationUnknown = 4, // store; likewise
      ResponseFailed = 5, // C-MOVE; request, 0xC000, a text. A pending response did not go out; the operation is over
      SubOperationBegins = 6,     // store; match
      StoreRequestSent = 7,       // store; header
      SubOperationFailed = 8,     // store; match, 0, the reason
      StoreAssociationFailed = 9, // store; header, 0xC000, the reason
      StoreRefused = 10,          // store; header, status and comment of the destination
      SubOperationCompleted = 11, // store; header
      FinalResponseSent = 12      // C-MOVE; request, final status and comment
   };

   StandardRetrieve() = default;
   ~StandardRetrieve() override;

   // The SOP class, from uGetUID.
   int GetUID(UID& theUID) const override;

   // The hooks of the provider. One that throws has failed.

   // As in StandardQuery. The matches are the instances to send; each names its SOP Instance UID (0008,0018).
   virtual int DoQuery(DICOMDataObject& theIdentifier, int theModel, const RWCString& thePeerTitle,
                       RWTValOrderedVector<DICOMDataObject*>& theMatches, UINT16& theStatus, RWCString& theErrorComment,
                       RWTValOrderedVector<MAttributeTag>& theOffending) = 0;

   // Opens the instance of theMatch, which is lent. 0 for success: theHeader holds its elements before the pixel data,
   // SOP class and instance UID among them; theInput, the caller's from then on, stands at the next element;
   // theSourceSyntax, lent for the time of the operation, is the one in which it is stored; theSize is whatever the
   // callback should be told. Non-zero for failure, which counts as a failed sub-operation.
   virtual int RetrieveHeader(const DICOMDataObject* theMatch, DICOMDataObject& theHeader,
                              InputTransferSyntax*& theInput, const TransferSyntaxType*& theSourceSyntax,
                              unsigned int& theSize) = 0;

   // Makes native pixel data, the caller's, of theCompressedPixels, which is lent, as the syntax is, until that has
   // been sent: it may be a PixelInputStreamVR that decompresses as it is read. What is said of the pixels (bits,
   // photometric interpretation, planar configuration, lossy compression) has to become true in theHeader before, which
   // is sent first. Without any (null) the instance is sent without pixel data: throw where it cannot be done. Unless
   // it comes from JPEG 2000 lossless or RLE, theHeader is marked with the private element ReconstImageFlag of CORVAN0:
   // a private dictionary has to know that, or the sub-operation fails.
   virtual void DoStreamingDecompression(DICOMDataObject& theHeader, const TransferSyntaxType* theSourceSyntax,
                                         PixelDataFragmentInputStreamVR* theCompressedPixels,
                                         VR*& theDecompressedPixels) = 0;

   // The host's callback as SCU, for each response and at the stages of QueryProgress. A final response may have the
   // instances that failed, (0008,0058), in theIdentifier.
   virtual void CMoveProgressCallback(PDU_Service& theService, DICOMCommandObject& theResponse,
                                      DICOMDataObject& theIdentifier, int theProgress) = 0;

   // The host's callback as SCP. theSize is that of RetrieveHeader from StoreAssociationFailed to SubOperationCompleted
   // and 0 otherwise. The base does nothing.
   virtual void CMoveServiceProgressCallback(PDU_Service& theService, const DICOMObject& theObject,
                                             unsigned int theSize, UINT16 theStatus, const RWCString& theMessage,
                                             CMoveProgressType theProgress);

   // Sets the SOP class and returns 1.
   virtual int uGetUID(UID& theUID) const = 0;

   // Hook of the provider: where theDestinationTitle is, and as whom to call it. Non-zero when it is known.
   virtual int GetMoveDestination(const RWCString& theDestinationTitle, RWCString& theCallingTitle, RWCString& theHost,
                                  RWCString& thePort) = 0;

   // An addition: the dataset of the instance that RetrieveHeader has opened last, as it is stored, from its first byte
   // on, when the destination takes the syntax in which it is stored; the stream is the caller's. Its bytes are sent as
   // they are then, and theInput of RetrieveHeader is not read on. A stream that ends before the dataset does has to
   // throw. Null, as the base has it, for an instance that is decoded and encoded anew.
   virtual InputStream* OpenStoredDataset();

   // An addition: whether the requester has asked for an end (C-CANCEL, PS3.4 C.4.2.3). Asked before each instance; once
   // it has, no more are sent, and the final response tells Cancel (0xFE00) with the numbers of those that were. The
   // base looks for no such request.
   virtual bool IsMoveCancelled(PDU_Service& theMoveService);

   // Asks, and hands every response to the callback until one is final. 1 when that tells success; a warning, which
   // says that some instances failed, is 0. After 0 more responses may be on their way, unless the callback was told
   // QueryFailed: end the association.
   int Write(PDU_Service& theService, DICOMDataObject& theIdentifier, const AETitle& theMoveDestination);

   // Takes a command that ReadCommand has read, sends what matches to the destination and answers, with a pending
   // response after each instance. The last five tell what was answered; nothing counts as a warning. The result is 0
   // unless the response to the whole was sent, also when the request was refused.
   //
   // theStoreService is connected to the destination when it is not already, and left open, so that the next C-MOVE to
   // the same destination reuses it. One that failed is closed. Whoever keeps it open for long must expect the
   // destination to end it: instances fail then that a new association would have carried.
   //
   // An instance that a destination refuses ends the sub-operations, a connection that fails or an instance that cannot
   // be read does not: the next match is tried.
   int Read(PDU_Service& theMoveService, PDU_Service& theStoreService, const DICOMCommandObject& theCommand,
            UINT16& theStatus, RWCString& theErrorComment, unsigned int& theCompleted, unsigned int& theFailed,
            unsigned int& theWarning);

private:
   friend class RetrieveOperation;

   StandardRetrieve(const StandardRetrieve&) = delete;
   StandardRetrieve& operator=(const StandardRetrieve&) = delete;

   // Finds a context of theStoreService for a dataset of the syntaxes, on the association that is there or, with
   // theForceNew or without such a one, on a new one. theContext is null when there is none.
   TNResultCode GetConnected(PDU_Service& theStoreService, const RWCString& theHost, const RWCString& thePort,
                             const RWCString& theCallingTitle, const RWCString& theCalledTitle,
                             const RWCString& theAbstractSyntax, const RWCString& theTransferSyntax, int theForceNew,
                             const UsablePresentationContext*& theContext);
};

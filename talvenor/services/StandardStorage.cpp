#include "talvenor/services/StandardStorage.h"

#include <utility>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/association/PresentationContextUsageManager.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/dimse/CommandElement.h"
#include "talvenor/dimse/DIMSEMessage.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/services/ServiceRequest.h"
#include "talvenor/services/StorageStatus.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/ul/DICOMMessageOutputStream.h"

namespace
{
constexpr UINT16 kCannotUnderstand = 0xC006; // of the failures C000 to CFFF (PS3.4 B.2.3)

constexpr char kWriteRequest[] = "StandardStorage::WriteRequestCommand(): ";
constexpr char kGetOutput[] = "StandardStorage::GetDatasetOutputTransferSyntax: ";

[[noreturn]] void Throw(PDU_Service& theService, const RWCString& theText, TNResultCode theCode)
{
   theService.SetResultCode(theCode);
   theService.SetSystemErrorCode(0);
   throw StreamIOException((kGetOutput + theText).c_str(), theCode, 0);
}
} // namespace

// What a request is answered with.
struct StandardStorage::Answer
{
   UINT16 itsStatus = 0;
   RWCString itsComment;
   RWTValOrderedVector<MAttributeTag> itsOffending;
};

StandardStorage::StandardStorage() = default;

StandardStorage::StandardStorage(const StandardStorage& theOther) : CStoreRQ(theOther), CStoreRSP(theOther) {}

StandardStorage& StandardStorage::operator=(const StandardStorage& theOther)
{
   if (this != &theOther)
   {
      FinishDatasetTransmission();
   }
   return *this;
}

StandardStorage::~StandardStorage()
{
   try
   {
      FinishDatasetTransmission();
   }
   catch (...)
   {}
}

int StandardStorage::GetUID(UID& theUID) const
{
   return uGetUID(theUID);
}

int StandardStorage::Write(PDU_Service& theService, DICOMDataObject& theDataset) const
{
   DICOMCommandObject aResponse;
   if (!Write(theService, theDataset, aResponse, 0))
   {
      return 0;
   }
   UINT16 aStatus = 0;
   if (!aResponse.GetUINT16(0, CommandElement::Status, aStatus))
   {
      return Fail(theService, TN_NO_STATUS);
   }
   return IsStored(aStatus);
}

int StandardStorage::Write(PDU_Service& theService, DICOMDataObject& theDataset, DICOMCommandObject& theResponse,
                           unsigned char theContextID) const
{
   return CStoreRQ::Write(theService, theDataset, AETitle(), 0, theContextID) && ReadResponse(theService, theResponse);
}

int StandardStorage::ReadResponse(PDU_Service& theService, DICOMCommandObject& theResponse) const
{
   theResponse.Reset();
   if (!theService.Read(theResponse))
   {
      return 0;
   }
   return CStoreRSP::Read(theResponse) ? 1 : Fail(theService, TN_COMMAND_NOT_SUPPORTED);
}

OutputTransferSyntax& StandardStorage::GetDatasetOutputTransferSyntax(PDU_Service& theService,
                                                                      unsigned char theContextID,
                                                                      const UID& theSOPClass, const UID& theSOPInstance,
                                                                      UINT16 theMoveOriginatorMessageID,
                                                                      const AETitle& theMoveOriginator)
{
   const UsablePresentationContext aContext = BeginTransmission(theService, theContextID);
   const RWCString aSyntax = aContext.GetTransferSyntaxUID().ToString();
   const TransferSyntaxType* const aType = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aSyntax);
   if (aType == nullptr)
   {
      itsMessage.reset();
      Throw(theService, "requested transfer syntax " + aSyntax + " not supported by this application",
            TN_TRANSFER_SYNTAX_UNSUPPORTED);
   }
   std::unique_ptr<OutputTransferSyntax> anOutput(aType->CreateOutputTransferSyntax(*itsMessage));
   Announce(theService, aContext, theSOPClass, theSOPInstance, theMoveOriginatorMessageID, theMoveOriginator);
   itsOutputSyntax = std::move(anOutput);
   return *itsOutputSyntax;
}

OutputStream& StandardStorage::GetDatasetOutputStream(PDU_Service& theService, unsigned char theContextID,
                                                      const UID& theSOPClass, const UID& theSOPInstance,
                                                      UINT16 theMoveOriginatorMessageID,
                                                      const AETitle& theMoveOriginator)
{
   const UsablePresentationContext aContext = BeginTransmission(theService, theContextID);
   Announce(theService, aContext, theSOPClass, theSOPInstance, theMoveOriginatorMessageID, theMoveOriginator);
   return *itsMessage;
}

UsablePresentationContext StandardStorage::BeginTransmission(PDU_Service& theService, unsigned char theContextID)
{
   UsablePresentationContext aContext;
   if (!theService.GetUsablePresentationContextInfo(theContextID, aContext))
   {
      Throw(theService, "invalid presentation context ID", TN_INTERNAL_ERROR);
   }
   FinishDatasetTransmission();
   itsMessage.reset(theService.CreateDICOMMessageOutputStream());
   return aContext;
}

// Sends the request, for which the message carries the data set.
void StandardStorage::Announce(PDU_Service& theService, const UsablePresentationContext& theContext,
                               const UID& theSOPClass, const UID& theSOPInstance, UINT16 theMoveOriginatorMessageID,
                               const AETitle& theMoveOriginator)
{
   theService.SetCurrentPresentationContext(theContext);
   itsMessage->SetMessageType(PDVMessageType::DataMessage);
   itsMessage->SetPresentationContextID(theContext.GetPresentationContextID());
   WriteRequestCommand(theService, theContext.GetPresentationContextID(), theSOPClass, theSOPInstance,
                       theMoveOriginatorMessageID, theMoveOriginator);
   itsIsAnnounced = true;
   PresentationContextUsageManager::GetInstance().IncrementUseCount(theService.GetRemoteAddress(),
                                                                    theContext.GetAbstractSyntaxUID().ToString(),
                                                                    theContext.GetTransferSyntaxUID().ToString());
}

void StandardStorage::WriteRequestCommand(PDU_Service& theService, unsigned char theContextID, const UID& theSOPClass,
                                          const UID& theSOPInstance, UINT16 theMoveOriginatorMessageID,
                                          const AETitle& theMoveOriginator)
{
   const auto aThrow = [&](const char* theText) {
      throw StreamIOException((RWCString(kWriteRequest) + theText).c_str(), theService.GetResultCode(),
                              theService.GetSystemErrorCode());
   };
   DICOMCommandObject aCommand;
   if (!Compose(aCommand, theService, theSOPClass, theSOPInstance, theMoveOriginatorMessageID, theMoveOriginator))
   {
      aThrow("CStoreRQ::Compose() failed");
   }
   aCommand.GetUINT16(0, CommandElement::MessageID, itsMessageID);
   TraceWrittenBy(kWriteRequest, kCStoreRQ, aCommand);
   if (!theService.Write(aCommand, theContextID, 0))
   {
      TraceWritingBy(kWriteRequest, "Error while writing CStoreRQ Request Command");
      aThrow("error while writing CStoreRQ command message");
   }
}

// A message whose request did not go out is given up: nobody waits for its data set. One without any bytes is sent all
// the same, because somebody does.
void StandardStorage::FinishDatasetTransmission()
{
   const bool isAnnounced = std::exchange(itsIsAnnounced, false);
   itsOutputSyntax.reset();
   const std::unique_ptr<DICOMMessageOutputStream> aMessage = std::move(itsMessage);
   if (aMessage == nullptr)
   {
      return;
   }
   if (!isAnnounced)
   {
      aMessage->DiscardMessage();
      return;
   }
   aMessage->FinishMessageEvenIfEmpty();
   aMessage->FinishPDU();
   aMessage->FlushOutput();
}

int StandardStorage::Read(PDU_Service& theService, DICOMCommandObject& theCommand, DICOMDataObject& theDataset)
{
   RWCString aSOPClass;
   if (!theCommand.GetString(0, CommandElement::AffectedSOPClassUID, aSOPClass))
   {
      return Fail(theService, TN_SOP_CLASS_MISMATCH);
   }
   if (UID anOwnClass; GetUID(anOwnClass) && anOwnClass != aSOPClass)
   {
      return Fail(theService, TN_SOP_CLASS_MISMATCH);
   }
   std::unique_ptr<InputTransferSyntax> anInput(GetDatasetInputTransferSyntax(theCommand, theService));
   if (anInput == nullptr)
   {
      return 0;
   }
   const Answer anAnswer = Store(theService, *anInput, theDataset);
   anInput.reset();
   return CStoreRSP::Write(theService, theCommand, anAnswer.itsStatus, anAnswer.itsComment, anAnswer.itsOffending);
}

StandardStorage::Answer StandardStorage::Store(PDU_Service& theService, InputTransferSyntax& theInput,
                                               DICOMDataObject& theDataset)
{
   Answer anAnswer;
   try
   {
      if (DoStore(theDataset, theInput, theService.GetRemoteAddress(), theService.GetPeerName(), anAnswer.itsStatus,
                  anAnswer.itsComment, anAnswer.itsOffending))
      {
         return Answer();
      }
   }
   catch (...) // whatever the host's code throws
   {
      return {kCannotUnderstand, "Storage error - exception occurred in DoStore.", {}};
   }
   return anAnswer.itsStatus != 0 ? anAnswer : Answer{kCannotUnderstand, "Storage error.", {}};
}

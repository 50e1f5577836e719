#include "talvenor/dimse/CStoreRQ.h"

#include "talvenor/dimse/CommandElement.h"
#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/dimse/DIMSEMessage.h"
#include "talvenor/foundation/AETitle.h"

namespace
{
constexpr UINT16 kIdentifyingGroup = 0x0008;
constexpr UINT16 kSOPClassUID = 0x0016;
constexpr UINT16 kSOPInstanceUID = 0x0018;

bool IsOfClass(const DICOMDataObject& theDataset, const UID& theSOPClass, PDU_Service& theService)
{
   RWCString aText;
   if (!theDataset.GetString(kIdentifyingGroup, kSOPClassUID, aText))
   {
      theService.SetResultCode(TN_NO_SOP_CLASS_UID);
      return false;
   }
   if (theSOPClass != aText)
   {
      theService.SetResultCode(TN_SOP_CLASS_MISMATCH);
      return false;
   }
   return true;
}

// The command set and the data set in one PDU, each on the context that theWrite knows.
template <class Writer>
int Send(DICOMCommandObject& theCommand, DICOMDataObject& theDataset, const Writer& theWrite)
{
   if (!theWrite(theCommand, 0))
   {
      TraceWriting(kCStoreRQ, "Error while writing CStoreRQ Request Command");
      return 0;
   }
   const int isWritten = theWrite(theDataset, 1);
   TraceWriting(kCStoreRQ,
                isWritten ? "Command and Dataset written OK" : "Error while writing CStoreRQ Request Dataset");
   return isWritten;
}
} // namespace

CStoreRQ::~CStoreRQ() = default;

int CStoreRQ::Write(PDU_Service& theService, DICOMDataObject& theDataset, const AETitle& theMoveOriginator,
                    UINT16 theMoveOriginatorMessageID, unsigned char theContextID) const
{
   UID aSOPClass;
   if (!FindSOPClass(*this, theService, aSOPClass) || !IsOfClass(theDataset, aSOPClass, theService))
   {
      return 0;
   }
   DICOMCommandObject aCommand;
   CommandSetBuilder aBuilder(aCommand);
   aBuilder.PushRequest(kCStoreRQ, aSOPClass);
   RWCString anInstance;
   if (!theDataset.GetString(kIdentifyingGroup, kSOPInstanceUID, anInstance))
   {
      theService.SetResultCode(TN_NO_SOP_INSTANCE_UID);
      return 0;
   }
   aBuilder.PushUI(CommandElement::AffectedSOPInstanceUID, UID(anInstance));
   if (!theMoveOriginator.IsNull())
   {
      aBuilder.PushAE(CommandElement::MoveOriginatorTitle, theMoveOriginator);
   }
   if (theMoveOriginatorMessageID != 0)
   {
      aBuilder.PushUS(CommandElement::MoveOriginatorMessageID, theMoveOriginatorMessageID);
   }

   TraceWritten(kCStoreRQ, &aCommand, &theDataset);
   return Send(aCommand, theDataset, [&](DICOMObject& theObject, int theFinishPDU) {
      return theContextID != 0 ? theService.Write(theObject, theContextID, theFinishPDU)
                               : theService.Write(theObject, aSOPClass, theFinishPDU);
   });
}

int CStoreRQ::Compose(DICOMCommandObject& theCommand, PDU_Service& theService, const UID& theSOPClass,
                      const UID& theSOPInstance, UINT16 theMoveOriginatorMessageID,
                      const AETitle& theMoveOriginator) const
{
   UID aSOPClass;
   if (!FindSOPClass(*this, theService, aSOPClass))
   {
      return 0;
   }
   if (aSOPClass != theSOPClass)
   {
      theService.SetResultCode(TN_SOP_CLASS_MISMATCH);
      return 0;
   }
   CommandSetBuilder aBuilder(theCommand);
   aBuilder.PushRequest(kCStoreRQ, aSOPClass);
   aBuilder.PushUI(CommandElement::AffectedSOPInstanceUID, theSOPInstance);
   if (!theMoveOriginator.IsNull())
   {
      aBuilder.PushAE(CommandElement::MoveOriginatorTitle, theMoveOriginator);
      aBuilder.PushUS(CommandElement::MoveOriginatorMessageID, theMoveOriginatorMessageID);
   }
   return 1;
}

InputTransferSyntax* CStoreRQ::GetDatasetInputTransferSyntax(const DICOMCommandObject& theCommand,
                                                             PDU_Service& theService) const
{
   if (!RequireMessage(kCStoreRQ, theCommand, theService))
   {
      return nullptr;
   }
   TraceRead(kCStoreRQ, &theCommand, nullptr);
   return RequireDataset(theCommand, theService) ? theService.GetInputTransferSyntax() : nullptr;
}

int CStoreRQ::Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theDataset) const
{
   if (!RequireMessage(kCStoreRQ, theCommand, theService))
   {
      return 0;
   }
   TraceRead(kCStoreRQ, &theCommand, nullptr);
   if (!RequireDataset(theCommand, theService))
   {
      return 0;
   }
   theDataset.Reset();
   const int isRead = theService.Read(theDataset);
   if (isRead)
   {
      TraceRead(kCStoreRQ, nullptr, &theDataset);
   }
   return isRead;
}

#include "talvenor/dimse/CStoreRSP.h"

#include "talvenor/dimse/CommandElement.h"
#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/dimse/DIMSEMessage.h"

CStoreRSP::~CStoreRSP() = default;

// The only response of a service that may have no SOP class of its own.
int CStoreRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                     const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   UID aSOPClass;
   const bool isKnown = GetUID(aSOPClass) != 0;
   if (!TakeRequestSOPClass(theRequest, aSOPClass) && !isKnown)
   {
      theService.SetResultCode(TN_NO_SOP_CLASS_UID);
      return 0;
   }
   RWCString anInstance;
   theRequest.GetString(0, CommandElement::AffectedSOPInstanceUID, anInstance);

   DICOMCommandObject aCommand;
   CommandSetBuilder aBuilder(aCommand);
   aBuilder.PushResponse(kCStoreRSP.itsField, aSOPClass, theRequest, DataSetType::kNoDataset, theStatus);
   aBuilder.PushUI(CommandElement::AffectedSOPInstanceUID, UID(anInstance));
   aBuilder.PushExplanation(theErrorComment, theOffending);
   TraceWritten(kCStoreRSP, &aCommand, nullptr);
   return SendResponse(theService, aCommand, 1);
}

int CStoreRSP::Read(const DICOMCommandObject& theCommand) const
{
   return RecogniseMessage(kCStoreRSP, theCommand);
}

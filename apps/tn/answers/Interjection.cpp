#include "apps/tn/answers/Interjection.h"

#include "apps/tn/base/Tags.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/ul/DULStream.h"

// A peer that sends anything else in the middle of an operation, without having negotiated that it may, is not
// understood any more.
Interjection ReadInterjection(PDU_Service& theService)
{
   constexpr UINT16 kCancelRequest = 0x0FFF; // command field (PS3.7 E.1)
   DULStream* const aStream = theService.GetDULStream();
   if (aStream == nullptr || aStream->BytesAvailable() <= 0)
   {
      return Interjection::kNone;
   }
   const unsigned char aContext = theService.GetCurrentPresentationContextID();
   DICOMCommandObject aCommand;
   UINT16 aField = 0;
   if (theService.ReadCommand(aCommand))
   {
      aCommand.GetUINT16(0, ElementOf(CommandTag::kCommandField), aField);
   }
   theService.SetCurrentPresentationContextID(aContext);
   return aField == kCancelRequest ? Interjection::kCancel : Interjection::kOther;
}

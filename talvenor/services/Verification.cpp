#include "talvenor/services/Verification.h"

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/services/ServiceRequest.h"

namespace
{
constexpr char kVerificationSOPClass[] = "1.2.840.10008.1.1";
constexpr UINT16 kSuccess = 0x0000;
} // namespace

int Verification::GetUID(UID& theUID) const
{
   theUID.Set(kVerificationSOPClass, -1);
   return 1;
}

int Verification::Write(PDU_Service& theService) const
{
   DICOMCommandObject aResponse;
   UINT16 anIgnored = 0;
   return Write(theService, aResponse, anIgnored);
}

int Verification::Write(PDU_Service& theService, DICOMCommandObject& theResponse, UINT16& theMessageID) const
{
   theResponse.Reset();
   if (!CEchoRQ::Write(theService, theMessageID) || !theService.Read(theResponse))
   {
      return 0;
   }
   return CEchoRSP::Read(theResponse) ? 1 : Fail(theService, TN_COMMAND_NOT_SUPPORTED);
}

int Verification::Read(PDU_Service& theService, DICOMCommandObject& theCommand) const
{
   RWCString aSOPClass;
   if (!theCommand.GetString(0x0000, 0x0002, aSOPClass))
   {
      return Fail(theService, TN_NO_AFFECTED_SOP_CLASS);
   }
   if (aSOPClass != kVerificationSOPClass)
   {
      return Fail(theService, TN_SOP_CLASS_MISMATCH);
   }
   if (CEchoRQ::Read(theCommand))
   {
      return CEchoRSP::Write(theService, theCommand, kSuccess);
   }
   return CEchoRSP::Read(theCommand) ? 1 : Fail(theService, TN_COMMAND_NOT_SUPPORTED);
}

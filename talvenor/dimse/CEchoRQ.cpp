#include "talvenor/dimse/CEchoRQ.h"

#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/dimse/DIMSEMessage.h"

CEchoRQ::~CEchoRQ() = default;

int CEchoRQ::Write(PDU_Service& theService) const
{
   UINT16 anIgnored = 0;
   return Write(theService, anIgnored);
}

int CEchoRQ::Write(PDU_Service& theService, UINT16& theMessageID) const
{
   theMessageID = 0;
   UID aSOPClass;
   if (!FindSOPClass(*this, theService, aSOPClass))
   {
      return 0;
   }
   DICOMCommandObject aCommand;
   theMessageID = CommandSetBuilder(aCommand).PushRequest(kCEchoRQ, aSOPClass);
   TraceWritten(kCEchoRQ, &aCommand, nullptr);
   return theService.Write(aCommand, aSOPClass, 1);
}

int CEchoRQ::Read(const DICOMCommandObject& theCommand) const
{
   return RecogniseMessage(kCEchoRQ, theCommand);
}

#include "talvenor/dimse/CEchoRSP.h"

#include "talvenor/dimse/CommandElement.h"
#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/dimse/DIMSEMessage.h"

CEchoRSP::~CEchoRSP() = default;

int CEchoRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus) const
{
   UID aSOPClass;
   if (!FindSOPClass(*this, theService, aSOPClass))
   {
      return 0;
   }
   TakeRequestSOPClass(theRequest, aSOPClass);
   DICOMCommandObject aCommand;
   CommandSetBuilder(aCommand).PushResponse(kCEchoRSP.itsField, aSOPClass, theRequest, DataSetType::kNoDataset,
                                            theStatus);
   TraceWritten(kCEchoRSP, &aCommand, nullptr);
   return SendResponse(theService, aCommand, 1);
}

int CEchoRSP::Read(const DICOMCommandObject& theCommand) const
{
   return RecogniseMessage(kCEchoRSP, theCommand);
}

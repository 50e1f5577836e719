#include "talvenor/dimse/CFindRQ.h"

#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/dimse/DIMSEMessage.h"

CFindRQ::~CFindRQ() = default;

int CFindRQ::Write(PDU_Service& theService, DICOMDataObject& theIdentifier) const
{
   UID aSOPClass;
   if (!FindSOPClass(*this, theService, aSOPClass))
   {
      return 0;
   }
   DICOMCommandObject aCommand;
   CommandSetBuilder(aCommand).PushRequest(kCFindRQ, aSOPClass);
   TraceWritten(kCFindRQ, &aCommand, &theIdentifier);
   return SendRequest(theService, aCommand, theIdentifier, aSOPClass);
}

int CFindRQ::Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theIdentifier) const
{
   return ReadRequest(kCFindRQ, theCommand, theService, theIdentifier);
}

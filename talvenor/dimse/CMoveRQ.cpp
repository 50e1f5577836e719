#include "talvenor/dimse/CMoveRQ.h"

#include "talvenor/dimse/CommandElement.h"
#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/dimse/DIMSEMessage.h"
#include "talvenor/foundation/AETitle.h"

CMoveRQ::~CMoveRQ() = default;

int CMoveRQ::Write(PDU_Service& theService, DICOMDataObject& theIdentifier, const AETitle& theMoveDestination) const
{
   UID aSOPClass;
   if (!FindSOPClass(*this, theService, aSOPClass))
   {
      return 0;
   }
   DICOMCommandObject aCommand;
   CommandSetBuilder aBuilder(aCommand);
   aBuilder.PushRequest(kCMoveRQ, aSOPClass);
   aBuilder.PushAE(CommandElement::MoveDestination, theMoveDestination);
   TraceWritten(kCMoveRQ, &aCommand, &theIdentifier);
   return SendRequest(theService, aCommand, theIdentifier, aSOPClass);
}

int CMoveRQ::Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theIdentifier) const
{
   return ReadRequest(kCMoveRQ, theCommand, theService, theIdentifier);
}

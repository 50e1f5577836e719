#include "talvenor/print/AbstractFilmSession.h"

#include "talvenor/print/PrintMessages.h"
#include "talvenor/print/PrintReferences.h"

AbstractFilmSession::AbstractFilmSession(AbstractPrintManagementMeta& theMeta) : PrintObject(theMeta) {}

AbstractFilmSession::~AbstractFilmSession() = default;

int AbstractFilmSession::GetNewSOPInstanceUID(const UID&, UID& theInstance)
{
   theInstance.Set("You.Need.To.Override.This.For.An.SCP", -1);
   return 0;
}

int AbstractFilmSession::ActionStore(DICOMDataObject&)
{
   return 1;
}

int AbstractFilmSession::ActionRetreive(DICOMDataObject&)
{
   return 1;
}

void AbstractFilmSession::DeleteAll()
{
   itsFilmBoxes.clear();
   itsPrintJobs.clear();
}

void AbstractFilmSession::ProtoGen()
{
   WaitWhileBusy();
   DeleteAll();
   TakeNewInstanceUID(*this, PrintSOPClass::kFilmSession);
}

void AbstractFilmSession::ResyncAbstractFilmBoxs()
{
   ResyncParts(itsFilmBoxes, ReadReferences(*this, PrintTag::kReferencedFilmBoxes), GetMeta());
}

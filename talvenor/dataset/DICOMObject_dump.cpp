// The part of DICOMObject that prints. Apart from the rest, so that storing elements does not lean on the dumper.
#include "talvenor/dataset/DICOMObject.h"

#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"
#include "talvenor/foundation/TNTrace.h"

void DICOMObject::Dump() const
{
   Dump(gTNTracer);
}

void DICOMObject::Dump(LogStream& theLog) const
{
   CriticalSectionWhileInScope aGuard(itsLock); // the dataset before the log, as TNTrace::Dump does
   const LogLock aLogGuard(theLog);
   DICOMObjectDumper(theLog).Dump(*this);
}

#include "talvenor/print/StandardBox.h"

#include "talvenor/print/PrintOperations.h"

namespace
{
constexpr PrintOperation kWrite = {"StandardBox",
                                   "Write",
                                   "NSetRQ::Write() failed",
                                   "PDU::Read() failed",
                                   "NSetRSP::Read received unexpected response",
                                   "NSetRSP::Read received response without status",
                                   ErrorDescription::NSetRequestWrite,
                                   ErrorDescription::NSetResponseRead,
                                   kNSet.itsResponse.itsField,
                                   PrintStatusColumn::Box};
}

StandardBox::~StandardBox() = default;

int StandardBox::GetUID(UID& theUID) const
{
   return uGetUID(theUID);
}

int StandardBox::Write(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theBox,
                       AbstractPrintManagementMeta& theMeta) const
{
   return RunSet(*this, kWrite, theService, theInstance, theBox, theMeta);
}

int StandardBox::Read(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget) const
{
   return AnswerSet(*this, theService, theRequest, theTarget, nullptr);
}

int StandardBox::Read(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
                      const PrintDecision& theDecision) const
{
   return AnswerSet(*this, theService, theRequest, theTarget, theDecision);
}

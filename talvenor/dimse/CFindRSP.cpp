#include "talvenor/dimse/CFindRSP.h"

#include "talvenor/dimse/CommandElement.h"
#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/dimse/DIMSEMessage.h"

namespace
{
// PS3.4 C.4.1.1.4: each of them comes with a match.
bool IsPending(UINT16 theStatus)
{
   return theStatus == 0xFF00 || theStatus == 0xFF01;
}
} // namespace

CFindRSP::~CFindRSP() = default;

int CFindRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                    const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending,
                    DICOMDataObject& theIdentifier) const
{
   UID aSOPClass;
   if (!WriteCommand(theService, theRequest, theStatus, theErrorComment, theOffending, DataSetType::kDataset,
                     aSOPClass))
   {
      return 0;
   }
   TraceWritten(kCFindRSP, nullptr, &theIdentifier);
   return SendResponse(theService, theIdentifier, 1);
}

int CFindRSP::Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                    const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending) const
{
   if (IsPending(theStatus))
   {
      theService.SetResultCode(TN_INVALID_ARGUMENT);
      return 0;
   }
   UID aSOPClass;
   return WriteCommand(theService, theRequest, theStatus, theErrorComment, theOffending, DataSetType::kNoDataset,
                       aSOPClass);
}

int CFindRSP::WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                           const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending,
                           UINT16 theDataSetType, UID& theSOPClass) const
{
   if (!FindSOPClass(*this, theService, theSOPClass))
   {
      return 0;
   }
   TakeRequestSOPClass(theRequest, theSOPClass);
   DICOMCommandObject aCommand;
   CommandSetBuilder aBuilder(aCommand);
   aBuilder.PushResponse(kCFindRSP.itsField, theSOPClass, theRequest, theDataSetType, theStatus);
   aBuilder.PushExplanation(theErrorComment, theOffending);
   TraceWritten(kCFindRSP, &aCommand, nullptr);
   return SendResponse(theService, aCommand, theDataSetType != DataSetType::kDataset);
}

int CFindRSP::Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theIdentifier) const
{
   return ReadResponse(kCFindRSP, theCommand, theService, theIdentifier);
}

#include "talvenor/dimse/NMessage.h"

#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/dimse/CommandSetBuilder.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{
constexpr bool kHasPriority = true; // on the wire, although PS3.7 10 knows none
constexpr char kRead[] = "::Read(): ";

// The locks of datasets come before that of the log, as everywhere: see TNTrace::Dump.
template <class Object>
void Trace(const NService& theKind, const NDirection& theDirection, const char* theMethod, const char* theText,
           const Object& theObject)
{
   if (!gTNTracer(TNTrace::TNTraceDimsen))
   {
      return;
   }
   const DICOMObjectLock aLock(theObject);
   LogEntry anEntry(gTNTracer);
   anEntry << theKind.itsName << theDirection.itsSuffix << theMethod << theKind.itsName << theText << "\n";
   gTNTracer.Dump(theObject);
}

void TraceCommand(const NService& theKind, const NDirection& theDirection, const char* theMethod, const char* theVerb,
                  const DICOMCommandObject& theCommand)
{
   Trace(theKind, theDirection, theMethod, (RWCString(theDirection.itsText) + "Command " + theVerb + ": ").c_str(),
         theCommand);
}

void TraceDataset(const NService& theKind, const NDirection& theDirection, const char* theMethod, const char* theText,
                  const DICOMDataObject& theDataset)
{
   Trace(theKind, theDirection, theMethod, (RWCString(" ") + theText).c_str(), theDataset);
}

int ReadDataset(const NService& theKind, const NDirection& theDirection, PDU_Service& theService,
                DICOMDataObject& theDataset)
{
   theDataset.Reset();
   const int isRead = theService.Read(theDataset);
   if (isRead)
   {
      TraceDataset(theKind, theDirection, kRead, theDirection.itsDatasetRead, theDataset);
   }
   return isRead;
}
} // namespace

int SendNRequest(const NService& theKind, PDU_Service& theService, const UID& theSOPClass, const NRequest& theRequest)
{
   DICOMCommandObject aCommand;
   CommandSetBuilder aBuilder(aCommand);
   aBuilder.PushRequest(theKind.itsRequest.itsField, theKind.itsSOPClass, theSOPClass, theRequest.itsDataSetType,
                        kHasPriority);
   aBuilder.PushUI(theKind.itsInstance, theRequest.itsInstance);
   if (theKind.itsTypeID != 0)
   {
      aBuilder.PushUS(theKind.itsTypeID, theRequest.itsTypeID);
   }
   if (theRequest.itsAttributes != nullptr)
   {
      aBuilder.PushAT(CommandElement::AttributeIdentifierList, *theRequest.itsAttributes);
   }
   TraceCommand(theKind, theKind.itsRequest, theRequest.itsMethod, "Written", aCommand);
   const bool isDatasetToShare = theRequest.itsDataSetType == DataSetType::kDataset && theKind.itsRequestSharesItsPDU;
   return theService.Write(aCommand, theSOPClass, !isDatasetToShare);
}

int SendNRequestDataset(const NService& theKind, PDU_Service& theService, const UID& theSOPClass,
                        DICOMDataObject& theDataset)
{
   TraceDataset(theKind, theKind.itsRequest, kNWrite, theKind.itsRequest.itsDatasetWritten, theDataset);
   return theService.Write(theDataset, theSOPClass, 1);
}

int SendNResponse(const NService& theKind, PDU_Service& theService, UID& theSOPClass, const NResponse& theResponse)
{
   TakeRequestSOPClass(theResponse.itsRequest, theSOPClass, theKind.itsSOPClass);
   DICOMCommandObject aCommand;
   CommandSetBuilder aBuilder(aCommand);
   aBuilder.PushResponse(theKind.itsResponse.itsField, theSOPClass, theResponse.itsRequest, theResponse.itsDataSetType,
                         theResponse.itsStatus);
   aBuilder.PushExplanation(theResponse.itsComment, theResponse.itsOffending);
   aBuilder.PushUI(CommandElement::AffectedSOPInstanceUID, theResponse.itsInstance);
   if (theKind.itsTypeID != 0)
   {
      aBuilder.PushUS(theKind.itsTypeID, theResponse.itsTypeID);
   }
   TraceCommand(theKind, theKind.itsResponse, theResponse.itsMethod, "Written", aCommand);
   return SendResponse(theService, aCommand, theResponse.itsDataSetType != DataSetType::kDataset);
}

int SendNResponseDataset(const NService& theKind, PDU_Service& theService, DICOMDataObject& theDataset)
{
   TraceDataset(theKind, theKind.itsResponse, kNWrite, theKind.itsResponse.itsDatasetWritten, theDataset);
   return SendResponse(theService, theDataset, 1);
}

bool RecogniseNRequest(const NService& theKind, const DICOMCommandObject& theCommand)
{
   if (!IsMessage(theCommand, theKind.itsRequest.itsField))
   {
      return false;
   }
   TraceCommand(theKind, theKind.itsRequest, kRead, "Read", theCommand);
   return true;
}

bool RequireNResponse(const NService& theKind, const DICOMCommandObject& theCommand, PDU_Service& theService)
{
   if (!IsMessage(theCommand, theKind.itsResponse.itsField))
   {
      theService.SetResultCode(TN_COMMAND_NOT_SUPPORTED);
      return false;
   }
   TraceCommand(theKind, theKind.itsResponse, kRead, "Read", theCommand);
   return true;
}

int ReadNRequest(const NService& theKind, const DICOMCommandObject& theCommand, PDU_Service& theService,
                 DICOMDataObject& theDataset, int theWithout)
{
   if (!RecogniseNRequest(theKind, theCommand))
   {
      return 0;
   }
   return HasDataset(theCommand) ? ReadDataset(theKind, theKind.itsRequest, theService, theDataset) : theWithout;
}

int ReadNResponse(const NService& theKind, const DICOMCommandObject& theCommand, PDU_Service& theService,
                  DICOMDataObject& theDataset)
{
   if (!RequireNResponse(theKind, theCommand, theService))
   {
      return 0;
   }
   return HasDataset(theCommand) ? ReadDataset(theKind, theKind.itsResponse, theService, theDataset) : 1;
}

int RefuseDataset(const DICOMCommandObject& theCommand, PDU_Service& theService)
{
   if (HasDataset(theCommand))
   {
      theService.SetResultCode(TN_UNEXPECTED_DATASET);
      return 0;
   }
   return 1;
}

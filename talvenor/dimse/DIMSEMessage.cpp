#include "talvenor/dimse/DIMSEMessage.h"

#include "talvenor/dimse/CommandElement.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{
constexpr char kWrite[] = "::Write(): ";

// The locks of datasets come before that of the log, as everywhere: see TNTrace::Dump.
class LockForDump
{
public:
   explicit LockForDump(const DICOMObject* theObject)
       : itsObject(gTNTracer(TNTrace::TNTraceDimsecDicomObjects) ? theObject : nullptr)
   {
      if (itsObject != nullptr)
      {
         itsObject->Lock();
      }
   }
   ~LockForDump()
   {
      if (itsObject != nullptr)
      {
         itsObject->Unlock();
      }
   }
   LockForDump(const LockForDump&) = delete;
   LockForDump& operator=(const LockForDump&) = delete;

   bool IsHeld() const { return itsObject != nullptr; }

private:
   const DICOMObject* itsObject;
};

template <class Object>
void TraceObject(const DIMSEMessage& theMessage, const char* theKind, const char* theVerb, const Object* theObject,
                 bool theDumpIt)
{
   if (theObject == nullptr)
   {
      return;
   }
   gTNTracer << theMessage.itsText << theKind << theVerb << (theDumpIt ? ":\n" : "\n");
   if (theDumpIt)
   {
      gTNTracer.Dump(*theObject);
   }
}

void Trace(const char* theWriter, const char* theMethod, const DIMSEMessage& theMessage, const char* theVerb,
           const DICOMCommandObject* theCommand, const DICOMDataObject* theDataset)
{
   if (!gTNTracer(TNTrace::TNTraceDimsec))
   {
      return;
   }
   const LockForDump aCommandLock(theCommand);
   const LockForDump aDatasetLock(theDataset);
   LogEntry anEntry(gTNTracer);
   anEntry << theWriter << theMethod;
   TraceObject(theMessage, " Command ", theVerb, theCommand, aCommandLock.IsHeld());
   TraceObject(theMessage, " Dataset ", theVerb, theDataset, aDatasetLock.IsHeld());
}

void TraceOutcome(const char* theWriter, const char* theMethod, const char* theOutcome)
{
   if (gTNTracer(TNTrace::TNTraceDimsec))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << theWriter << theMethod << theOutcome << "\n";
   }
}

int ReadDataset(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand, PDU_Service& theService,
                DICOMDataObject& theDataset)
{
   theDataset.Reset();
   const int isRead = theService.Read(theDataset);
   TraceRead(theMessage, &theCommand, isRead ? &theDataset : nullptr);
   return isRead;
}
} // namespace

void TraceWritten(const DIMSEMessage& theMessage, const DICOMCommandObject* theCommand,
                  const DICOMDataObject* theDataset)
{
   Trace(theMessage.itsClass, kWrite, theMessage, "Written", theCommand, theDataset);
}

void TraceRead(const DIMSEMessage& theMessage, const DICOMCommandObject* theCommand, const DICOMDataObject* theDataset)
{
   Trace(theMessage.itsClass, "::Read(): ", theMessage, "Read", theCommand, theDataset);
}

void TraceWriting(const DIMSEMessage& theMessage, const char* theOutcome)
{
   TraceOutcome(theMessage.itsClass, kWrite, theOutcome);
}

void TraceWrittenBy(const char* thePrefix, const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand)
{
   Trace(thePrefix, "", theMessage, "Written", &theCommand, nullptr);
}

void TraceWritingBy(const char* thePrefix, const char* theOutcome)
{
   TraceOutcome(thePrefix, "", theOutcome);
}

bool IsMessage(const DICOMCommandObject& theCommand, UINT16 theField)
{
   UINT16 aField = 0;
   return theCommand.GetUINT16(0, CommandElement::CommandField, aField) && aField == theField;
}

bool HasDataset(const DICOMCommandObject& theCommand)
{
   UINT16 aType = DataSetType::kNoDataset;
   return theCommand.GetUINT16(0, CommandElement::DataSetType, aType) && aType != DataSetType::kNoDataset;
}

int RecogniseMessage(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand)
{
   if (!IsMessage(theCommand, theMessage.itsField))
   {
      return 0;
   }
   TraceRead(theMessage, &theCommand, nullptr);
   return 1;
}

bool RequireMessage(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand, PDU_Service& theService)
{
   if (!IsMessage(theCommand, theMessage.itsField))
   {
      theService.SetResultCode(TN_COMMAND_NOT_SUPPORTED);
      return false;
   }
   return true;
}

bool RequireDataset(const DICOMCommandObject& theCommand, PDU_Service& theService)
{
   if (!HasDataset(theCommand))
   {
      theService.SetResultCode(TN_DATASET_MISSING);
      return false;
   }
   return true;
}

int ReadRequest(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand, PDU_Service& theService,
                DICOMDataObject& theDataset)
{
   return RequireMessage(theMessage, theCommand, theService) && RequireDataset(theCommand, theService) &&
          ReadDataset(theMessage, theCommand, theService, theDataset);
}

int ReadResponse(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand, PDU_Service& theService,
                 DICOMDataObject& theDataset)
{
   if (!RequireMessage(theMessage, theCommand, theService))
   {
      return 0;
   }
   if (!HasDataset(theCommand))
   {
      TraceRead(theMessage, &theCommand, nullptr);
      return 1;
   }
   return ReadDataset(theMessage, theCommand, theService, theDataset);
}

int SendRequest(PDU_Service& theService, DICOMCommandObject& theCommand, DICOMDataObject& theDataset,
                const UID& theSOPClass)
{
   return theService.Write(theCommand, theSOPClass, 0) && theService.Write(theDataset, theSOPClass, 1);
}

int SendResponse(PDU_Service& theService, DICOMObject& theObject, int theFinishPDU)
{
   return theService.Write(theObject, theService.GetCurrentPresentationContextID(), theFinishPDU);
}

bool TakeRequestSOPClass(const DICOMCommandObject& theRequest, UID& theSOPClass, UINT16 theElement)
{
   RWCString aText;
   if (!theRequest.GetString(0, theElement, aText))
   {
      return false;
   }
   if (!aText.empty())
   {
      theSOPClass.Set(aText);
   }
   return true;
}

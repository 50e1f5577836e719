// What a DIMSE message is, a row each, and what the classes of the messages have in common: recognising, reading,
// sending and tracing. Not part of the library's interface.
#pragma once

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/dimse/CommandElement.h"

struct DIMSEMessage
{
   const char* itsClass; // begins the lines of the trace
   const char* itsText;  // what they call it
   UINT16 itsField;      // Command Field (0000,0100), PS3.7 E.1
   bool itsHasDataset;   // of requests: whether a data set follows
};

inline constexpr DIMSEMessage kCStoreRQ = {"CStoreRQ", "CStoreRQ Request", 0x0001, true};
inline constexpr DIMSEMessage kCStoreRSP = {"CStoreRSP", "CStoreRSP Response", 0x8001, false};
inline constexpr DIMSEMessage kCFindRQ = {"CFindRQ", "CFindRQ Request", 0x0020, true};
inline constexpr DIMSEMessage kCFindRSP = {"CFindRSP", "CFindRSP Response", 0x8020, false};
inline constexpr DIMSEMessage kCMoveRQ = {"CMoveRQ", "CMoveRQ Request", 0x0021, true};
inline constexpr DIMSEMessage kCMoveRSP = {"CMoveRSP", "CMoveRSP Response", 0x8021, false};
inline constexpr DIMSEMessage kCEchoRQ = {"CEchoRQ", "CEcho Request", 0x0030, false};
inline constexpr DIMSEMessage kCEchoRSP = {"CEchoRSP", "CEchoRSP Response", 0x8030, false};

// One entry under TNTraceDimsec: a line for each of the two that is not null, with a dump of it under
// TNTraceDimsecDicomObjects.
void TraceWritten(const DIMSEMessage& theMessage, const DICOMCommandObject* theCommand,
                  const DICOMDataObject* theDataset);
void TraceRead(const DIMSEMessage& theMessage, const DICOMCommandObject* theCommand, const DICOMDataObject* theDataset);
void TraceWriting(const DIMSEMessage& theMessage, const char* theOutcome); // no dump

// The same for a request whose data set is streamed, under the name of who sends it: the command set, or its outcome.
void TraceWrittenBy(const char* thePrefix, const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand);
void TraceWritingBy(const char* thePrefix, const char* theOutcome);

bool IsMessage(const DICOMCommandObject& theCommand, UINT16 theField);
bool HasDataset(const DICOMCommandObject& theCommand);

// A message that goes without a data set, as an answer to Read. Sets no result code.
int RecogniseMessage(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand);

// The same with TN_COMMAND_NOT_SUPPORTED, or TN_DATASET_MISSING, for a command set that is another message, or one that
// announces no data set.
bool RequireMessage(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand, PDU_Service& theService);
bool RequireDataset(const DICOMCommandObject& theCommand, PDU_Service& theService);

// Read the data set behind a command set: a request must have one, a response may.
int ReadRequest(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand, PDU_Service& theService,
                DICOMDataObject& theDataset);
int ReadResponse(const DIMSEMessage& theMessage, const DICOMCommandObject& theCommand, PDU_Service& theService,
                 DICOMDataObject& theDataset);

// Sends a request with its data set, which share a PDU, on a context of theSOPClass.
int SendRequest(PDU_Service& theService, DICOMCommandObject& theCommand, DICOMDataObject& theDataset,
                const UID& theSOPClass);

// Sends one object of a response on the current context.
int SendResponse(PDU_Service& theService, DICOMObject& theObject, int theFinishPDU);

// Replaces theSOPClass by the one that theRequest names in theElement. False when the request has no such element; an
// empty one changes nothing.
bool TakeRequestSOPClass(const DICOMCommandObject& theRequest, UID& theSOPClass,
                         UINT16 theElement = CommandElement::AffectedSOPClassUID);

// The SOP class of the service that theClass serves, TN_SOP_CLASS_UNSUPPORTED when it has none.
template <class MessageClass>
bool FindSOPClass(const MessageClass& theClass, PDU_Service& theService, UID& theSOPClass)
{
   if (theClass.GetUID(theSOPClass))
   {
      return true;
   }
   theService.SetResultCode(TN_SOP_CLASS_UNSUPPORTED);
   return false;
}

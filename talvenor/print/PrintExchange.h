// What every operation of a print SCU does: send a request, read the next command, see whether it is the response, look
// at its status, and tell the host's error callback what went wrong. Not part of the library's interface.
#pragma once

#include <functional>

#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/foundation/ErrorDescription.h"
#include "talvenor/print/PrintStatusTexts.h"

class AbstractPrintManagementMeta;
class PDU_Service;

// An operation of a message class, a row each.
struct PrintOperation
{
   const char* itsClass;
   const char* itsMethod;
   const char* itsWriteFailed;
   const char* itsReadFailed;
   const char* itsUnexpected; // another message than the response
   const char* itsNoStatus;
   ErrorDescription::Operation itsWrite; // of the request
   ErrorDescription::Operation itsRead;  // of the response
   UINT16 itsResponseField;
   PrintStatusColumn itsColumn;
};

class PrintExchange
{
public:
   enum Outcome
   {
      Failed = 0,
      Done = 1,
      Overtaken = 2 // by an event report, which was handled: the response has not come
   };

   // All are borrowed.
   PrintExchange(const PrintOperation& theOperation, PDU_Service& theService, AbstractPrintManagementMeta& theMeta);

   // theRead reads the data set of the response, if it has one.
   Outcome Run(const std::function<int()>& theWrite,
               const std::function<int(const DICOMCommandObject& theResponse, DICOMDataObject& theDataset)>& theRead);

   // Of the response.
   const DICOMCommandObject& GetCommand() const { return itsCommand; }
   DICOMDataObject& GetDataset() { return itsDataset; }

private:
   bool ReadNextCommand(UINT16 theRequestID);
   const PrintOperation* TakeOwedResponse(UINT16 theRequestID);
   bool IsOwedResponseFine(const PrintOperation& theOperation);
   Outcome TakeOtherMessage(UINT16 theRequestID);
   Outcome TakeStatus();
   Outcome Report(int theLine, const char* theMessage, ErrorDescription::ErrorType theType,
                  ErrorDescription::Operation theOperation, UINT16 theStatus = 0, bool theHasResponse = false);
   Outcome ReportStatus(int theLine, const PrintOperation& theOperation, UINT16 theStatus);
   Outcome Report(const ErrorDescription& theError);

   const PrintOperation& itsOperation;
   PDU_Service& itsService;
   AbstractPrintManagementMeta& itsMeta;
   DICOMCommandObject itsCommand;
   DICOMDataObject itsDataset;
};

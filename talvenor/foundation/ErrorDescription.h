// A record that describes one failure of a DIMSE operation, as the error callback of print management gets it. It holds
// pointers only: whoever supplies the texts and the datasets keeps them alive as long as the record is used. A text is
// never null; null given is stored as an empty text.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMObject;

class TALVENOR_API ErrorDescription
{
public:
   // The values may be stored by hosts and stay as they are.
   enum ErrorType
   {
      NoError = 0,
      OtherError = 1,         // found before anything was sent
      ReadFailed = 2,         // the association ended, or the next message cannot be read
      MissingStatus = 3,      // a response without one
      UnexpectedResponse = 4, // another message than the response
      WriteFailed = 5,
      InvalidResponse = 6, // the response, with contents that it must not have
      Warning = 7,         // the status of the response, as the next two
      Failure = 8,
      UnknownStatus = 9
   };

   // What was under way: for each DIMSE-N service the request sent, the response read, the request read and the
   // response sent, in that order.
   enum Operation
   {
      NoOperation = 1,
      PDURead = 2, // the next message, whatever it is
      PDUWrite = 3,
      NActionRequestWrite = 5,
      NActionResponseRead = 6,
      NActionRequestRead = 7,
      NActionResponseWrite = 8,
      NCreateRequestWrite = 9,
      NCreateResponseRead = 10,
      NCreateRequestRead = 11,
      NCreateResponseWrite = 12,
      NDeleteRequestWrite = 13,
      NDeleteResponseRead = 14,
      NDeleteRequestRead = 15,
      NDeleteResponseWrite = 16,
      NEventReportRequestWrite = 17,
      NEventReportResponseRead = 18,
      NEventReportRequestRead = 19,
      NEventReportResponseWrite = 20,
      NGetRequestWrite = 21,
      NGetResponseRead = 22,
      NGetRequestRead = 23,
      NGetResponseWrite = 24,
      NSetRequestWrite = 25,
      NSetResponseRead = 26,
      NSetRequestRead = 27,
      NSetResponseWrite = 28
   };

   ErrorDescription() = default;
   ErrorDescription(const char* theFile, INT32 theLine, const char* theClass, const char* theMethod,
                    const char* theMessage, ErrorType theErrorType, Operation theOperation, UINT16 theDICOMStatus,
                    const DICOMObject* theResponseCommand, const DICOMObject* theResponseDataset);
   ErrorDescription(const ErrorDescription& theOther) { InternalAssign(theOther); }
   ErrorDescription& operator=(const ErrorDescription& theOther)
   {
      if (this != &theOther)
      {
         InternalAssign(theOther);
      }
      return *this;
   }

   // Where the failure arose: source file, line, class and method.
   const char* GetFile() const { return itsFile; }
   void SetFile(const char* theFile) { itsFile = NeverNull(theFile); }
   INT32 GetLine() const { return itsLine; }
   void SetLine(INT32 theLine) { itsLine = theLine; }
   const char* GetClass() const { return itsClass; }
   void SetClass(const char* theClass) { itsClass = NeverNull(theClass); }
   const char* GetMethod() const { return itsMethod; }
   void SetMethod(const char* theMethod) { itsMethod = NeverNull(theMethod); }

   const char* GetMessage() const { return itsMessage; }
   void SetMessage(const char* theMessage) { itsMessage = NeverNull(theMessage); }
   Operation GetOperation() const { return itsOperation; }
   void SetOperation(Operation theOperation) { itsOperation = theOperation; }
   ErrorType GetErrorType() const { return itsErrorType; }
   void SetErrorType(ErrorType theErrorType) { itsErrorType = theErrorType; }

   // The status of the response, 0 if there is none; its command set and dataset, borrowed, null if there is none.
   UINT16 GetDICOMStatus() const { return itsDICOMStatus; }
   void SetDICOMStatus(UINT16 theStatus) { itsDICOMStatus = theStatus; }
   const DICOMObject* GetResponseCommand() const { return itsResponseCommand; }
   void SetResponseCommand(const DICOMObject* theCommand) { itsResponseCommand = theCommand; }
   const DICOMObject* GetResponseDataset() const { return itsResponseDataset; }
   void SetResponseDataset(const DICOMObject* theDataset) { itsResponseDataset = theDataset; }

protected:
   // Copies every field, pointers as pointers.
   void InternalAssign(const ErrorDescription& theOther);

private:
   static const char* NeverNull(const char* theText) { return theText ? theText : ""; }

   const char* itsFile = "";
   INT32 itsLine = 0;
   const char* itsClass = "";
   const char* itsMethod = "";
   const char* itsMessage = "";
   Operation itsOperation = NoOperation;
   ErrorType itsErrorType = NoError;
   UINT16 itsDICOMStatus = 0;
   const DICOMObject* itsResponseCommand = nullptr;
   const DICOMObject* itsResponseDataset = nullptr;
};

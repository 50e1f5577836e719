// A record in which a print host describes one failure of a DIMSE operation to its error callback. It holds pointers
// only: whoever supplies the texts and the datasets keeps them alive as long as the record is used. A text is never
// null; null given is stored as an empty text. The library itself neither fills nor reads the record.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMObject;

class TALVENOR_API ErrorDescription
{
public:
   // The values may be stored by hosts and stay as they are.
   enum ErrorType
   {
      UnknownError = 0,
      LocalError = 1,     // found before anything was sent
      TransportError = 2, // the association or connection failed
      ProtocolError = 3,  // the peer answered with something unexpected
      StatusError = 4     // the peer answered with a failure status
   };

   // The DIMSE services of PS3.7 in the order of its chapters.
   enum Operation
   {
      UnknownOperation = 0,
      CStore = 1,
      CGet = 2,
      CMove = 3,
      CFind = 4,
      CEcho = 5,
      NEventReport = 6,
      NGet = 7,
      NSet = 8,
      NAction = 9,
      NCreate = 10,
      NDelete = 11
   };

   ErrorDescription() = default;
   ErrorDescription(const char* theFile, INT32 theLine, const char* theClass, const char* theMethod,
                    const char* theMessage, ErrorType theErrorType, Operation theOperation, UINT16 theDICOMStatus,
                    const DICOMObject* theResponseCommand, const DICOMObject* theResponseDataset);
   ErrorDescription(const ErrorDescription& theOther) { InternalAssign(theOther); }
   ErrorDescription& operator=(const ErrorDescription& theOther)
   {
      InternalAssign(theOther);
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
   Operation itsOperation = CStore;
   ErrorType itsErrorType = UnknownError;
   UINT16 itsDICOMStatus = 0;
   const DICOMObject* itsResponseCommand = nullptr;
   const DICOMObject* itsResponseDataset = nullptr;
};

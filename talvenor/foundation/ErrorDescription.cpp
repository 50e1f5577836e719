#include "talvenor/foundation/ErrorDescription.h"

ErrorDescription::ErrorDescription(const char* theFile, INT32 theLine, const char* theClass, const char* theMethod,
                                   const char* theMessage, ErrorType theErrorType, Operation theOperation,
                                   UINT16 theDICOMStatus, const DICOMObject* theResponseCommand,
                                   const DICOMObject* theResponseDataset)
    : itsFile(NeverNull(theFile)), itsLine(theLine), itsClass(NeverNull(theClass)), itsMethod(NeverNull(theMethod)),
      itsMessage(NeverNull(theMessage)), itsOperation(theOperation), itsErrorType(theErrorType),
      itsDICOMStatus(theDICOMStatus), itsResponseCommand(theResponseCommand), itsResponseDataset(theResponseDataset)
{}

void ErrorDescription::InternalAssign(const ErrorDescription& theOther)
{
   itsFile = theOther.itsFile;
   itsLine = theOther.itsLine;
   itsClass = theOther.itsClass;
   itsMethod = theOther.itsMethod;
   itsMessage = theOther.itsMessage;
   itsOperation = theOther.itsOperation;
   itsErrorType = theOther.itsErrorType;
   itsDICOMStatus = theOther.itsDICOMStatus;
   itsResponseCommand = theOther.itsResponseCommand;
   itsResponseDataset = theOther.itsResponseDataset;
}

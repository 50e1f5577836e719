// The answers to one C-FIND request (PS3.7 9.1.2). Each match is sent as it is found, so that nothing is collected
// however many there are, and a request of the peer to cancel is heeded between two of them.
#pragma once

#include <string>

#include "talvenor/dimse/CFindRQ.h"
#include "talvenor/dimse/CFindRSP.h"
#include "talvenor/foundation/BasicTypes.h"

class QueryAnswers : private CFindRQ, private CFindRSP
{
public:
   // Both are borrowed.
   QueryAnswers(PDU_Service& theService, const DICOMCommandObject& theRequest);

   // 0 when the request is none, or its identifier cannot be read: the association cannot go on.
   int ReadIdentifier(DICOMDataObject& theIdentifier) const;

   // Sends a match; theIsFull says that all keys of the identifier were matched. False when no more are wanted: the
   // peer has cancelled, or nothing can be sent to it.
   bool SendMatch(DICOMDataObject& theMatch, bool theIsFull = true);

   // Whether no more matches are wanted, for those who look for them long: the peer has cancelled, or has sent what is
   // not understood.
   bool IsOver() { return itsIsCancelled || itsIsLost || HasCancelled(); }

   // The last answer: Success, or Cancel. 0 when it cannot be sent.
   int Finish();

   // The last answer, with a failure. 0 when it cannot be sent.
   int Refuse(UINT16 theStatus, const std::string& theComment) const;

   unsigned long GetCount() const { return itsCount; }

private:
   int GetUID(UID& theUID) const override;
   bool HasCancelled();

   PDU_Service& itsService;
   const DICOMCommandObject& itsRequest;
   unsigned long itsCount = 0;
   bool itsIsCancelled = false;
   bool itsIsLost = false;
};

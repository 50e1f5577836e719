// One C-MOVE as its provider goes through it (PS3.4 C.4.2.2): the destination gets the instances one after the other,
// the requester a response after each of them. Not part of the library's interface.
#pragma once

#include <cstddef>

#include "talvenor/services/QueryAnswer.h"
#include "talvenor/services/StandardRetrieve.h"

class InputStream;
class OutputStream;
class OutputTransferSyntax;
class RunTimeClassStorage;

// What the requester was answered at last.
struct RetrieveOutcome
{
   UINT16 itsStatus = QueryStatus::kSuccess;
   RWCString itsComment;
   unsigned int itsCompleted = 0;
   unsigned int itsFailed = 0;
};

class RetrieveOperation
{
public:
   // All are borrowed.
   RetrieveOperation(StandardRetrieve& theRetrieve, PDU_Service& theMoveService, PDU_Service& theStoreService,
                     const DICOMCommandObject& theCommand);

   // For a command that is for theSOPClass. 0 unless the response to the whole was sent.
   int Run(const UID& theSOPClass);

   // Afterwards.
   const RetrieveOutcome& GetOutcome() const { return itsOutcome; }

private:
   using Progress = StandardRetrieve::CMoveProgressType;
   struct Instance;

   struct Destination
   {
      RWCString itsTitle;
      RWCString itsCallingTitle;
      RWCString itsHost;
      RWCString itsPort;
   };

   // The operation as a whole.
   bool FindDestination();
   bool AskForDestination();
   bool FindMatches(const UID& theSOPClass);
   bool IsCancelled();
   void Move(const DICOMDataObject* theMatch);
   int Finish();
   void NoteFailure(const DICOMDataObject* theMatch);
   int SendPending();
   int SendFinal();
   bool AddFailedInstances(DICOMDataObject& theIdentifier) const;
   bool Refuse(Progress theProgress, UINT16 theStatus, const RWCString& theComment);
   void Tell(PDU_Service& theService, Progress theProgress, const DICOMObject& theObject, UINT16 theStatus = 0,
             const RWCString& theMessage = RWCString(), unsigned int theSize = 0);

   // One sub-operation, RetrieveOperationStore.cpp. They return whether it goes on well; when not, it has been told.
   bool Store(const DICOMDataObject* theMatch);
   bool Open(const DICOMDataObject* theMatch, Instance& theInstance);
   bool IsOpened(const DICOMDataObject* theMatch, Instance& theInstance);
   bool Connect(const DICOMDataObject* theMatch, Instance& theInstance);
   bool Send(const DICOMDataObject* theMatch, Instance& theInstance, RunTimeClassStorage& theStorage);
   void SendStored(InputStream& theDataset, OutputStream& theOutput);
   void SendDataset(Instance& theInstance, OutputTransferSyntax& theOutput);
   void SendDecompressed(Instance& theInstance, OutputTransferSyntax& theOutput, VR& thePixels);
   bool TakeAnswer(const Instance& theInstance, RunTimeClassStorage& theStorage);
   bool FailWithoutAnswer(const Instance& theInstance);
   bool Fail(const DICOMDataObject* theMatch, const RWCString& theReason);
   void NoteException();
   void EndStoreAssociation();

   StandardRetrieve& itsRetrieve;
   PDU_Service& itsMoveService;
   PDU_Service& itsStoreService;
   const DICOMCommandObject& itsCommand;
   DICOMDataObject itsIdentifier;
   Destination itsDestination;
   QueryAnswer itsAnswer;
   std::size_t itsRemaining = 0;
   unsigned int itsCompleted = 0;
   unsigned int itsFailed = 0;
   RWTValOrderedVector<RWCString> itsFailedInstances;
   bool itsHasStoreFailed = false; // no more is sent
   bool itsWasStoreRefused = false;
   bool itsHasResponseFailed = false;
   bool itsIsCancelled = false;
   RetrieveOutcome itsOutcome;
};

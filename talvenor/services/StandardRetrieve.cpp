#include "talvenor/services/StandardRetrieve.h"

#include "talvenor/association/PresentationContextUsageManager.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/services/QueryExchange.h"
#include "talvenor/services/RetrieveOperation.h"
#include "talvenor/services/ServiceRequest.h"
#include "talvenor/ul/DULStreamFactory.h"

namespace
{
constexpr char kApplicationContext[] = "1.2.840.10008.3.1.1.1"; // PS3.7 A.2.1
constexpr unsigned int kMostContexts = 128;                     // of one association, PS3.8 9.3.2.2

struct StoreConnection
{
   const RWCString& itsHost;
   const RWCString& itsPort;
   const RWCString& itsCallingTitle;
   const RWCString& itsCalledTitle;
};

// Null with the cause as the result of theService.
DULStream* OpenStream(PDU_Service& theService, const StoreConnection& theConnection)
{
   try
   {
      return theService.GetDULStreamFactory().GetConnectedDULStream(theConnection.itsHost, theConnection.itsPort);
   }
   catch (const StreamIOException& anException)
   {
      theService.SetResultCode(anException.GetResultCode());
      theService.SetSystemErrorCode(anException.GetSystemErrorCode());
   }
   catch (...)
   {
      theService.SetResultCode(TN_INTERNAL_ERROR);
      theService.SetSystemErrorCode(0);
   }
   return nullptr;
}

bool Request(PDU_Service& theService, const StoreConnection& theConnection, const RWCString& theAbstractSyntax,
             const RWCString& theTransferSyntax)
{
   theService.Close();
   theService.ClearProposedPresentationContexts();
   auto* aProposals = new PDU_Service::ProposalList;
   PresentationContextUsageManager::GetInstance().GetBestProposals(
       *aProposals, kMostContexts, theConnection.itsCalledTitle, theAbstractSyntax, theTransferSyntax);
   theService.SetProposedPresentationContexts(aProposals);
   theService.SetApplicationContext(UID(kApplicationContext));
   theService.SetLocalAddress(theConnection.itsCallingTitle);
   theService.SetRemoteAddress(theConnection.itsCalledTitle);
   DULStream* const aStream = OpenStream(theService, theConnection);
   return aStream != nullptr && theService.RequestAssociation(aStream) && theService.Connected();
}

// An association that a host keeps may lead to the destination of an earlier C-MOVE: an instance must never go to
// another node than it was meant for. One whose peer has no name is the host's own choice.
bool LeadsTo(const PDU_Service& theService, const RWCString& theTitle)
{
   const AETitle aPeer(theService.GetRemoteAddress());
   return theService.Connected() && (aPeer.IsNull() || aPeer == AETitle(theTitle));
}
} // namespace

StandardRetrieve::~StandardRetrieve() = default;

int StandardRetrieve::GetUID(UID& theUID) const
{
   return uGetUID(theUID);
}

InputStream* StandardRetrieve::OpenStoredDataset()
{
   return nullptr;
}

bool StandardRetrieve::IsMoveCancelled(PDU_Service&)
{
   return false;
}

void StandardRetrieve::CMoveServiceProgressCallback(PDU_Service&, const DICOMObject&, unsigned int, UINT16,
                                                    const RWCString&, CMoveProgressType)
{}

int StandardRetrieve::Write(PDU_Service& theService, DICOMDataObject& theIdentifier, const AETitle& theMoveDestination)
{
   const QueryExchange anExchange = {
       [&] { return CMoveRQ::Write(theService, theIdentifier, theMoveDestination); },
       [&](const DICOMCommandObject& theResponse, DICOMDataObject& theFailures) {
          return CMoveRSP::Read(theResponse, theService, theFailures);
       },
       [&](DICOMCommandObject& theResponse, DICOMDataObject& theFailures, int theProgress) {
          CMoveProgressCallback(theService, theResponse, theFailures, theProgress);
       },
       false,
   };
   return anExchange.Run(theService, theIdentifier.GetEndian());
}

int StandardRetrieve::Read(PDU_Service& theMoveService, PDU_Service& theStoreService,
                           const DICOMCommandObject& theCommand, UINT16& theStatus, RWCString& theErrorComment,
                           unsigned int& theCompleted, unsigned int& theFailed, unsigned int& theWarning)
{
   theStatus = QueryStatus::kSuccess;
   theErrorComment.clear();
   theCompleted = 0;
   theFailed = 0;
   theWarning = 0;
   UID aSOPClass;
   if (!IsForProvider(*this, theCommand, theMoveService, aSOPClass))
   {
      return 0;
   }
   RetrieveOperation anOperation(*this, theMoveService, theStoreService, theCommand);
   const int isAnswered = anOperation.Run(aSOPClass);
   const RetrieveOutcome& anOutcome = anOperation.GetOutcome();
   theStatus = anOutcome.itsStatus;
   theErrorComment = anOutcome.itsComment;
   theCompleted = anOutcome.itsCompleted;
   theFailed = anOutcome.itsFailed;
   return isAnswered;
}

TNResultCode StandardRetrieve::GetConnected(PDU_Service& theStoreService, const RWCString& theHost,
                                            const RWCString& thePort, const RWCString& theCallingTitle,
                                            const RWCString& theCalledTitle, const RWCString& theAbstractSyntax,
                                            const RWCString& theTransferSyntax, int theForceNew,
                                            const UsablePresentationContext*& theContext)
{
   const StoreConnection aConnection = {theHost, thePort, theCallingTitle, theCalledTitle};
   const auto aFindContext = [&] {
      theContext = theStoreService.GetBestPresentationContext(theAbstractSyntax, theTransferSyntax, true);
      return theContext != nullptr;
   };
   if (!theForceNew && LeadsTo(theStoreService, theCalledTitle) && aFindContext())
   {
      return TN_NO_ERROR;
   }
   // The second time it is known what the destination rejects, and it is asked to take something else.
   constexpr int kAttempts = 2;
   for (int i = 0; i < kAttempts; ++i)
   {
      if (!Request(theStoreService, aConnection, theAbstractSyntax, theTransferSyntax))
      {
         return TN_NOT_CONNECTED;
      }
      if (aFindContext())
      {
         return TN_NO_ERROR;
      }
   }
   return TN_NO_CONTEXT_FOR_SYNTAXES;
}

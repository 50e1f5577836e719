#include "apps/tn/query/QuerySession.h"

#include <memory>
#include <sstream>

#include "apps/tn/base/CharacterSet.h"
#include "apps/tn/base/ElementValues.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/Interruption.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/network/AssociationAnswers.h"
#include "apps/tn/network/NetworkFailure.h"
#include "talvenor/association/PresentationContextProposals.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/services/StandardQuery.h"
#include "talvenor/services/StandardRetrieve.h"
#include "talvenor/transfer/TransferSyntaxType.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{
constexpr UINT16 kCancelRequest = 0x0FFF; // C-CANCEL-RQ, PS3.7 E.1
constexpr UINT16 kNoDataset = 0x0101;
constexpr UINT64 kLongestMatch = 16 << 20; // bytes: what the peer sends is held in memory
constexpr UINT32 kDataSetType = 0x00000800;
constexpr UINT32 kRemaining = 0x00001020;
constexpr UINT32 kCompleted = 0x00001021;
constexpr UINT32 kFailed = 0x00001022;
constexpr UINT32 kWarning = 0x00001023;
constexpr UINT32 kFailedInstances = 0x00080058;

void Propose(PDU_Service& theService, const std::string& theSOPClass)
{
   auto aProposals = std::make_unique<PresentationContextProposals>(theSOPClass);
   aProposals->AddTransferSyntaxList(new PresentationContextProposals::TransferSyntaxList{
       TransferSyntaxType::TSLEExplicitUID, TransferSyntaxType::TSLEImplicitUID});
   theService.AddPresentationContextProposals(aProposals.release());
}

void PushUS(DICOMCommandObject& theCommand, UINT32 theTag, UINT16 theValue)
{
   auto aVR = std::make_unique<VR>(GroupOf(theTag), ElementOf(theTag), theCommand.GetEndian());
   UINT16 aStored = 0;
   TNEndian::Store(&aStored, theValue, theCommand.GetEndian());
   aVR->SetTypeCode(VRCode::US);
   aVR->SetData(&aStored, sizeof aStored, '\0');
   theCommand.DICOMObject::Push(aVR.release());
}

// Unchanged when the response does not tell.
void TakeCount(const DICOMCommandObject& theResponse, UINT32 theTag, unsigned int& theCount)
{
   UINT16 aCount = 0;
   if (theResponse.GetUINT16(GroupOf(theTag), ElementOf(theTag), aCount))
   {
      theCount = aCount;
   }
}
} // namespace

// What an operation is about, and how far it is.
struct QuerySession::Exchange
{
   std::function<bool(const DICOMDataObject&, const QueryOutcome&)> itsTell;
   QueryOutcome itsOutcome;
   bool itsHasEnded = false; // with a final response
   bool itsIsCancelling = false;
   std::string itsFault; // of a response that cannot be understood
};

class QuerySession::FindOperation : public StandardQuery
{
public:
   FindOperation(QuerySession& theSession, const std::string& theSOPClass, Exchange& theExchange)
       : itsSession(theSession), itsSOPClass(theSOPClass), itsExchange(theExchange)
   {}

private:
   int uGetUID(UID& theUID) const override
   {
      theUID = itsSOPClass;
      return 1;
   }
   void CFindProgressCallback(PDU_Service&, DICOMCommandObject& theResponse, DICOMDataObject& theIdentifier,
                              int theProgress) override
   {
      itsSession.Take(itsExchange, theResponse, theIdentifier, theProgress);
   }
   int DoQuery(DICOMDataObject&, int, const RWCString&, RWTValOrderedVector<DICOMDataObject*>&, UINT16&, RWCString&,
               RWTValOrderedVector<MAttributeTag>&) override
   {
      return 0; // a requester is not asked
   }

   QuerySession& itsSession;
   const UID itsSOPClass;
   Exchange& itsExchange;
};

class QuerySession::MoveOperation : public StandardRetrieve
{
public:
   MoveOperation(QuerySession& theSession, const std::string& theSOPClass, Exchange& theExchange)
       : itsSession(theSession), itsSOPClass(theSOPClass), itsExchange(theExchange)
   {}

private:
   int uGetUID(UID& theUID) const override
   {
      theUID = itsSOPClass;
      return 1;
   }
   void CMoveProgressCallback(PDU_Service&, DICOMCommandObject& theResponse, DICOMDataObject& theIdentifier,
                              int theProgress) override
   {
      itsSession.Take(itsExchange, theResponse, theIdentifier, theProgress);
   }
   // A requester is not asked for what follows.
   int DoQuery(DICOMDataObject&, int, const RWCString&, RWTValOrderedVector<DICOMDataObject*>&, UINT16&, RWCString&,
               RWTValOrderedVector<MAttributeTag>&) override
   {
      return 0;
   }
   int RetrieveHeader(const DICOMDataObject*, DICOMDataObject&, InputTransferSyntax*&, const TransferSyntaxType*&,
                      unsigned int&) override
   {
      return 1;
   }
   void DoStreamingDecompression(DICOMDataObject&, const TransferSyntaxType*, PixelDataFragmentInputStreamVR*,
                                 VR*&) override
   {}
   int GetMoveDestination(const RWCString&, RWCString&, RWCString&, RWCString&) override { return 0; }

   QuerySession& itsSession;
   const UID itsSOPClass;
   Exchange& itsExchange;
};

std::string QueryOutcome::Text(StatusService theService) const
{
   return DescribeStatus(theService, itsStatus) + (itsComment.empty() ? "" : ": " + itsComment);
}

QuerySession::QuerySession(const Requester& theRequester, const std::vector<std::string>& theSOPClasses)
    : itsRequester(theRequester), itsService(SocketDULStreamFactory::GetInstance())
{
   for (const std::string& aSOPClass : theSOPClasses)
   {
      Propose(itsService, aSOPClass);
   }
   itsService.SetLongestDataset(kLongestMatch);
   itsRequester.Associate(itsService, itsWatchdog);
}

QuerySession::~QuerySession()
{
   itsRequester.Abort(itsService, itsWatchdog);
}

QueryOutcome QuerySession::Find(const std::string& theSOPClass, DICOMDataObject& theIdentifier,
                                const Matches& theMatches)
{
   Exchange anExchange;
   anExchange.itsTell = [&](const DICOMDataObject& theMatch, const QueryOutcome&) { return theMatches(theMatch); };
   Begin();
   FindOperation(*this, theSOPClass, anExchange).Write(itsService, theIdentifier);
   return End(anExchange);
}

QueryOutcome QuerySession::Move(const std::string& theSOPClass, DICOMDataObject& theIdentifier,
                                const std::string& theDestination, const Moves& theMoves)
{
   Exchange anExchange;
   anExchange.itsTell = [&](const DICOMDataObject&, const QueryOutcome& theOutcome) { return theMoves(theOutcome); };
   Begin();
   MoveOperation(*this, theSOPClass, anExchange)
       .StandardRetrieve::Write(itsService, theIdentifier, AETitle(theDestination));
   return End(anExchange);
}

void QuerySession::Begin()
{
   itsWatchdog.Begin(itsRequester.GetTimeout());
}

QueryOutcome QuerySession::End(const Exchange& theExchange)
{
   const bool wasLate = itsWatchdog.End();
   if (theExchange.itsHasEnded)
   {
      return theExchange.itsOutcome;
   }
   const NetworkFailure aFailure = theExchange.itsFault.empty()
                                       ? itsRequester.ExplainFailure(itsService, wasLate)
                                       : NetworkFailure(ExitCode::kPeerFailed, theExchange.itsFault);
   itsRequester.Abort(itsService, itsWatchdog);
   throw aFailure;
}

void QuerySession::Take(Exchange& theExchange, DICOMCommandObject& theResponse, DICOMDataObject& theIdentifier,
                        int theProgress)
{
   QueryOutcome& anOutcome = theExchange.itsOutcome;
   switch (theProgress)
   {
   case QueryNoStatus: theExchange.itsFault = "the answer has no status"; return;
   case QueryPending:
   case QueryPendingWarning:
   case QuerySucceeded:
   case QueryFailed: break;
   default: return;
   }
   anOutcome.itsStatus = theResponse.GetUINT16(0, ElementOf(CommandTag::kStatus));
   anOutcome.itsComment = TextOf(theResponse, CommandTag::kErrorComment);
   TakeCount(theResponse, kRemaining, anOutcome.itsRemaining);
   TakeCount(theResponse, kCompleted, anOutcome.itsCompleted);
   TakeCount(theResponse, kFailed, anOutcome.itsFailed);
   TakeCount(theResponse, kWarning, anOutcome.itsWarning);
   if (theProgress == QuerySucceeded || theProgress == QueryFailed)
   {
      theExchange.itsHasEnded = true;
      if (const VR* const aList = FindVR(theIdentifier, kFailedInstances))
      {
         anOutcome.itsFailedInstances = ValuesOf(*aList, CharacterSetOf(theIdentifier));
      }
      return;
   }
   anOutcome.itsHasUnsupportedKeys = anOutcome.itsHasUnsupportedKeys || theProgress == QueryPendingWarning;
   if (theExchange.itsIsCancelling)
   {
      anOutcome.itsIsCut = true;
      return; // and the time that the peer has for its last response goes on
   }
   itsWatchdog.Begin(itsRequester.GetTimeout());
   if (!theExchange.itsTell(theIdentifier, anOutcome) || Interruption::HasCome())
   {
      Cancel(theExchange, theResponse);
   }
}

// The peer may have sent all it has already: then the last response tells success, and is taken as one.
void QuerySession::Cancel(Exchange& theExchange, const DICOMCommandObject& theResponse)
{
   DICOMCommandObject aRequest;
   PushUS(aRequest, CommandTag::kCommandField, kCancelRequest);
   PushUS(aRequest, CommandTag::kMessageIDBeingRespondedTo,
          theResponse.GetUINT16(0, ElementOf(CommandTag::kMessageIDBeingRespondedTo)));
   PushUS(aRequest, kDataSetType, kNoDataset);
   theExchange.itsIsCancelling = true;
   theExchange.itsOutcome.itsIsCancelled = true;
   itsService.Write(aRequest, itsService.GetCurrentPresentationContextID(), 1); // a failure shows in the next read
}

void QuerySession::Release()
{
   itsWatchdog.Begin(itsRequester.GetTimeout());
   itsService.Close();
   itsWatchdog.End();
}

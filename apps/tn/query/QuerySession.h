// An association on which a peer is asked for matches and for sub-operations (C-FIND and C-MOVE as SCU, PS3.4 C). The
// time-out of the requester is for each response. What ends the association early throws NetworkFailure; it has been
// aborted then.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "apps/tn/network/Requester.h"
#include "apps/tn/network/StatusText.h"
#include "apps/tn/network/Watchdog.h"
#include "talvenor/association/PDU_Service.h"

class DICOMCommandObject;
class DICOMDataObject;

// How a peer has answered at last.
struct QueryOutcome
{
   UINT16 itsStatus = 0;
   std::string itsComment;      // the peer's, may be empty
   bool itsIsCancelled = false; // because we asked for it
   bool itsIsCut = false;       // matches came after that
   bool itsHasUnsupportedKeys = false;
   unsigned int itsRemaining = 0; // numbers of sub-operations, as last told
   unsigned int itsCompleted = 0;
   unsigned int itsFailed = 0;
   unsigned int itsWarning = 0;
   std::vector<std::string> itsFailedInstances;

   StatusKind Kind() const { return KindOfStatus(itsStatus); }

   // The status in words, with the peer's comment.
   std::string Text(StatusService theService) const;
};

class QuerySession
{
public:
   // Whether to go on. When not, the operation is cancelled (PS3.7 9.3.2.3) and what still comes is not shown.
   using Matches = std::function<bool(const DICOMDataObject& theMatch)>;
   using Moves = std::function<bool(const QueryOutcome& theOutcome)>;

   // Connects and proposes theSOPClasses. theRequester is borrowed.
   QuerySession(const Requester& theRequester, const std::vector<std::string>& theSOPClasses);
   ~QuerySession();

   QueryOutcome Find(const std::string& theSOPClass, DICOMDataObject& theIdentifier, const Matches& theMatches);
   QueryOutcome Move(const std::string& theSOPClass, DICOMDataObject& theIdentifier, const std::string& theDestination,
                     const Moves& theMoves);

   // Leaves the peer; that it does not answer to that is no failure.
   void Release();

private:
   class FindOperation;
   class MoveOperation;
   struct Exchange;

   void Begin();
   QueryOutcome End(const Exchange& theExchange);
   void Take(Exchange& theExchange, DICOMCommandObject& theResponse, DICOMDataObject& theIdentifier, int theProgress);
   void Cancel(Exchange& theExchange, const DICOMCommandObject& theResponse);

   const Requester& itsRequester;
   PDU_Service itsService;
   Watchdog itsWatchdog; // of the service's socket
};

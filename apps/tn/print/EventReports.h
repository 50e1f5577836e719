// The events of printer and print jobs that a client is told of (PS3.4 H.4.5.2.1, H.4.6.2.1): one at a time, the next
// one when the client has answered the one before (PS3.7 D.3.3.3: one operation at a time, unless more are negotiated).
// The answers come when the client likes, between its requests.
#pragma once

#include <deque>
#include <string>

#include "talvenor/dictionary/UID.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class PDU_Service;
class StandardStatus;

class EventReports
{
public:
   struct Event
   {
      const StandardStatus* itsMessages; // of printer or print job; borrowed
      UID itsInstance;
      UINT16 itsType;
      UINT32 itsInfoTag;
      std::string itsInfo;
      std::string itsPrinter; // its name
   };

   // Sends theEvent, at once or when it is its turn. A client that leaves very many unanswered is told no more.
   void Report(PDU_Service& theService, Event theEvent);

   // Takes the answer to an event, and sends the next one. False when theCommand is none, or none is awaited.
   bool TakeAnswer(PDU_Service& theService, const DICOMCommandObject& theCommand);

private:
   void SendFirst(PDU_Service& theService) const;

   std::deque<Event> itsEvents; // the first one has been sent
};

// A print session with a printer (PS3.4 H as SCU): the association, one film at a time or all films at once, and what
// the printer says meanwhile. Of a film, its images are in memory until the printer has them.
//
// The time-out of the requester is for each response. What ends the session early throws NetworkFailure, with the words
// of the printer; the association has been aborted then.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "apps/tn/network/Requester.h"
#include "apps/tn/network/Watchdog.h"
#include "talvenor/association/PDU_Service.h"

class AbstractFilmBox;
class AbstractPrintManagementMeta;
class DICOMDataObject;

// Attributes of a film session or a film box: tag, and value as text.
using PrintAttributes = std::vector<std::pair<UINT32, std::string>>;

class PrintSession
{
public:
   using Images = std::vector<std::unique_ptr<DICOMDataObject>>;
   using Teller = std::function<void(const std::string& theText)>;

   // Connects. theRequester is borrowed; theTell is told warnings of the printer, and its events.
   PrintSession(const Requester& theRequester, bool theIsColour, PrintAttributes theSession, Teller theTell);
   ~PrintSession();

   struct Status
   {
      std::string itsStatus; // NORMAL, WARNING or FAILURE (PS3.3 C.13.9)
      std::string itsInfo;   // why
      std::string itsName;
      std::string itsManufacturer;
      std::string itsModel;

      std::string Text() const;
   };
   Status AskPrinter();

   // Sends a film with the attributes theFilm. What fits on it is the caller's affair: the printer fills the boxes in
   // their order, and further ones stay empty.
   void SendFilm(const PrintAttributes& theFilm, Images theImages);

   // Print the film that was sent last and forget it, or all that were sent. Return what is known of the print job,
   // which may be nothing.
   std::string PrintFilm();
   std::string PrintAll();

   // Deletes the session at the printer and leaves it; that the printer does not like it is only told.
   void End();

private:
   class Meta;

   void Propose(bool theIsColour);
   void MakePresentationLUT();
   int WriteFilm(AbstractFilmBox& theFilm);
   std::string Print(bool theIsAll);
   std::string AskJob(const UID& theJob);
   template <class Action>
   int Watched(Action theAction);
   template <class Action>
   void Require(Action theAction);

   const Requester& itsRequester;
   Teller itsTell;
   PDU_Service itsService;
   Watchdog itsWatchdog; // of the service's socket
   std::unique_ptr<Meta> itsMeta;
   unsigned long itsEvents = 0;    // that the printer has reported
   std::string itsLastJob;         // instance UID
   std::string itsFault;           // what the printer refused
   std::string itsPresentationLUT; // instance UID; empty where there is none
   bool itsIsColour;
};

// Print management (PS3.4 H) in both roles: the film session of one print session on one association, with the messages
// to talk about each of its parts. The concrete classes (PrintManagementMetas.h) differ in the kind of image boxes. A
// host derives from one and implements the callbacks.
//
// As SCU it builds the tree of film boxes and image boxes and prints:
//
//    auto* const aFilm = new AbstractFilmBox(aMeta);           // with its attributes, as (2010,0010) STANDARD\2,3
//    aFilm->Add(new AbstractImageBox(aMeta));                  // with (2020,0010) and (2020,0110); six of them
//    aMeta.Add(aFilm);
//    UID aJob;
//    if (aMeta.PrintFilm(aService, aJob, 65535)) ...
//
// The association is established before; it needs a context for the meta SOP class, or contexts for the SOP classes of
// the parts, and contexts of their own for annotations, overlays, look-up tables, presentation LUTs and print jobs.
//
// As SCP it builds the same tree from requests, answers each, and calls ActionPrint and ActionPrintFilmBox:
//
//    while (aService.ReadCommand(aCommand)) aMeta.Read(aService, aCommand);
//
// Operations return non-zero for success and 0 for failure. What fails as SCU is told to ErrorCallback. As SCP a
// request that is refused is answered with its status and leaves the tree as it was; 0 with a result code of
// TN_SOP_CLASS_MISMATCH or TN_COMMAND_NOT_SUPPORTED says that the command is none of print management and nothing was
// sent.
//
// What a client can make an SCP hold is bounded: the image boxes of a film box, the film boxes, the look-up tables and
// overlays by number (the constants below), and everything together by SetMemoryLimit; a single data set is bounded by
// nothing but what the client really sends.
//
// One thread at a time, but for the busy marks.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "talvenor/foundation/ErrorDescription.h"
#include "talvenor/print/AbstractFilmSession.h"
#include "talvenor/print/PrintMessages.h"

struct PrintOperation;

class TALVENOR_API AbstractPrintManagementMeta : public AbstractFilmSession
{
public:
   static constexpr UINT16 kLastFilmBox = 65535;
   static constexpr unsigned int kMostImageBoxes = 400;           // of one film box, and annotation boxes likewise
   static constexpr unsigned int kMostFilmBoxes = 100;            // of the session
   static constexpr unsigned int kMostStandaloneBoxes = 100;      // look-up tables and overlays of the session
   static constexpr UINT64 kDefaultMemoryLimit = UINT64{1} << 30; // bytes

   // theMetaSOPClass is the one whose context serves the obligatory parts; empty when there is none.
   explicit AbstractPrintManagementMeta(const UID& theMetaSOPClass = UID());
   ~AbstractPrintManagementMeta() override;

   // The messages of presentation LUTs; null when they are not served.
   virtual PresentationLUTBox* GetPresentationLUTBox() = 0;

   // SCU: the printer or a print job has reported an event (PS3.4 H.4.6.2.2, H.4.5.2.2). The last argument is what was
   // set below.
   virtual void PrinterEventCallback(AbstractPrinter& thePrinter, DICOMDataObject& theInformation,
                                     UINT16 theEventTypeID, void* theUserArg) = 0;
   virtual void* SetPrinterEventUserArg(void* theArg); // returns the previous one
   virtual void PrintJobEventCallback(AbstractPrintJob& theJob, DICOMDataObject& theInformation, UINT16 theEventTypeID,
                                      void* theUserArg) = 0;
   virtual void* SetPrintJobEventUserArg(void* theArg); // returns the previous one

   // SCU: an operation has failed, or its response has a status other than Success. Non-zero lets it go on as if it had
   // succeeded, where there is a response. theError and what it points to are borrowed.
   virtual int ErrorCallback(const ErrorDescription& theError) = 0;

   // SCU: asks for the attributes that theAttributes has elements of, and replaces its contents by those of the
   // response.
   virtual int GetPrinter(PDU_Service& theService, DICOMDataObject& theAttributes);
   virtual int GetPrintJob(PDU_Service& theService, const UID& thePrintJob, DICOMDataObject& theAttributes);

   // The messages of the image boxes, and of VOI look-up tables; null when they are not served.
   virtual StandardBox* GetImageBox() = 0;
   virtual VOILUTBox* GetLUTBox() = 0;

   // SCP: take a command for the film session or a film box: theCommandField is 0x0120 (N-SET), 0x0130 (N-ACTION),
   // 0x0140 (N-CREATE) or 0x0150 (N-DELETE); 0 at once for any other. 1 when it was accepted and the tree changed.
   virtual int ReadBasicFilmSession(PDU_Service& theService, const DICOMCommandObject& theRequest,
                                    UINT16 theCommandField, const UID& theInstance);
   virtual int ReadBasicFilmBox(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theCommandField,
                                const UID& theInstance);

   // SCP: print. The client has been answered already. theInformation is the data set of the request, mostly empty. The
   // parts are busy until the action returns; a host that goes on in the background marks them itself.
   virtual int ActionPrintFilmBox(AbstractFilmBox* theFilmBox, DICOMDataObject& theInformation) = 0;
   virtual int ActionPrint(AbstractFilmSession* theSession, DICOMDataObject& theInformation); // 1 when there is one

   // SCP: whether requests for this SOP class are taken.
   virtual int AcceptSOPClass(const UID& theSOPClass);

   // Read and write the N-SET of an image box with the messages of GetImageBox.
   virtual int ReadBox(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
                       const PrintDecision& theDecision) = 0;
   virtual int WriteBox(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theBox) = 0;

   // An addition, for SCPs that have annotations: how many annotation boxes a film box with this format, the
   // Annotation Display Format ID (2010,0030), has. The base has none.
   virtual unsigned int GetAnnotationBoxCount(const RWCString& theFormat);

   // An addition, for SCPs that keep a print before they acknowledge it, or have print jobs: asked before the client is
   // told that the film box, or for null the whole session, is being printed. Its answer is the client's: a refusal is
   // not printed, and the data set may reference the print job (2100,0500). The base accepts with Success.
   virtual PrintAnswer AcceptPrint(const AbstractFilmBox* theFilmBox);

   // SCU. Write brings the printer up to date with the tree: what was sent before is not sent again. The others
   // print the whole session or one film box, counted from 0, which they bring up to date first; thePrintJob is the
   // last job that the session knows of, empty when it knows none.
   int Write(PDU_Service& theService);
   int PrintSession(PDU_Service& theService, UID& thePrintJob);
   int PrintFilm(PDU_Service& theService, UID& thePrintJob, UINT16 theIndex);

   // SCU: delete the film session at the printer, which takes its film boxes with it; or the last film box, at the
   // printer and here (1 at once when there is none).
   int Delete(PDU_Service& theService);
   int DeleteFilm(PDU_Service& theService);

   // SCU: a command that is no response. Answers an event report and calls the callback; 0, with nothing sent, when it
   // is none.
   int ReadEventReport(PDU_Service& theService, const DICOMCommandObject& theCommand);

   // SCP: takes a command that PDU_Service::ReadCommand has read. 1 when it was carried out.
   int Read(PDU_Service& theService, const DICOMCommandObject& theCommand);

   // The printer, whose attributes an SCP tells: fill them in.
   AbstractPrinter& GetPrinterObject() { return *itsPrinter; }

   // SCP: the look-up table or overlay that a film or image box references by this instance, also one that the client
   // has deleted meanwhile; null when there is none.
   const PrintObject* FindStandaloneBox(const UID& theInstance) const;

   // What the tree of an SCP holds, and the most that it may hold, in bytes: as encoded, and 100 for each element and
   // item. Once the limit is reached, data sets are refused unread.
   UINT64 GetMemoryUse() const;
   void SetMemoryLimit(UINT64 theBytes) { itsMemoryLimit = theBytes; }

   // The messages, for hosts that drive them themselves, as an SCP that reports events
   // (GetPrinterMessages().WriteEventReport).
   const BasicFilmSession& GetFilmSessionMessages() const { return itsFilmSessionMessages; }
   const BasicFilmBox& GetFilmBoxMessages() const { return itsFilmBoxMessages; }
   const BasicPrinter& GetPrinterMessages() const { return itsPrinterMessages; }
   const BasicPrintJob& GetPrintJobMessages() const { return itsPrintJobMessages; }
   const BasicAnnotationBox& GetAnnotationBoxMessages() const { return itsAnnotationBoxMessages; }
   const ImageOverlayBox& GetImageOverlayBoxMessages() const { return itsImageOverlayBoxMessages; }
   const PrintOverlayBox& GetPrintOverlayBoxMessages() const { return itsPrintOverlayBoxMessages; }

protected:
   PresentationLUTBox itsPresentationLUTBoxMessages; // for the subclasses that serve them

private:
   friend class PrintExchange;
   struct Request;
   struct Service;

   // SCU.
   void AliasContexts(PDU_Service& theService) const;
   int WriteSession(PDU_Service& theService);
   int CreateAtPrinter(PDU_Service& theService, AbstractFilmBox& theFilmBox);
   int FillAtPrinter(PDU_Service& theService, AbstractFilmBox& theFilmBox);
   int WriteImageBox(PDU_Service& theService, AbstractImageBox& theBox);
   int WriteImageBoxes(PDU_Service& theService, AbstractFilmBox& theFilmBox);
   int WriteAnnotationBoxes(PDU_Service& theService, AbstractFilmBox& theFilmBox);
   int Print(PDU_Service& theService, const StandardFilm& theMessages, const UID& theInstance, UID& thePrintJob);
   int ReportLocal(const char* theMethod, const char* theMessage);

   // SCP.
   static const Service* FindService(const RWCString& theSOPClass);
   bool Serves(const Service& theKind);
   int ReadRequest(const Service& theKind, const Request& theRequest, const RWCString& theInstance);
   int ReadFilmSessionRequest(const Request& theRequest);
   int ReadFilmBoxRequest(const Request& theRequest);
   int ReadImageBoxRequest(const Request& theRequest);
   int ReadAnnotationBoxRequest(const Request& theRequest);
   int ReadStandaloneBoxRequest(const Request& theRequest);
   int ReadPrinterRequest(const Request& theRequest);
   int ReadPrintJobRequest(const Request& theRequest);
   int CreateSession(const Request& theRequest);
   int SetSession(const Request& theRequest);
   int PrintSessionRequest(const Request& theRequest);
   int DeleteSession(const Request& theRequest);
   int CreateFilmBox(const Request& theRequest);
   int SetFilmBox(const Request& theRequest, AbstractFilmBox& theFilmBox);
   int PrintFilmBoxRequest(const Request& theRequest, AbstractFilmBox& theFilmBox);
   int DeleteFilmBox(const Request& theRequest, AbstractFilmBox& theFilmBox);
   PrintAnswer MakeFilmBox(const Request& theRequest, DICOMDataObject& theAttributes);
   PrintAnswer CheckFilmBox(const DICOMDataObject& theAttributes) const;
   PrintAnswer CheckReferencedLUTs(const DICOMDataObject& theAttributes) const;
   PrintAnswer CheckMemory(const DICOMDataObject& theNewOne, UINT16 theStatus) const;
   void MakeBoxes(AbstractFilmBox& theFilmBox, unsigned int theImages, unsigned int theAnnotations);
   UID NewInstanceUID(const UID& theSOPClass);
   template <class Part>
   AbstractFilmBox* FindFilmBoxOf(const PrintParts<Part>& (AbstractFilmBox::*theParts)() const,
                                  const UID& theInstance) const;
   bool IsAnythingBusy() const;
   const StandardAdvancedBox* FindStandaloneMessages(const UID& theSOPClass);
   PrintAnswer CheckStandaloneBox(const UID& theSOPClass, const DICOMDataObject& theAttributes) const;
   void DropDeletedBoxes();
   int CreateStandaloneBox(const Request& theRequest, const StandardAdvancedBox& theMessages);

   UID itsMetaSOPClass;
   std::unique_ptr<AbstractPrinter> itsPrinter;
   BasicFilmSession itsFilmSessionMessages;
   BasicPrinter itsPrinterMessages;
   BasicPrintJob itsPrintJobMessages;
   BasicFilmBox itsFilmBoxMessages;
   BasicAnnotationBox itsAnnotationBoxMessages;
   ImageOverlayBox itsImageOverlayBoxMessages;
   PrintOverlayBox itsPrintOverlayBoxMessages;
   void* itsPrinterEventUserArg = nullptr;
   void* itsPrintJobEventUserArg = nullptr;
   PrintParts<PrintObject> itsStandaloneBoxes; // of an SCP
   UINT64 itsMemoryLimit = kDefaultMemoryLimit;
   // Message IDs of requests whose response an event report has overtaken.
   std::vector<std::pair<UINT16, const PrintOperation*>> itsOwedResponses;
};

// Print management (PS3.4 H) as a node gives it, gray and in colour, with presentation LUTs and print jobs: a film is
// printed into a folder, and acknowledged once it is there. Clients are told when the printer's status changes, and
// those that have a context for print jobs when theirs are done.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/tn/node/NodeLog.h"
#include "apps/tn/node/NodeRole.h"
#include "apps/tn/print/EventReports.h"
#include "apps/tn/print/PrintJobs.h"
#include "apps/tn/print/Printer.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/print/PrintAnswer.h"

class AbstractPrintManagementMeta;

class PrintRole : public NodeRole
{
public:
   explicit PrintRole(std::shared_ptr<Printer> thePrinter);
   ~PrintRole() override;

   bool Accepts(const RWCString& theAbstractSyntax) const override;
   int Serve(PDU_Service& theService, DICOMCommandObject& theCommand) override;
   UINT64 GetLongestDataset() const override;
   std::string Describe() const override;

private:
   template <class Meta>
   class Session;

   AbstractPrintManagementMeta& FindSession(const PDU_Service& theService);
   int Read(PDU_Service& theService, const DICOMCommandObject& theCommand);
   int ReadInto(AbstractPrintManagementMeta& theSession, PDU_Service& theService, const DICOMCommandObject& theCommand);
   void TellStatus();
   PrintAnswer Print(AbstractPrintManagementMeta& theSession, const AbstractFilmBox* theFilmBox);
   void MakeJob(AbstractPrintManagementMeta& theSession);
   void ReportJob(AbstractPrintManagementMeta& theSession);
   void ReportStatus(AbstractPrintManagementMeta& theSession);

   std::shared_ptr<Printer> itsPrinter;
   PrintMemory::Account itsMemory;
   PDU_Service* itsService = nullptr; // of the request that is being served
   Printer::Status itsToldStatus;     // that the client knows of
   unsigned long itsFilms = 0;
   unsigned long itsRefused = 0;
   LimitedLog itsFailures;
   EventReports itsEvents;
   const AbstractPrintJob* itsJob = nullptr; // of the print that is being acknowledged, if it has one
   DICOMDataObject itsReply;                 // to the request to print
   std::unique_ptr<AbstractPrintManagementMeta> itsGraySession;
   std::unique_ptr<AbstractPrintManagementMeta> itsColorSession;
   PrintJobs itsJobs; // behind the sessions, which they refer to
};

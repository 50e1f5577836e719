// Print management (PS3.4 H) as a node gives it, gray and in colour, with presentation LUTs: a film is printed into a
// folder, and acknowledged once it is there.
#pragma once

#include <memory>
#include <string>

#include "apps/tn/node/NodeRole.h"

class AbstractPrintManagementMeta;

class PrintRole : public NodeRole
{
public:
   // The folder exists.
   explicit PrintRole(const std::string& theFolder);
   ~PrintRole() override;

   bool Accepts(const RWCString& theAbstractSyntax) const override;
   int Serve(PDU_Service& theService, DICOMCommandObject& theCommand) override;
   UINT64 GetLongestDataset() const override; // as much as a whole session may hold
   std::string Describe() const override;

private:
   AbstractPrintManagementMeta& FindSession(const PDU_Service& theService);

   std::string itsFolder;
   const PDU_Service* itsService = nullptr; // of the request that is being served, for the log
   unsigned long itsFilms = 0;
   unsigned long itsRefused = 0;
   std::unique_ptr<AbstractPrintManagementMeta> itsGraySession;
   std::unique_ptr<AbstractPrintManagementMeta> itsColorSession;

   template <class Meta>
   class Session;
   bool Print(const AbstractPrintManagementMeta& theSession, const class AbstractFilmBox* theFilmBox);
};

// Modality Worklist (PS3.4 K) as a node gives it, from a folder of worklist items.
#pragma once

#include "apps/tn/node/NodeLog.h"
#include "apps/tn/node/NodeRole.h"

class Worklist;

class WorklistRole : public NodeRole
{
public:
   // theWorklist is shared by all associations and outlives them.
   explicit WorklistRole(Worklist& theWorklist) : itsWorklist(theWorklist) {}

   bool Accepts(const RWCString& theSOPClass) const override;
   int Serve(PDU_Service& theService, DICOMCommandObject& theCommand) override;
   std::string Describe() const override;

private:
   Worklist& itsWorklist;
   LimitedLog itsLog;
   unsigned long itsQueries = 0;
   unsigned long itsMatches = 0;
};

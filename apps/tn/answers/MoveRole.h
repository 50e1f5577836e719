// The retrieve service of the Query/Retrieve models (PS3.4 C.4.2) as a node gives it: C-MOVE from an archive to a peer
// that the node knows.
#pragma once

#include "apps/tn/answers/ArchiveRetrieve.h"
#include "apps/tn/node/NodeLog.h"
#include "apps/tn/node/NodeRole.h"
#include "talvenor/association/PDU_Service.h"

class MoveRole : public NodeRole
{
public:
   // Both are shared by all associations and outlive them; without thePeers no destination is known.
   MoveRole(Archive& theArchive, const PeerList* thePeers, ArchiveRetrieve::Settings theSettings);
   ~MoveRole() override;

   bool Accepts(const RWCString& theAbstractSyntax) const override;
   int Serve(PDU_Service& theService, DICOMCommandObject& theCommand) override;
   std::string Describe() const override;

private:
   class Factory;

   Archive& itsArchive;
   const PeerList* itsPeers;
   ArchiveRetrieve::Settings itsSettings;
   std::unique_ptr<Factory> itsFactory;         // of connections to destinations
   std::unique_ptr<PDU_Service> itsDestination; // kept open from one C-MOVE to the next
   RWCString itsDestinationTitle;
   LimitedLog itsLog;
   unsigned long itsMoved = 0;
   unsigned long itsFailed = 0;
};

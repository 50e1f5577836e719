// The association of a peer with this node: what it accepts, and what it says of it in the log.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/tn/node/GuardedStream.h"
#include "apps/tn/node/NodeRole.h"
#include "talvenor/association/CheckedPDU_Service.h"

class NodeService : public CheckedPDU_Service
{
public:
   // thePrototype has the lists of what is accepted.
   NodeService(const CheckedPDU_Service& thePrototype, const NodeRoleMakers& theRoles);

   // Serves the association on theStream, which is taken, to its end.
   void Serve(GuardedStream* theStream);

   // Answers the request on theStream, which is taken, with a refusal: there are too many associations.
   void Refuse(GuardedStream* theStream);

   // Hooks of negotiation: what PS3.8 fixes, and what the policy does not narrow further.
   int ShouldIAcceptApplicationContext(const ApplicationContextItem& theContext) override;
   int ShouldIAcceptPresentationContext(const PresentationContextItem& theContext,
                                        const PresentationContextAcceptItem& theAnswer) override;
   int ShouldIAcceptAbstractSyntax(const AbstractSyntaxSubItem& theSyntax, unsigned char& theSCPRole,
                                   unsigned char& theSCURole) override;

   const TransferSyntaxItem* GetPreferredTransferSyntax(const AbstractSyntaxSubItem& theAbstractSyntax,
                                                        const TransferSyntaxCandidates& theCandidates) override;

protected:
   int ShouldIAcceptProtocolVersion(UINT16 theVersions) override;
   void OnUnreadableRequest(TNResultCode theCode) override;

private:
   void ServeCommands(GuardedStream& theStream);
   bool ServeCommand(DICOMCommandObject& theCommand);
   NodeRole* FindRole(const RWCString& theSOPClass) const;
   std::string Describe(TNResultCode theEnd) const;

   std::vector<std::unique_ptr<NodeRole>> itsRoles;
};

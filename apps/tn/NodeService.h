// The association of a peer with this node: what it accepts, and what it says of it in the log.
#pragma once

#include <string>

#include "apps/tn/GuardedStream.h"
#include "talvenor/association/CheckedPDU_Service.h"

class NodeService : public CheckedPDU_Service
{
public:
   // thePrototype has the lists of what is accepted; theIsFull says that the request is to be refused.
   NodeService(const CheckedPDU_Service& thePrototype, bool theIsFull)
       : CheckedPDU_Service(thePrototype), itsIsFull(theIsFull)
   {}

   // Serves the association on theStream, which is taken, to its end.
   void Serve(GuardedStream* theStream);

   int ShouldIAcceptAbstractSyntax(const AbstractSyntaxSubItem& theSyntax, unsigned char& theSCPRole,
                                   unsigned char& theSCURole) override;

protected:
   void OnUnreadableRequest(TNResultCode theCode) override;

private:
   void ServeCommands(GuardedStream& theStream);
   void Log(const std::string& theText) const;

   bool itsIsFull;
   unsigned long itsEchoes = 0;
};

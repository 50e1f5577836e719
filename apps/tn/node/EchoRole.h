// Verification (PS3.4 A) as a node gives it: every C-ECHO is answered with Success.
#pragma once

#include "apps/tn/node/NodeRole.h"
#include "talvenor/services/Verification.h"

class EchoRole : public NodeRole
{
public:
   bool Accepts(const RWCString& theAbstractSyntax) const override { return theAbstractSyntax == "1.2.840.10008.1.1"; }

   int Serve(PDU_Service& theService, DICOMCommandObject& theCommand) override
   {
      const int isAnswered = Verification().Read(theService, theCommand);
      itsEchoes += isAnswered != 0;
      return isAnswered;
   }

   std::string Describe() const override
   {
      return itsEchoes == 0 ? "" : std::to_string(itsEchoes) + (itsEchoes == 1 ? " echo" : " echoes");
   }

private:
   unsigned long itsEchoes = 0;
};

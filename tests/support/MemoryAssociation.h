// An association in memory whose peer is a script: what it sends is given, what it gets is kept.
#pragma once

#include <string>

#include "support/MemoryDULStream.h"
#include "support/PDUBytes.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/ul/DULStreamFactory.h"

class MemoryAssociation : public PDU_Service
{
public:
   static constexpr const char* kExplicit = "1.2.840.10008.1.2.1";

   // Context 1 is for theAbstractSyntax in theSyntax, and the current one. theInput comes behind the
   // acceptance; then the peer is silent, and waiting for it ends at once with the time-out.
   explicit MemoryAssociation(const std::string& theAbstractSyntax, const std::string& theInput = "",
                              const std::string& theSyntax = kExplicit)
       : PDU_Service(Factory())
   {
      const std::string anInput = PDUBytes::Acceptance({{1, 0, theSyntax}}) + theInput;
      auto* const aStream = new MemoryDULStream(ScriptedChannel({anInput.begin(), anInput.end()}, false));
      itsOutput = aStream->ShareOutput();
      AddPresentationContextProposal(theAbstractSyntax, theSyntax);
      RequestAssociation(aStream);
      SetCurrentPresentationContextID(1);
      itsSizeOfRequest = itsOutput->Everything().size();
   }

   // Behind the request of the association.
   std::string Sent() const
   {
      const std::vector<unsigned char> aBytes = itsOutput->Everything();
      return {aBytes.begin() + static_cast<std::ptrdiff_t>(itsSizeOfRequest), aBytes.end()};
   }

private:
   static DULStreamFactory& Factory()
   {
      static DULStreamFactory aFactory;
      return aFactory;
   }

   std::shared_ptr<MemoryChannel> itsOutput;
   std::size_t itsSizeOfRequest = 0;
};

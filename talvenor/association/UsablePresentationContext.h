// A presentation context that both sides agreed on (PS3.8 7.1.1.13): its ID, the abstract syntax proposed with it and
// the transfer syntax accepted for it. A value.
#pragma once

#include "talvenor/dictionary/UID.h"

class TALVENOR_API UsablePresentationContext
{
public:
   // ID 0, which is no context's, and empty UIDs.
   UsablePresentationContext() = default;
   UsablePresentationContext(unsigned char theID, const UID& theAbstractSyntax, const UID& theTransferSyntax)
       : itsID(theID), itsAbstractSyntax(theAbstractSyntax), itsTransferSyntax(theTransferSyntax)
   {}

   unsigned char GetPresentationContextID() const { return itsID; }
   void SetPresentationContextID(unsigned char theID) { itsID = theID; }

   const UID& GetAbstractSyntaxUID() const { return itsAbstractSyntax; }
   void SetAbstractSyntaxUID(const UID& theUID) { itsAbstractSyntax = theUID; }

   const UID& GetTransferSyntaxUID() const { return itsTransferSyntax; }
   void SetTransferSyntaxUID(const UID& theUID) { itsTransferSyntax = theUID; }

   bool operator==(const UsablePresentationContext& theOther) const = default;

   // Whether this is a context for the abstract syntax.
   bool operator==(const UID& theAbstractSyntax) const { return itsAbstractSyntax == theAbstractSyntax; }

private:
   unsigned char itsID = 0; // odd, 1 to 255 (PS3.8 9.3.2.2)
   UID itsAbstractSyntax;
   UID itsTransferSyntax;
};

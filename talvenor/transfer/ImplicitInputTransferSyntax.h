// Decoding of implicit VR (PS3.5 7.1.3): value representations come from the data dictionary.
#pragma once

#include "talvenor/transfer/InputTransferSyntax.h"

class TALVENOR_API ImplicitInputTransferSyntax : public InputTransferSyntax
{
public:
   VR* NextVR() override;
   void Pushback(VR* theVR) override;

   // Whether Pixel Representation (0028,0103) was met and is not 0: attributes that may be US or SS are SS then. Only
   // what follows it at the same level is affected; reading never clears it.
   bool IsSignedPixelRepresentation() const { return itsIsSigned; }
   void SetSignedPixelRepresentation(bool theFlag) { itsIsSigned = theFlag; }

protected:
   using InputTransferSyntax::InputTransferSyntax;

private:
   template <class>
   friend class ElementDecoder;
   struct Policy; // what differs from the other encoding

   bool itsIsSigned = false;
};

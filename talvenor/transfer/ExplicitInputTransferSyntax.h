// Decoding of explicit VR (PS3.5 7.1.2), in either byte order.
#pragma once

#include "talvenor/transfer/InputTransferSyntax.h"

class TALVENOR_API ExplicitInputTransferSyntax : public InputTransferSyntax
{
public:
   VR* NextVR() override;
   void Pushback(VR* theVR) override;

protected:
   using InputTransferSyntax::InputTransferSyntax;

private:
   template <class>
   friend class ElementDecoder;
   struct Policy; // what differs from the other encoding
};

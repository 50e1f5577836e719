// Encoding of implicit VR (PS3.5 7.1.3). Encapsulated pixel data is refused: it exists in explicit VR only (PS3.5 A.4).
#pragma once

#include "talvenor/transfer/OutputTransferSyntax.h"

class TALVENOR_API ImplicitOutputTransferSyntax : public OutputTransferSyntax
{
public:
   void SaveDICOMObject(DICOMObject& theObject) override;
   using OutputTransferSyntax::SaveVR;
   void SaveVR(VR& theVR) override;

protected:
   using OutputTransferSyntax::OutputTransferSyntax;

private:
   template <class>
   friend class ElementEncoder;
   struct Policy; // what differs from the other encoding
};

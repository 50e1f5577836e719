// Encoding of explicit VR (PS3.5 7.1.2), in either byte order. A value of more than 32768 bytes under a type with a
// 16-bit length field is refused (StreamIOException, TN_INVALID_ELEMENT_HEADER).
#pragma once

#include "talvenor/transfer/OutputTransferSyntax.h"

class TALVENOR_API ExplicitOutputTransferSyntax : public OutputTransferSyntax
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

#include "talvenor/transfer/VRInputStreamVR.h"

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/ElementHeader.h"
#include "talvenor/transfer/InputTransferSyntax.h"

VRInputStreamVR::VRInputStreamVR(UINT32 theLength, std::unique_ptr<InputTransferSyntax> theContent)
    : VR(TNEndian::NativeEndian()), itsContent(std::move(theContent))
{
   SetTag(ElementHeader::kItem);
   SetLength(theLength);
}

VRInputStreamVR::~VRInputStreamVR() = default;

VR* VRInputStreamVR::NextVR()
{
   VR* const aVR = itsContent ? itsContent->NextVR() : nullptr;
   if (aVR == nullptr)
   {
      itsContent.reset();
   }
   return aVR;
}

void VRInputStreamVR::Pushback(VR* theVR)
{
   std::unique_ptr<VR> aVR(theVR);
   if (!itsContent)
   {
      throw StreamIOException("VRInputStreamVR::Pushback(VR*): unable to do pushback", TN_INTERNAL_ERROR, 0);
   }
   itsContent->Pushback(aVR.release());
}

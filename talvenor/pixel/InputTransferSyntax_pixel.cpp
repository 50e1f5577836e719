// The elements in which decoders return pixel data.
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"

VR* InputTransferSyntax::MakePixelElement(UINT32 theLength, UINT16 theTypeCode)
{
   if (theLength == VR::kUndefinedLength)
   {
      return new PixelDataFragmentInputStreamVR(GetEndianHandlingReader(), theLength, theTypeCode);
   }
   return new PixelInputStreamVRImpl(GetEndianHandlingReader(), theLength, theTypeCode);
}

#include "talvenor/print/AbstractPrinter.h"

#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/print/PrintMessages.h"

namespace
{
// PS3.3 C.13.9: Printer Status and Printer Status Info.
constexpr UINT16 kPrinterGroup = 0x2110;
constexpr UINT16 kStatusElements[] = {0x0010, 0x0020};
constexpr const char* kNormal = "NORMAL";
} // namespace

AbstractPrinter::AbstractPrinter(AbstractPrintManagementMeta& theMeta) : PrintObject(theMeta)
{
   SetSOPClassUID(PrintSOPClass::kPrinter);
   SetSOPInstanceUID(kInstance);
   for (const UINT16 anElement : kStatusElements)
   {
      auto aVR = std::make_unique<VR>(kPrinterGroup, anElement, kNormal, 0);
      aVR->SetTypeCode(VRCode::CS);
      Push(aVR.release());
   }
}

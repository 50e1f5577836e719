#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/MDDEntry.h"

void MDDEntry::SetVRType(VR& theVR) const
{
   theVR.SetTypeCode(GetTypeAsUshort());
}

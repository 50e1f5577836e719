#include <algorithm>

#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/UID.h"

UID::UID(const VR& theVR)
{
   Set(theVR);
}

UID& UID::operator=(const VR& theVR)
{
   Set(theVR);
   return *this;
}

void UID::Set(const VR& theVR)
{
   // Any longer value is too long, whatever number it would be as an int.
   const UINT32 aLength = std::min<UINT32>(theVR.GetLength(), kMaximumLength + 1);
   Set(reinterpret_cast<const char*>(theVR.GetData()), static_cast<int>(aLength));
}

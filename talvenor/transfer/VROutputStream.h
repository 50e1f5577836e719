// A sink of data elements: an encoder.
#pragma once

#include "talvenor/Export.h"

class VR;

class TALVENOR_API VROutputStream
{
public:
   virtual ~VROutputStream();

   // Writes one element. One whose value is still in a stream (VR::IsStreamBuffered) is copied from there to its end.
   // The pointer form takes the element and destroys it, also when writing fails; the reference form leaves it to the
   // caller.
   virtual void SaveVR(VR* theVR) = 0;
   virtual void SaveVR(VR& theVR) = 0;
};

// A source of data elements: a decoder, or an item whose elements are still in the decoder's stream.
#pragma once

#include "talvenor/Export.h"

class VR;

class TALVENOR_API VRInputStream
{
public:
   virtual ~VRInputStream();

   // The next element of this level of the dataset, owned by the caller; null when the level has ended. An element
   // whose value is a stream (VR::IsStreamBuffered) must be read or skipped before the next call, because all levels
   // share one byte stream.
   virtual VR* NextVR() = 0;

   // Hands one element back: the next NextVR returns it. One element deep; takes theVR.
   virtual void Pushback(VR* theVR) = 0;
};

// How the association traces: text, and a PDU's dump where one belongs to it. Not part of the library's interface.
#pragma once

#include "talvenor/foundation/TNTrace.h"

class DICOMObject;

inline void TracePDU(const char* thePrefix, const char* theText = "")
{
   if (gTNTracer(TNTrace::TNTracePDU))
   {
      startentry(gTNTracer) << thePrefix << theText << "\n" << endentry;
   }
}

// PDU has a Dump, as those of associations do.
template <class PDU>
void TracePDU(const char* thePrefix, const PDU& thePDU)
{
   if (gTNTracer(TNTrace::TNTracePDU))
   {
      startentry(gTNTracer) << thePrefix << "\n";
      thePDU.Dump(gTNTracer);
      gTNTracer << endentry;
   }
}

// A message, with its elements where they are wanted.
void TraceObject(const char* theText, const DICOMObject& theObject);

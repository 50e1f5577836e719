// The six PDUs by type, what their readers say, and what is traced. Internal.
#pragma once

#include "talvenor/foundation/TNResult.h"

struct ULPDUTexts
{
   const char* itsClass;     // which begins every text
   const char* itsWrongType; // both types follow when it ends with "("
   const char* itsWrongLength;
   TNResultCode itsWrongLengthCode;
   // Traces, null for none. The PDU is dumped behind one that ends with a space.
   const char* itsBeforeWriting;
   const char* itsAfterWriting;
   const char* itsBeforeReading;
   const char* itsAfterReading;
};

// Of the PDU of that type, which must be one of the six.
const ULPDUTexts& TextsOfULPDU(unsigned char theType);

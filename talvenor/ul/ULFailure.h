// How the readers of PDUs and items fail: a text that begins with the class, and a result code. Internal.
#pragma once

#include "talvenor/foundation/StreamIOException.h"

[[noreturn]] inline void RaiseULFailure(const RWCString& theText, TNResultCode theCode)
{
   throw StreamIOException(theText.c_str(), theCode, 0);
}

// theTail begins with "::".
[[noreturn]] inline void RaiseULFailure(const char* theClass, const RWCString& theTail, TNResultCode theCode)
{
   RaiseULFailure(theClass + theTail, theCode);
}

// "0x11) should be 0x10": the end of the texts about types.
RWCString WrongTypeText(unsigned int theReceived, unsigned int theExpected);

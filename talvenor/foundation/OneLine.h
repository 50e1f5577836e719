// Text from a file or a peer, made fit for a log or a terminal: every control character comes out as ".", so that it
// can begin no line of its own and send no escape sequence. Bytes of other character sets stay.
#pragma once

#include <algorithm>

#include "talvenor/foundation/BasicTypes.h"

inline RWCString OnOneLine(RWCString theText)
{
   const auto isControl = [](unsigned char theByte) { return theByte < 0x20 || theByte == 0x7F; };
   std::replace_if(theText.begin(), theText.end(), isControl, '.');
   return theText;
}

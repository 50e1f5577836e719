// The Message IDs of requests (PS3.7 E.1). Not part of the library's interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

// The next one of the process: 1 at first, 0 after 65535. Any thread may ask.
UINT16 NextMessageID();

// The last one that this thread has taken: of the request that it has just sent.
UINT16 LastMessageIDOfThread();

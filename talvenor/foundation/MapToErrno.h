// Error numbers of the Windows system interface, as hosts that were ported from it still pass them around.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

// Sets errno to the value that the Windows runtime library gives for theSystemError, a Windows system error number;
// 22 (EINVAL) for a number without a value of its own. Not for errno values of this system.
TALVENOR_API void MapToErrno(UINT32 theSystemError);

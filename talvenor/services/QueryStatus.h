// The statuses of queries and retrieves (PS3.4 C.4.1.1.4, C.4.2.1.5) that the library sends or acts on. Not part of the
// library's interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

namespace QueryStatus
{
inline constexpr UINT16 kSuccess = 0x0000;
inline constexpr UINT16 kUnknownDestination = 0xA801;
inline constexpr UINT16 kSomeFailed = 0xB000;
inline constexpr UINT16 kUnableToProcess = 0xC000; // the first of C000 to CFFF, whose meanings are the provider's
inline constexpr UINT16 kQueryError = 0xC001;
inline constexpr UINT16 kInternalError = 0xC002;
inline constexpr UINT16 kNoDestination = 0xC003;
inline constexpr UINT16 kAllFailed = 0xC004;
inline constexpr UINT16 kCancelled = 0xFE00;
inline constexpr UINT16 kPending = 0xFF00;
inline constexpr UINT16 kPendingWarning = 0xFF01; // optional keys were not supported
} // namespace QueryStatus

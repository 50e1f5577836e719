// The statuses with which an SCP of print management refuses (PS3.7 C, PS3.4 H.4). Not part of the library's interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

namespace PrintStatus
{
inline constexpr UINT16 kInvalidValue = 0x0106;
inline constexpr UINT16 kDuplicateInstance = 0x0111;
inline constexpr UINT16 kNoSuchInstance = 0x0112;
inline constexpr UINT16 kInvalidInstance = 0x0117;
inline constexpr UINT16 kMissingAttribute = 0x0120;
inline constexpr UINT16 kMissingValue = 0x0121;
inline constexpr UINT16 kClassNotSupported = 0x0122;
inline constexpr UINT16 kNoSuchAction = 0x0123;
inline constexpr UINT16 kUnrecognizedOperation = 0x0211;
inline constexpr UINT16 kMistypedArgument = 0x0212;
inline constexpr UINT16 kResourceLimitation = 0x0213;
inline constexpr UINT16 kNoFilmBoxes = 0xC600;
inline constexpr UINT16 kImageCollision = 0xC604;
inline constexpr UINT16 kNoMemoryForImage = 0xC605;
} // namespace PrintStatus

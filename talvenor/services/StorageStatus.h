// The statuses of C-STORE (PS3.4 B.2.3) with which an instance has been stored. Not part of the library's interface.
#pragma once

#include <algorithm>
#include <iterator>

#include "talvenor/foundation/BasicTypes.h"

// Success, coercion of data elements, elements discarded, data set does not match SOP class.
inline bool IsStored(UINT16 theStatus)
{
   constexpr UINT16 kStored[] = {0x0000, 0xB000, 0xB006, 0xB007};
   return std::find(std::begin(kStored), std::end(kStored), theStatus) != std::end(kStored);
}

// Composes command sets (PS3.7 6.3, E.1) as they stand in a PDV: implicit VR little endian, behind their group length.
#pragma once

#include <string>

#include "support/DatasetBytes.h"

namespace CommandBytes
{
inline std::string Element(UINT32 theNumber, const std::string& theValue)
{
   return DatasetBytes(Encoding::Implicit).Element(theNumber, "", theValue).Bytes();
}

inline std::string US(UINT32 theNumber, unsigned int theValue)
{
   return Element(theNumber, DatasetBytes().Number(theValue, 2).Bytes());
}

// theElements in ascending order.
inline std::string CommandSet(const std::string& theElements)
{
   return Element(0, DatasetBytes().Number(static_cast<UINT32>(theElements.size()), 4).Bytes()) + theElements;
}
} // namespace CommandBytes

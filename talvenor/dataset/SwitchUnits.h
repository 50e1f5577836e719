// Reverses values whose width is known only at run time, by the primitive size of their value representation
// (VRType.h).
#pragma once

#include <cstddef>

#include "talvenor/io/TNEndian.h"

// Reverses the bytes of every whole unit of theUnit bytes (1, 2, 4 or 8) in theLength bytes, which need not be aligned.
// A rest that fills no unit stays as it is.
inline void SwitchUnits(unsigned char* theBytes, std::size_t theLength, unsigned int theUnit)
{
   switch (theUnit)
   {
   case 2: TNEndian::SwitchArray<UINT16>(theBytes, theLength / 2); break;
   case 4: TNEndian::SwitchArray<UINT32>(theBytes, theLength / 4); break;
   case 8: TNEndian::SwitchArray<UINT64>(theBytes, theLength / 8); break;
   default: break;
   }
}

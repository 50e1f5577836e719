// The header of a data element as it stands in the stream, PS3.5 7.1. Not part of the library's interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

struct ElementHeader
{
   static constexpr UINT16 kDelimiterGroup = 0xFFFE;
   static constexpr UINT32 kItem = 0xFFFEE000;
   static constexpr UINT32 kItemDelimitation = 0xFFFEE00D;
   static constexpr UINT32 kSequenceDelimitation = 0xFFFEE0DD;
   static constexpr UINT32 kTrailingPadding = 0xFFFCFFFC;
   static constexpr UINT32 kPixelData = 0x7FE00010;
   static constexpr UINT32 kPixelRepresentation = 0x00280103;

   UINT16 itsGroup = 0;
   UINT16 itsElement = 0;
   UINT16 itsTypeCode = 0; // 0 where the stream states none
   bool itsCameAsUN = false;
   UINT32 itsLength = 0;

   UINT32 GetTag() const { return static_cast<UINT32>(itsGroup) << 16 | itsElement; }
};

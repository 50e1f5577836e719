// The three uncompressed encodings (PS3.5 annex A) that every transfer syntax uses outside the pixel data. A base of
// TransferSyntaxType, through which hosts know these names; it stands alone because the UID dictionary needs it first.
#pragma once

#include <string_view>

#include "talvenor/foundation/BasicTypes.h"

struct TALVENOR_API BasicTransferSyntaxKind
{
   enum BasicTransferSyntaxType : int
   {
      UnknownBasicType = 0,
      LittleEndianImplicit = 1, // "TSLEI"
      LittleEndianExplicit = 2, // "TSLEE"
      BigEndianExplicit = 3     // "TSBEE"
   };

   // Exact text, case included; anything else is UnknownBasicType.
   static BasicTransferSyntaxType StringToBasicTransferSyntaxType(std::string_view theText);
   // Empty for UnknownBasicType and for values outside the enumeration.
   static RWCString BasicTransferSyntaxTypeToString(BasicTransferSyntaxType theType);
};

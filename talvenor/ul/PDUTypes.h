// The types of PDUs (PS3.8 9.3.1) and their names: the base of both PDU streams, which gives each the enumeration.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API PDUTypes
{
public:
   // On the wire: never to be changed.
   enum PDUType : unsigned char
   {
      AAssociateRQ = 1,
      AAssociateAC = 2,
      AAssociateRJ = 3,
      PDataTF = 4,
      AReleaseRQ = 5,
      AReleaseRP = 6,
      AAbortRQ = 7
   };

   static bool IsPDUType(unsigned int theType) { return theType >= AAssociateRQ && theType <= AAbortRQ; }

   // The name of the enumerator; "Invalid PDU Type (n)" for any other number.
   static RWCString PDUTypeToString(unsigned int theType);
};

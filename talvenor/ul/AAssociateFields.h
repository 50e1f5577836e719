// What A-ASSOCIATE-RQ and A-ASSOCIATE-AC have in common (PS3.8 9.3.2, 9.3.3), besides their presentation contexts. Not
// part of the library's interface.
#pragma once

#include "talvenor/foundation/AETitle.h"
#include "talvenor/ul/ApplicationContextItem.h"
#include "talvenor/ul/UserInformationItem.h"

struct AAssociateFields
{
   bool operator==(const AAssociateFields& theOther) const = default;

   UINT16 itsProtocolVersion = 1; // bit 0: version 1, the only one there is
   AETitle itsCalledTitle;
   AETitle itsCallingTitle;
   ApplicationContextItem itsApplicationContext;
   UserInformationItem itsUserInformation;
};

// What the status of a response means to the user of tn: in words, and whether what was asked for was done. The storage
// service and the query/retrieve service give the same numbers different meanings.
#pragma once

#include <string>

#include "talvenor/foundation/BasicTypes.h"

enum class StatusKind
{
   Success,
   Warning, // done, with a reservation
   Failure,
   Cancelled,
   Pending
};

enum class StatusService
{
   Storage, // PS3.4 B.2.3
   Find,    // PS3.4 C.4.1.1.4
   Move,    // PS3.4 C.4.2.1.5
   Any      // what the number means to all services, PS3.7 annex C
};

StatusKind KindOfStatus(UINT16 theStatus);

// "refused: out of resources (A700H)". The number is always told.
std::string DescribeStatus(StatusService theService, UINT16 theStatus);

// Whether the standard lists the number, for one of these services or for all.
bool IsListedStatus(UINT16 theStatus);

// Whether the same request may succeed later: the peer is short of something.
bool IsOutOfResources(UINT16 theStatus);

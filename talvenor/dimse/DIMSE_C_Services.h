// The family of the DIMSE-C messages (PS3.7 9): C-ECHO, C-STORE, C-FIND and C-MOVE, a class for each request and each
// response.
//
// The classes are mix-ins without data. A service class derives from the request and the response of its service and
// tells them its SOP class through GetUID; the association, the command set that was received and the data set to send
// or to fill are arguments, all of them borrowed. What a service does with its messages is not decided here.
//
// Operations return non-zero for success and 0 for failure, with the cause on the association
// (PDU_Service::GetResultCode). TNTraceDimsec shows the messages, TNTraceDimsecDicomObjects their contents.
//
// Threads: several may use one object, each on an association of its own. Every request of the process takes the next
// value of one 16-bit counter, from 1, as its Message ID.
#pragma once

#include "talvenor/Export.h"

class TALVENOR_API DIMSE_C_Services
{
public:
   DIMSE_C_Services& operator=(const DIMSE_C_Services&) = default;
};

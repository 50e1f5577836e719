// The family of the DIMSE-N messages (PS3.7 10): N-EVENT-REPORT, N-GET, N-SET, N-ACTION, N-CREATE and N-DELETE, a class
// for each request and each response.
//
// The classes are mix-ins without data, as those of DIMSE-C (DIMSE_C_Services.h): a service class derives from several
// of them at once and tells them its SOP class through GetUID (0 when it has no fixed one), of which one overrider
// serves all. Their other operations bear the same names, so the service qualifies them (NCreateRQ::Write). The
// association, the command set that was received, the instance and the data set to send or to fill are arguments, all of
// them borrowed. Nobody owns a service through one of its messages: no destructor is virtual.
//
// Operations return non-zero for success and 0 for failure, with the cause on the association
// (PDU_Service::GetResultCode). The Read of a request that is another message sets no code, so that several can be
// tried in turn. TNTraceDimsen shows the messages with their contents.
//
// A response (Write) answers a request on the current context, in the name of the SOP class that the request names, with
// attributes or without. The comment and the tags of the elements that caused a failure are left out when they are
// empty, as in the short forms. TN_SOP_CLASS_UNSUPPORTED when the service has no SOP class. The Read of a response takes
// it whatever its status. It replaces the contents of theAttributes by the data set that follows; without one,
// theAttributes is unchanged. TN_COMMAND_NOT_SUPPORTED when theCommand is another message. WriteCommand sends a command
// set alone: theDataSetType is 0x0102 when a data set will follow, which keeps the PDU open, and 0x0101 otherwise, and
// theSOPClass is set to what the message names.
//
// Every request carries a priority, which PS3.7 does not ask for, and takes the next Message ID of the process.
// Threads: several may use one object, each on an association of its own.
#pragma once

#include "talvenor/Export.h"

class TALVENOR_API DIMSE_N_Services
{
public:
   DIMSE_N_Services& operator=(const DIMSE_N_Services&) = default;
};

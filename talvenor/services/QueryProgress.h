// How far a query or a retrieve is, as the callbacks of its requester are told.
#pragma once

enum QueryProgress : int
{
   QueryBegins = 1,         // the request is about to be sent
   QueryNotSent = 2,        // it could not be sent
   QueryNoResponse = 3,     // none could be read, or it is that of another service
   QueryNoStatus = 4,       // a response without a status
   QueryFailed = 5,         // the final response, with any status but success: warnings and cancel too
   QueryPendingWarning = 6, // a match for which optional keys were not supported (0xFF01); of queries only
   QuerySucceeded = 7,      // the final response, with success
   QueryPending = 8,        // a match, or the sub-operations of a retrieve so far (0xFF00)
   QueryEnds = 9            // always the last one
};

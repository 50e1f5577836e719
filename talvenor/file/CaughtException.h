// What an operation that reports results instead of throwing makes of an exception. Not part of the library's
// interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/TNResult.h"

struct CaughtException
{
   // The exception that is being handled, of whatever kind: to be made in a catch clause.
   CaughtException();

   TNResultCode itsResult = TN_INTERNAL_ERROR;
   int itsSystemError = 0;
   RWCString itsText;
};

// What the statuses of print management mean (PS3.4 H.4). Not part of the library's interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/ErrorDescription.h"

// The operations that know statuses of their own.
enum class PrintStatusColumn
{
   Create,
   Set, // of what is no image or annotation box; deletions and queries too
   Print,
   Box
};

struct PrintStatusDescription
{
   const char* itsText;
   ErrorDescription::ErrorType itsType; // Warning, Failure or UnknownStatus
};

// Of a status other than 0.
PrintStatusDescription DescribePrintStatus(PrintStatusColumn theColumn, UINT16 theStatus);

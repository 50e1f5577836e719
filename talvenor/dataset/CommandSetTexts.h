// What the numbers of a command set mean, in words (PS3.7 E.1 and annex C).
#pragma once

#include <string_view>

#include "talvenor/foundation/BasicTypes.h"

// Command Field (0000,0100); "Unrecognized command" for any other number.
TALVENOR_API std::string_view CommandFieldText(UINT16 theCommandField);

// Command Data Set Type (0000,0800): only 0x0101 says that no data set follows.
TALVENOR_API std::string_view DataSetTypeText(UINT16 theDataSetType);

// Status (0000,0900). All of C000 to CFFF means "unable to process"; services give the lower digits meanings of their
// own.
TALVENOR_API std::string_view StatusText(UINT16 theStatus);

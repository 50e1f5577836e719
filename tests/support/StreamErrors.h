// Runs an operation that must throw StreamIOException and returns what it says.
#pragma once

#include <ostream>
#include <string>

#include "talvenor/foundation/StreamIOException.h"

struct StreamError
{
   bool operator==(const StreamError&) const = default;

   std::string itsMessage;
   TNResultCode itsCode = TN_NO_ERROR;
   int itsSystemError = 0;
};

inline std::ostream& operator<<(std::ostream& theText, const StreamError& theError)
{
   return theText << '"' << theError.itsMessage << "\", code " << theError.itsCode << ", system error "
                  << theError.itsSystemError;
}

template <class Operation>
StreamError StreamErrorOf(Operation theOperation)
{
   try
   {
      theOperation();
   }
   catch (const StreamIOException& anException)
   {
      return {anException.GetMessage(), anException.GetResultCode(), anException.GetSystemErrorCode()};
   }
   return {"(nothing was thrown)", TN_NO_ERROR, 0};
}

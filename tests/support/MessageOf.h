// Runs an operation that must throw an exception of a class and returns what it says.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

template <class Exception, class Operation>
RWCString MessageOf(Operation theOperation)
{
   try
   {
      theOperation();
   }
   catch (const Exception& anException)
   {
      return anException.GetMessage();
   }
   return "(nothing was thrown)";
}

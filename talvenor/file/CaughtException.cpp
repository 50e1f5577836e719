#include "talvenor/file/CaughtException.h"

#include <new>

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/StreamIOException.h"

CaughtException::CaughtException()
{
   try
   {
      throw;
   }
   catch (const StreamIOException& anException)
   {
      itsResult = anException.GetResultCode();
      itsSystemError = anException.GetSystemErrorCode();
      itsText = anException.why();
   }
   catch (const BadAllocException& anException)
   {
      itsResult = TN_OUT_OF_MEMORY;
      itsText = anException.why();
   }
   catch (const std::bad_alloc& anException)
   {
      itsResult = TN_OUT_OF_MEMORY;
      itsText = anException.what();
   }
   catch (const ExceptionBase& anException)
   {
      itsText = anException.why();
   }
   catch (const std::exception& anException)
   {
      itsText = anException.what();
   }
}

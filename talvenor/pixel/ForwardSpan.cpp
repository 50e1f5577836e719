#include "talvenor/pixel/ForwardSpan.h"

#include <string>

#include "talvenor/foundation/StreamIOException.h"

void CheckForwardSeek(UINT64 thePosition, UINT64 theTarget, UINT64 theLength, const char* theClass)
{
   if (theTarget < thePosition)
   {
      const std::string aText = std::string(theClass) + " does not support backwards seeking via Seek(size_t)";
      throw StreamIOException(aText.c_str(), TN_UNSUPPORTED, 0);
   }
   if (theTarget > theLength)
   {
      const std::string aText = std::string(theClass) + "::Seek(size_t): attempted seek past EOF";
      throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
   }
}

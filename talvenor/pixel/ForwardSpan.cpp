#include "talvenor/pixel/ForwardSpan.h"

#include <string>

#include "talvenor/foundation/StreamIOException.h"

UINT32 ForwardSpan::DistanceTo(UINT32 thePosition, const char* theClass) const
{
   if (thePosition < itsPosition)
   {
      const std::string aText = std::string(theClass) + " does not support backwards seeking via Seek(size_t)";
      throw StreamIOException(aText.c_str(), TN_UNSUPPORTED, 0);
   }
   if (thePosition > itsLength)
   {
      const std::string aText = std::string(theClass) + "::Seek(size_t): attempted seek past EOF";
      throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
   }
   return thePosition - itsPosition;
}

#include "apps/tn/base/ErrorText.h"

#include <system_error>

#include "talvenor/foundation/StreamIOException.h"

std::string ErrorText(const ExceptionBase& theException)
{
   std::string aText = theException.why();
   const auto* const aStreamException = dynamic_cast<const StreamIOException*>(&theException);
   if (aStreamException != nullptr && aStreamException->GetSystemErrorCode() != 0)
   {
      aText += ": " + std::system_category().message(aStreamException->GetSystemErrorCode());
   }
   return aText;
}

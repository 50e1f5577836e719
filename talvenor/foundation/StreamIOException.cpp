#include "talvenor/foundation/StreamIOException.h"

RWCString StreamIOException::ToString() const
{
   const RWCString aSystemError = std::to_string(itsSystemErrorCode);
   RWCString aText = RWCString(GetType()) + ": ResultCode = " + TNResult::Describe(itsResultCode) + " (" +
                     std::to_string(static_cast<int>(itsResultCode));
   // The two forms differ in their parentheses; both are matched by hosts as they stand.
   if (itsResultCode == TN_SYSTEM_CALL_FAILED)
   {
      aText += ") System Error Code (may be WIN32 or errno) = " + aSystemError;
   }
   else
   {
      aText += ") (System Error Code (may be WIN32 or errno) (May not be applicable) = " + aSystemError + ")";
   }
   aText += " Message = " + GetMessage();
   if (const ExceptionBase* aNested = GetException())
   {
      aText += "\n  Nested Exception = " + aNested->ToString();
   }
   return aText;
}

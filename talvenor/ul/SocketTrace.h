// How Socket tells what it does. Not part of the library's interface.
#pragma once

#include "talvenor/foundation/TNTrace.h"

namespace SocketTrace
{

// One line of parts under a flag. Parts that are costly to make belong behind a test of the flag.
template <class... Parts>
void Line(TNTrace::TNTraceFlag theFlag, const Parts&... theParts)
{
   if (gTNTracer(theFlag))
   {
      LogEntry anEntry(gTNTracer, LogStream::InfoSeverity);
      (anEntry << ... << theParts) << "\n";
   }
}

// A failure that the host should see: in the error log, and in the trace of socket errors.
template <class... Parts>
void Failure(const Parts&... theParts)
{
   {
      LogEntry anEntry(gTNErrorLog);
      (anEntry << ... << theParts) << "\n";
   }
   Line(TNTrace::TNTraceSocketErrors, theParts...);
}

} // namespace SocketTrace

// What goes to the tracer while this exists, with a list of flags set ("TNTraceSocketEOF,TNTracePDU").
#pragma once

#include <sstream>
#include <string>

#include "talvenor/foundation/TNTrace.h"

class CapturedTrace
{
public:
   explicit CapturedTrace(const std::string& theFlags)
   {
      gTNTracer.On(itsText);
      gTNTracer.SetList(theFlags);
   }
   ~CapturedTrace()
   {
      gTNTracer.Clear();
      gTNTracer.Off();
   }
   CapturedTrace(const CapturedTrace&) = delete;
   CapturedTrace& operator=(const CapturedTrace&) = delete;

   std::string Text() const { return itsText.str(); }

private:
   std::ostringstream itsText;
};

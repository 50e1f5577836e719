// What goes to the error log while this exists.
#pragma once

#include <sstream>
#include <string>

#include "talvenor/foundation/TNTrace.h"

class CapturedErrorLog
{
public:
   CapturedErrorLog() { gTNErrorLog.On(itsText); }
   ~CapturedErrorLog() { gTNErrorLog.Off(); }
   CapturedErrorLog(const CapturedErrorLog&) = delete;
   CapturedErrorLog& operator=(const CapturedErrorLog&) = delete;

   std::string Text() const { return itsText.str(); }

private:
   std::ostringstream itsText;
};

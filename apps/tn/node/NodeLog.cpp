#include "apps/tn/node/NodeLog.h"

#include <iostream>
#include <mutex>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/foundation/OneLine.h"

void NodeLog::Line(const PDU_Service& theService, const std::string& theText)
{
   static std::mutex aMutex;
   const std::lock_guard aLock(aMutex);
   const std::string aTitle = theService.GetRemoteAddress();
   std::cerr << OnOneLine((aTitle.empty() ? "?" : aTitle) + "@" + theService.GetPeerIPAddress() + ": " + theText) + "\n"
             << std::flush;
}

void LimitedLog::Line(const PDU_Service& theService, const std::string& theText)
{
   constexpr unsigned long kMostLines = 20;
   if (++itsCount <= kMostLines)
   {
      NodeLog::Line(theService, theText + (itsCount == kMostLines ? "; more of this are not told" : ""));
   }
}

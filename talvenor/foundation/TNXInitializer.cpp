#include "talvenor/foundation/TNXInitializer.h"

#include <iostream>

#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/TNTrace.h"

void TNXInitializer::SetDefaultAETitle(const RWCString& theTitle)
{
   AETitle::SetDefaultAETitle(theTitle);
}

void TNXInitializer::SetTraceOn(const RWCString& theWhere)
{
   if (theWhere == "cerr")
   {
      gTNTracer.On(std::cerr);
   }
   else if (theWhere == "cout")
   {
      gTNTracer.On(std::cout);
   }
   else
   {
      gTNTracer.On(theWhere.c_str(), OpenMode::Append, OpenMode::Shared);
   }
}

void TNXInitializer::SetTraceFlags(const RWCString& theFlags)
{
   gTNTracer.SetList(theFlags);
}

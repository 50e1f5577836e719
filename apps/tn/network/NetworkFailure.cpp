#include "apps/tn/network/NetworkFailure.h"

#include <iostream>
#include <sstream>

#include "talvenor/foundation/OneLine.h"

void TellPeerLines(const std::string& theCommand, const std::string& thePeer, const std::string& theText)
{
   std::istringstream aText(theText);
   for (std::string aLine; std::getline(aText, aLine);)
   {
      std::cerr << OnOneLine("tn " + theCommand + ": " + thePeer + ": " + aLine) << "\n";
   }
}

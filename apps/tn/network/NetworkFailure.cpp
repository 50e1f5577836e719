#include "apps/tn/network/NetworkFailure.h"

#include <iostream>
#include <sstream>

#include "apps/tn/base/ExitCode.h"
#include "apps/tn/network/Peer.h"
#include "talvenor/foundation/OneLine.h"

void TellPeerLines(const std::string& theCommand, const std::string& thePeer, const std::string& theText)
{
   std::istringstream aText(theText);
   for (std::string aLine; std::getline(aText, aLine);)
   {
      std::cerr << OnOneLine("tn " + theCommand + ": " + thePeer + ": " + aLine) << "\n";
   }
}

int RunTellingFaults(const std::string& theCommand, const Peer& thePeer, const std::function<int()>& theAction)
{
   const auto aTell = [&](const std::exception& theFault) {
      std::cout.flush();
      TellPeerLines(theCommand, thePeer.Text(), theFault.what());
   };
   try
   {
      return theAction();
   }
   catch (const NetworkFailure& aFailure)
   {
      aTell(aFailure);
      return aFailure.GetExitCode();
   }
   catch (const std::invalid_argument& anError)
   {
      aTell(anError);
      return ExitCode::kWrongUse;
   }
   catch (const std::runtime_error& anError)
   {
      aTell(anError);
      return ExitCode::kCouldNotWrite;
   }
}

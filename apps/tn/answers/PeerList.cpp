#include "apps/tn/answers/PeerList.h"

#include <fstream>
#include <functional>
#include <stdexcept>

namespace
{
// Calls theVisitor with each peer of the file until it returns true. Returns what is wrong; empty when all is well.
std::string ForEachPeer(const std::string& thePath, const std::function<bool(const Peer& thePeer)>& theVisitor)
{
   std::ifstream aFile(thePath);
   if (!aFile)
   {
      return "cannot be read";
   }
   std::string aLine;
   for (int aNumber = 1; std::getline(aFile, aLine); ++aNumber)
   {
      aLine.erase(std::min(aLine.find('#'), aLine.size()));
      const std::size_t aBegin = aLine.find_first_not_of(" \t\r");
      if (aBegin == std::string::npos)
      {
         continue;
      }
      Peer aPeer;
      const std::string aFault = ParsePeer(aLine.substr(aBegin, aLine.find_last_not_of(" \t\r") + 1 - aBegin), aPeer);
      if (!aFault.empty())
      {
         return "line " + std::to_string(aNumber) + ": " + aFault;
      }
      if (theVisitor(aPeer))
      {
         break;
      }
   }
   return "";
}
} // namespace

PeerList::PeerList(std::string thePath) : itsPath(std::move(thePath))
{
   const std::string aFault = ForEachPeer(itsPath, [](const Peer&) { return false; });
   if (!aFault.empty())
   {
      throw std::runtime_error("the list of peers " + itsPath + ": " + aFault);
   }
}

std::optional<Peer> PeerList::Find(const std::string& theTitle) const
{
   std::optional<Peer> aResult;
   ForEachPeer(itsPath, [&](const Peer& thePeer) {
      if (thePeer.itsTitle == theTitle)
      {
         aResult = thePeer;
      }
      return aResult.has_value();
   });
   return aResult;
}

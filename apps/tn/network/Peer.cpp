#include "apps/tn/network/Peer.h"

#include <algorithm>
#include <map>

#include <CLI/CLI.hpp>

#include "talvenor/foundation/AETitle.h"

namespace
{
constexpr unsigned int kLargestPort = 65535;

std::string CheckHost(const std::string& theHost)
{
   if (theHost.empty())
   {
      return "there is no host";
   }
   if (theHost.find_first_of(":[]") != std::string::npos)
   {
      return "\"" + theHost + "\" is neither a host name nor an IPv4 address";
   }
   const bool hasBlank = std::any_of(theHost.begin(), theHost.end(), [](unsigned char c) { return c <= ' '; });
   return hasBlank ? "a host has no blanks" : "";
}

std::string CheckPort(const std::string& thePort)
{
   const bool isNumber =
       !thePort.empty() && thePort.size() <= 5 && thePort.find_first_not_of("0123456789") == std::string::npos;
   const unsigned long aPort = isNumber ? std::stoul(thePort) : 0;
   return aPort >= 1 && aPort <= kLargestPort ? "" : "\"" + thePort + "\" is no port (1 to 65535)";
}
} // namespace

std::string CheckTitle(const std::string& theTitle)
{
   if (theTitle.find_first_not_of(' ') == std::string::npos)
   {
      return "an application entity title has at least one character";
   }
   if (theTitle.size() > AETitle::itsLength)
   {
      return "\"" + theTitle + "\" is longer than the 16 characters of an application entity title";
   }
   const bool isFit =
       std::all_of(theTitle.begin(), theTitle.end(), [](unsigned char c) { return c >= ' ' && c < 0x7F && c != '\\'; });
   return isFit ? "" : "an application entity title has no backslash, control or other than ASCII characters";
}

// A title may contain "@" and ":"; what is behind the last "@" is host and port.
std::string ParsePeer(const std::string& theText, Peer& thePeer)
{
   Peer aPeer;
   std::string aRest = theText;
   if (const std::size_t anAt = theText.rfind('@'); anAt != std::string::npos)
   {
      aPeer.itsTitle = theText.substr(0, anAt);
      aRest = theText.substr(anAt + 1);
   }
   if (const std::size_t aColon = aRest.rfind(':'); aColon != std::string::npos)
   {
      aPeer.itsPort = aRest.substr(aColon + 1);
      aRest.resize(aColon);
   }
   aPeer.itsHost = aRest;
   for (const std::string& aFault : {CheckTitle(aPeer.itsTitle), CheckHost(aPeer.itsHost), CheckPort(aPeer.itsPort)})
   {
      if (!aFault.empty())
      {
         return aFault + "; a peer is written as AE@HOST:PORT, for example ARCHIVE@pacs.example:104";
      }
   }
   thePeer = aPeer;
   return "";
}

namespace
{
std::map<std::string, Peer>& GetNamedPeers()
{
   static std::map<std::string, Peer> aPeers;
   return aPeers;
}

std::string KnownNames()
{
   std::string aText;
   for (const auto& [aName, aPeer] : GetNamedPeers())
   {
      aText += (aText.empty() ? "; there are @" : ", @") + aName;
   }
   return aText.empty() ? "; there are no names" : aText;
}

// What is wrong with theText, a peer or the name of one behind "@"; empty when thePeer is set.
std::string FindPeer(const std::string& theText, Peer& thePeer)
{
   if (!theText.starts_with('@'))
   {
      return ParsePeer(theText, thePeer);
   }
   const auto aPlace = GetNamedPeers().find(theText.substr(1));
   if (aPlace == GetNamedPeers().end())
   {
      return "no peer has this name in the section [peers] of the file that --config or TN_CONFIG names: " + theText +
             KnownNames();
   }
   thePeer = aPlace->second;
   return "";
}
} // namespace

std::string NamePeer(const std::string& theName, const std::string& theText)
{
   return ParsePeer(theText, GetNamedPeers()[theName]);
}

CLI::Option* AddPeer(CLI::App& theOptions, Peer& thePeer)
{
   return theOptions
       .add_option_function<std::string>(
           "PEER",
           [&thePeer](const std::string& theText) {
              if (const std::string aFault = FindPeer(theText, thePeer); !aFault.empty())
              {
                 throw CLI::ValidationError("PEER", aFault);
              }
           },
           "Whom to call, as AE@HOST:PORT; without a title ANY-SCP, without a port 104; @NAME is one of --config")
       ->type_name("")
       ->required();
}

// The other side of an association, as a user names it: AE@HOST:PORT.
#pragma once

#include <string>

namespace CLI
{
class App;
class Option;
} // namespace CLI

struct Peer
{
   static constexpr const char* kDefaultTitle = "ANY-SCP";
   static constexpr const char* kDefaultPort = "104"; // PS3.8 9.1.1

   std::string itsTitle = kDefaultTitle;
   std::string itsHost;
   std::string itsPort = kDefaultPort;

   std::string Text() const { return itsTitle + "@" + itsHost + ":" + itsPort; }
};

// The title and the port may be missing. Returns what is wrong with theText, empty when all is well.
std::string ParsePeer(const std::string& theText, Peer& thePeer);

// Gives theText the name by which AddPeer knows it as "@NAME". Returns what is wrong with theText likewise.
std::string NamePeer(const std::string& theName, const std::string& theText);

// The same for an application entity title on its own (PS3.5 6.2, AE).
std::string CheckTitle(const std::string& theTitle);

// The argument by which every command of the network names its peer: AE@HOST:PORT, or a name of NamePeer.
CLI::Option* AddPeer(CLI::App& theOptions, Peer& thePeer);

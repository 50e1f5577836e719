// The nodes that instances may be sent to, by title: a text file with one AE@HOST:PORT a line. What follows "#" is a
// remark. The file is read anew when somebody asks, so that it may be changed at any time.
#pragma once

#include <optional>
#include <string>

#include "apps/tn/network/Peer.h"

class PeerList
{
public:
   // Throws std::runtime_error, naming the line at fault, when the file is none or cannot be read.
   explicit PeerList(std::string thePath);

   // Nothing for a title that is not listed, or when the file cannot be read any more.
   std::optional<Peer> Find(const std::string& theTitle) const;

private:
   std::string itsPath;
};

// Why a command of the network ends without what was asked for, in words and for the shell.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

struct Peer;

class NetworkFailure : public std::runtime_error
{
public:
   // theText may have several lines: what was asked, what was answered, and what would have worked.
   NetworkFailure(int theExitCode, const std::string& theText) : std::runtime_error(theText), itsExitCode(theExitCode)
   {}

   int GetExitCode() const { return itsExitCode; }

private:
   int itsExitCode;
};

// Writes theText to standard error, each of its lines after the command and the peer that it is about.
void TellPeerLines(const std::string& theCommand, const std::string& thePeer, const std::string& theText);

// Runs theAction of a command about thePeer, which returns an exit code. What it throws is told with TellPeerLines:
// NetworkFailure, std::invalid_argument for wrong use, and std::runtime_error for what cannot be written.
int RunTellingFaults(const std::string& theCommand, const Peer& thePeer, const std::function<int()>& theAction);

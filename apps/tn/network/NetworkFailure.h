// Why a command of the network ends without what was asked for, in words and for the shell.
#pragma once

#include <stdexcept>
#include <string>

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

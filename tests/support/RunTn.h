// Runs the built program and keeps what a user or a script sees of it. For tests with TN_PROGRAM.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>

#include <sys/wait.h>

#include "support/TemporaryDirectory.h"

struct Outcome
{
   int itsCode;
   std::string itsOutput;
   std::string itsErrors;
};

// The program under a shell, as users call it, after what else the shell is to do. Arguments with blanks are to be
// quoted by the caller.
inline Outcome Tn(const std::string& theArguments, const std::string& theInput = "/dev/null",
                  const std::string& thePreparation = "")
{
   const TemporaryDirectory aFolder;
   const std::string anOutput = aFolder.File("output");
   const std::string anErrors = aFolder.File("errors");
   const std::string aCommand = thePreparation + "'" TN_PROGRAM "' " + theArguments + " < '" + theInput + "' > '" +
                                anOutput + "' 2> '" + anErrors + "'";
   const int aStatus = std::system(aCommand.c_str());
   return {WIFEXITED(aStatus) ? WEXITSTATUS(aStatus) : -1, ReadFile(anOutput), ReadFile(anErrors)};
}

inline std::string Sample(const std::string& theName)
{
   return TALVENOR_SOURCE_DIR "/data/samples/" + theName;
}

inline std::size_t LinesOf(const std::string& theText)
{
   return static_cast<std::size_t>(std::count(theText.begin(), theText.end(), '\n'));
}

inline bool Contains(const std::string& theText, const std::string& thePart)
{
   return theText.find(thePart) != std::string::npos;
}

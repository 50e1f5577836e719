// A call of the operating system has failed. The text names what was done, and the system's reason.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

class SystemFailure : public std::system_error
{
public:
   explicit SystemFailure(const std::string& theAction, int theError = errno)
       : std::system_error(theError, std::generic_category(), theAction)
   {}
};

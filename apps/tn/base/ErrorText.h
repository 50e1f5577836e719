// What tn says of an exception of the library, on one line.
#pragma once

#include <string>

class ExceptionBase;

// The message and, where the operating system refused something, its reason.
std::string ErrorText(const ExceptionBase& theException);

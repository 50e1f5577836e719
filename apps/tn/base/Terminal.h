// How wide the terminal is that a descriptor leads to.
#pragma once

#include <cstddef>

#include <sys/ioctl.h>
#include <unistd.h>

// In characters; 0 when the descriptor leads elsewhere or the terminal does not say.
inline std::size_t TerminalWidth(int theDescriptor)
{
   winsize aSize{};
   return ::isatty(theDescriptor) == 1 && ::ioctl(theDescriptor, TIOCGWINSZ, &aSize) == 0 ? aSize.ws_col : 0;
}

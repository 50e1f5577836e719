// Whether the user wants the program to end (SIGINT, SIGTERM, SIGHUP), for commands that then end what they have begun
// and say how far they came. A second signal ends the program at once.
#pragma once

#include <chrono>

namespace Interruption
{
using Clock = std::chrono::steady_clock;

// From now on those signals are taken. Until then they end the program, and nothing below is ever true.
void Take();

bool HasCome();
bool WasBefore(Clock::time_point theTime);

// Sleeps so long, less when one comes.
void Sleep(std::chrono::duration<double> theTime);
} // namespace Interruption

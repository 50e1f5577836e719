// Part of builds with --coverage only: writes the counters of what it is linked into when a program leaves by quick_exit.
#include <cstdlib>

extern "C" void __gcov_dump();

namespace
{
const int kRegistered = std::at_quick_exit(__gcov_dump);
} // namespace

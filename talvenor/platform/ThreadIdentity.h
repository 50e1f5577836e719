// The cheapest identity of the calling thread: its thread pointer, one register, never 0 and unique among the living
// threads of the process. A thread that starts after another has ended may get the same value.
#pragma once

#include <cstdint>

namespace TNPlatform
{

inline std::uintptr_t ThisThread()
{
   return reinterpret_cast<std::uintptr_t>(__builtin_thread_pointer());
}

} // namespace TNPlatform

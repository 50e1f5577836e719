// Threads of the operating system: their numbers, their start and end, and the two calls by which a lock made of one
// word puts its waiters to sleep (futex(2)).
#pragma once

#include <cstddef>
#include <cstdint>

namespace TNPlatform
{

unsigned int CurrentThreadId(); // as shown by ps and by debuggers
unsigned int CurrentProcessId();
unsigned int ProcessorCount(); // processors that this process may run on, at least 1

// Starts a thread that nobody joins. theStackSize is in bytes; 0 asks for the default, a small value is raised to what
// the library needs for its log entries. Returns 0 and the identifier of the new thread, or an error number of errno.h.
int StartDetachedThread(void (*theFunction)(void*), void* theArgument, std::size_t theStackSize,
                        unsigned long& theIdentifier);

// Ends the calling thread. The stack is unwound, so destructors run.
[[noreturn]] void EndCurrentThread();

// Tells the processor that the caller spins.
inline void SpinPause()
{
#if defined(__x86_64__) || defined(__i386__)
   __builtin_ia32_pause();
#elif defined(__aarch64__)
   asm volatile("yield");
#endif
}

// Sleeps until SleepersWake of the same word, at most theMilliseconds (below 1000), and not at all if *theWord is no
// longer theExpected. May also return early for no reason.
void SleepOnWord(const std::uint32_t* theWord, std::uint32_t theExpected, unsigned int theMilliseconds);
void WakeOneSleeper(const std::uint32_t* theWord); // reads nothing at that address

} // namespace TNPlatform

#include "talvenor/platform/Threads.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <linux/futex.h>
#include <memory>
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace TNPlatform
{

namespace
{

struct Start
{
   void (*itsFunction)(void*);
   void* itsArgument;
};

void* RunStart(void* theStart)
{
   const Start aStart = *std::unique_ptr<const Start>(static_cast<const Start*>(theStart));
   aStart.itsFunction(aStart.itsArgument);
   return nullptr;
}

// Log entries are composed on the stack of the thread that writes them.
constexpr std::size_t kLeastStack = 128 * 1024;

std::size_t WholePages(std::size_t theBytes)
{
   const auto aPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
   return (theBytes + aPage - 1) / aPage * aPage;
}

int SetDetachedAttributes(pthread_attr_t& theAttributes, std::size_t theStackSize)
{
   const int anError = pthread_attr_setdetachstate(&theAttributes, PTHREAD_CREATE_DETACHED);
   if (anError != 0 || theStackSize == 0)
   {
      return anError;
   }
   return pthread_attr_setstacksize(&theAttributes, WholePages(std::max(theStackSize, kLeastStack)));
}

} // namespace

unsigned int CurrentThreadId()
{
   return static_cast<unsigned int>(gettid());
}

unsigned int CurrentProcessId()
{
   return static_cast<unsigned int>(getpid());
}

unsigned int ProcessorCount()
{
   cpu_set_t aSet;
   const bool isKnown = sched_getaffinity(0, sizeof aSet, &aSet) == 0;
   const long aCount = isKnown ? CPU_COUNT(&aSet) : sysconf(_SC_NPROCESSORS_ONLN);
   return static_cast<unsigned int>(std::max(aCount, 1L));
}

int StartDetachedThread(void (*theFunction)(void*), void* theArgument, std::size_t theStackSize,
                        unsigned long& theIdentifier)
{
   auto aStart = std::make_unique<Start>(Start{theFunction, theArgument});
   pthread_attr_t anAttributes;
   int anError = pthread_attr_init(&anAttributes);
   if (anError != 0)
   {
      return anError;
   }
   pthread_t aThread = {};
   anError = SetDetachedAttributes(anAttributes, theStackSize);
   if (anError == 0)
   {
      anError = pthread_create(&aThread, &anAttributes, RunStart, aStart.get());
   }
   pthread_attr_destroy(&anAttributes);
   if (anError == 0)
   {
      aStart.release(); // the new thread frees it
      theIdentifier = aThread;
   }
   return anError;
}

void EndCurrentThread()
{
   pthread_exit(nullptr);
}

void SleepOnWord(const std::uint32_t* theWord, std::uint32_t theExpected, unsigned int theMilliseconds)
{
   const int anErrno = errno;
   const timespec aLimit = {0, static_cast<long>(theMilliseconds) * 1000000};
   syscall(SYS_futex, theWord, FUTEX_WAIT_PRIVATE, theExpected, &aLimit, nullptr, 0);
   errno = anErrno;
}

void WakeOneSleeper(const std::uint32_t* theWord)
{
   const int anErrno = errno;
   syscall(SYS_futex, theWord, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
   errno = anErrno;
}

} // namespace TNPlatform

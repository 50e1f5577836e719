#include "talvenor/foundation/MThreadHandler.h"

#include <cerrno>
#include <cstdlib>
#include <cxxabi.h>
#include <iostream>
#include <memory>

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/MutexWhileInScope.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/platform/Threads.h"

constinit Mutex MThreadHandler::itsMutex;
constinit UINT32 MThreadHandler::itsThreadCounter = 1;
const UINT32 MThreadHandler::itsMainThread = TNPlatform::CurrentThreadId();

namespace
{

struct StartRecord
{
   void (*itsFunction)(void*);
   void* itsArgument;
};

// The message of the exception being handled if it is an Error, else null.
template <class Error>
const char* MessageAs()
{
   try
   {
      throw;
   }
   catch (const Error& anError)
   {
      return anError.why();
   }
   catch (...)
   {
      return nullptr;
   }
}

struct ReportedError
{
   const char* itsName;
   const char* (*itsMessage)();
};

// The first row that fits the exception gives its name, so derived classes stand before their bases.
constexpr ReportedError kReportedErrors[] = {
    {"RWBoundsErr", MessageAs<RWBoundsErr>},
    {"RWInternalErr", MessageAs<RWInternalErr>},
    {"RWStreamErr", MessageAs<RWStreamErr>},
    {"RWFileErr", MessageAs<RWFileErr>},
    {"RWExternalErr", MessageAs<RWExternalErr>},
    {"RWxalloc", MessageAs<RWxalloc>},
    {"RWxmsg", MessageAs<RWxmsg>},
    {"BadAllocException", MessageAs<BadAllocException>},
    {"InvalidValueTypeException", MessageAs<InvalidValueTypeException>},
    {"InvalidEntryDescriptionException", MessageAs<InvalidEntryDescriptionException>},
    {"InvalidUIDTypeException", MessageAs<InvalidUIDTypeException>},
};

RWCString DescribeHandledException()
{
   for (const ReportedError& anError : kReportedErrors)
   {
      if (const char* aMessage = anError.itsMessage())
      {
         return RWCString(anError.itsName) + ": " + aMessage;
      }
   }
   return "Unknown exception";
}

// Runs the function and returns the description of the exception that escaped it, empty if none did. A forced unwind
// has no object to refer to, which the sanitizer of undefined behaviour would take for a fault.
__attribute__((no_sanitize("undefined"))) RWCString RunGuarded(const StartRecord& theStart)
{
   try
   {
      theStart.itsFunction(theStart.itsArgument);
   }
   catch (abi::__forced_unwind&)
   {
      throw; // the thread is being ended, for example by pthread_exit; this may not be held up
   }
   catch (...)
   {
      return DescribeHandledException();
   }
   return {};
}

void Report(const RWCString& theException)
{
   const RWCString aReport = "Unhandled exception in thread " + std::to_string(TNPlatform::CurrentThreadId()) +
                             ". Thread terminating...\nException: " + theException + "\n";
   std::cerr << aReport << std::flush;
   LogEntry(gTNErrorLog) << "MThreadHandler::StartThread() " << aReport;
}

bool IsTracing()
{
   return gTNTracer(TNTrace::TNTraceThreads);
}

} // namespace

int MThreadHandler::CreateDetachedThread(void (*theFunction)(void*), void* theArgument, int theStackSize)
{
   auto aStart = std::make_unique<StartRecord>(StartRecord{theFunction, theArgument});
   int anError = 0;
   {
      // Held until the thread is counted and traced: it cannot give back its count before it has been added.
      const MutexWhileInScope aLock(itsMutex);
      unsigned long anIdentifier = 0;
      const std::size_t aStackSize = theStackSize > 0 ? static_cast<std::size_t>(theStackSize) : 0;
      anError = TNPlatform::StartDetachedThread(StartThread, aStart.get(), aStackSize, anIdentifier);
      if (anError != 0)
      {
         LogEntry(gTNErrorLog) << "MThreadHandler::CreateDetachedThread() "
                               << "Failed to create thread. (errno = " << anError << ")\n";
      }
      else
      {
         aStart.release(); // StartThread frees it
         IncrementThreadCount();
         if (IsTracing())
         {
            LogEntry(gTNTracer) << "MThreadHandler::CreateDetachedThread() "
                                << "Created thread. (ID =  " << anIdentifier << ")\n";
         }
      }
   }
   errno = anError;
   return anError;
}

unsigned int MThreadHandler::IncrementThreadCount()
{
   const MutexWhileInScope aLock(itsMutex);
   return ++itsThreadCounter;
}

unsigned int MThreadHandler::DecrementThreadCount()
{
   const MutexWhileInScope aLock(itsMutex);
   if (itsThreadCounter > 0)
   {
      --itsThreadCounter;
   }
   return itsThreadCounter;
}

void MThreadHandler::EndMainThread()
{
   if (TNPlatform::CurrentThreadId() == itsMainThread)
   {
      EndThread();
   }
}

void MThreadHandler::EndThread()
{
   unsigned int aCount = 0;
   {
      const MutexWhileInScope aLock(itsMutex);
      aCount = DecrementThreadCount();
      if (IsTracing())
      {
         LogEntry(gTNTracer) << "MThreadHandler::EndThread() "
                             << "Ending thread " << TNPlatform::CurrentThreadId() << " Thread count now " << aCount
                             << "\n";
      }
   }
   if (aCount != 0)
   {
      TNPlatform::EndCurrentThread();
   }
   if (IsTracing())
   {
      LogEntry(gTNTracer) << "MThreadHandler::EndThread() "
                          << "Process exiting.\n";
   }
   std::exit(EXIT_SUCCESS);
}

void MThreadHandler::StartThread(void* theStartRecord)
{
   const unsigned int aThread = TNPlatform::CurrentThreadId();
   if (IsTracing())
   {
      LogEntry(gTNTracer) << "MThreadHandler::StartThread() "
                          << "Thread starting. (ID =  " << aThread << ")\n";
   }
   if (theStartRecord)
   {
      const StartRecord aStart = *std::unique_ptr<const StartRecord>(static_cast<const StartRecord*>(theStartRecord));
      const RWCString anException = RunGuarded(aStart);
      if (!anException.empty())
      {
         Report(anException);
      }
   }
   if (IsTracing())
   {
      LogEntry(gTNTracer) << "MThreadHandler::StartThread() "
                          << "Thread is history. (ID =  " << aThread << ")\n";
   }
   EndThread();
}

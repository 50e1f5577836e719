// Starts detached threads for a host and counts the threads that keep the process alive. (The library itself starts
// none.)
//
// The thread that loads the library counts as one; every thread started here adds one and takes it back when its
// function has returned or thrown. A host whose main function ends with EndMainThread gives back that first one: the
// process then lives until the last counted thread has ended, and exits with status 0. An exception that escapes a
// thread function ends that thread only, after a report to the standard error stream and to gTNErrorLog.
//
// Thread starts and ends are traced under TNTraceThreads. Any thread may call.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/Mutex.h"

class TALVENOR_API MThreadHandler
{
public:
   // Runs theFunction(theArgument) on a new thread that nobody joins. theStackSize is in bytes: 0 asks for the default
   // of the platform, small sizes are raised to 128 KiB. Returns 0, or an error number of errno.h; errno is set to it.
   static int CreateDetachedThread(void (*theFunction)(void*), void* theArgument, int theStackSize);

   // Both return the new count. Taking one from 0 leaves 0.
   static unsigned int IncrementThreadCount();
   static unsigned int DecrementThreadCount();

   // Ends the calling thread if it is the one that loaded the library; on any other does nothing. The frames of main
   // are unwound: their destructors run, and none of them may be noexcept.
   static void EndMainThread();

protected:
   // Gives back one of the count and ends the calling thread, or the process when nothing is left of the count.
   [[noreturn]] static void EndThread();

   // The first function of every new thread. theStartRecord is freed here.
   static void StartThread(void* theStartRecord);

private:
   static Mutex itsMutex; // guards itsThreadCounter; taken before the mutex of a log, never after
   static UINT32 itsThreadCounter;
   static const UINT32 itsMainThread; // the thread that loaded the library
};

// Ends the waits of this process's sockets when something takes too long as a whole: the time-out of a socket starts again
// with every byte that comes, so that a peer could hold the program for ever.
//
//    Watchdog aWatchdog;
//    aWatchdog.Begin(aLimit);
//    const int isDone = aService.Read(...);   // TN_CANCELLED when the limit has passed
//    if (aWatchdog.End()) ...
//
// One at a time: it sets the abort flag of all sockets, and End clears it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

class Watchdog
{
public:
   using Clock = std::chrono::steady_clock;

   Watchdog();
   ~Watchdog();
   Watchdog(const Watchdog&) = delete;
   Watchdog& operator=(const Watchdog&) = delete;

   // A limit of 0 is none.
   void Begin(std::chrono::duration<double> theLimit);
   bool End(); // whether the limit had passed

private:
   void Watch();

   std::mutex itsMutex;
   std::condition_variable itsChanged;
   std::optional<Clock::time_point> itsEnd; // of what is being watched
   bool itsHasPassed = false;
   bool itsIsClosing = false;
   std::thread itsThread; // last: it uses the others
};

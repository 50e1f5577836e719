// Ends the waits of a socket when something takes too long as a whole: the time-out of a socket starts again with every
// byte that comes, so that a peer could hold the program for ever.
//
//    Watchdog aWatchdog;
//    aWatchdog.Watch(aSocket);
//    aWatchdog.Begin(aLimit);
//    const int isDone = aService.Read(...);   // fails when the limit has passed
//    if (aWatchdog.End()) ...
//
// Begin and End cost no system call: the thread behind it looks at the clock several times a second. It also ends the
// waits, a little later, when the user interrupts the program (Interruption.h).
//
// For a client, which has one thing under way at a time, over whatever sockets it takes, and wants to know whether it
// was the limit that ended it. A node has many connections, each with a deadline of its own: Deadlines.h.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

class Socket;

class Watchdog
{
public:
   using Clock = std::chrono::steady_clock;

   // How late it may be.
   static constexpr std::chrono::milliseconds kInterval{20};

   // For how long what has begun may go on after an interruption.
   static constexpr std::chrono::milliseconds kGrace{1000};

   Watchdog();
   ~Watchdog();
   Watchdog(const Watchdog&) = delete;
   Watchdog& operator=(const Watchdog&) = delete;

   // From now on theSocket, which may end at any time: the association that it belongs to decides.
   void Watch(Socket& theSocket) const;

   // A limit of 0 is none. Beginning again moves the end.
   void Begin(std::chrono::duration<double> theLimit);
   bool End(); // whether the limit had passed

private:
   void Run();
   bool IsOver(Clock::time_point theNow) const;

   std::mutex itsMutex;
   std::condition_variable itsChanged;
   const std::shared_ptr<std::atomic<int>> itsFlag = std::make_shared<std::atomic<int>>(0); // shared with the sockets
   Clock::time_point itsEnd = Clock::time_point::max();                                     // of what is being watched
   bool itsIsWatching = false;
   bool itsHasPassed = false;
   bool itsIsClosing = false;
   std::thread itsThread; // last: it uses the others
};

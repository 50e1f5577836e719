// Ends the waits of connections whose time is over. A socket's own time-out starts again with every byte that comes, so
// that a peer which sends one byte a minute would hold a thread for ever; a deadline does not move.
//
// One thread looks at all connections several times a second and sets the abort flags of the sockets that are late.
//
// For a node, whose connections come and go, are idle or at work, and are ended with it. A client, which has one thing
// under way and wants to know why it failed, has a Watchdog (Watchdog.h).
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

class Socket;

class Deadlines
{
public:
   using Clock = std::chrono::steady_clock;
   using Seconds = std::chrono::duration<double>;

   // The deadline of one connection, whose socket is borrowed. Registered as long as it lives.
   class Guard
   {
   public:
      Guard(Deadlines& theDeadlines, Socket& theSocket);
      Guard(const Guard&) = delete;
      Guard& operator=(const Guard&) = delete;
      ~Guard();

      // Counts from now; 0 is no deadline. theIsIdle says that nothing is lost when the connection is ended.
      void Set(Seconds theLimit, bool theIsIdle);

      Deadlines& GetDeadlines() const { return itsDeadlines; }

   private:
      friend class Deadlines;

      Deadlines& itsDeadlines;
      Socket& itsSocket;
      std::atomic<Clock::time_point> itsEnd = Clock::time_point::max();
      std::atomic<bool> itsIsIdle = false;
   };

   Deadlines();
   Deadlines(const Deadlines&) = delete;
   Deadlines& operator=(const Deadlines&) = delete;
   ~Deadlines();

   // Ends the connections that are idle, or all, now and as they become so.
   void EndIdle() { itsEndsIdle = true; }
   void EndAll() { itsEndsAll = true; }

   // How soon a request to end acts.
   static constexpr std::chrono::milliseconds kInterval{100};

private:
   void Watch();
   bool IsLate(const Guard& theGuard, Clock::time_point theNow) const;

   std::atomic<bool> itsEndsIdle = false;
   std::atomic<bool> itsEndsAll = false;
   std::mutex itsMutex;
   std::condition_variable itsClosing;
   bool itsIsClosing = false;
   std::set<Guard*> itsGuards;
   std::thread itsThread; // last: it uses the others
};

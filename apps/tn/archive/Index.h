// The index of an archive as many associations use it at once: a thread of its own adds what they have stored, as many
// instances in a transaction as there are.
//
// Failures throw SQLiteFailure unless said otherwise. Any thread, except that Flush and the destructor wait.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <semaphore>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "apps/tn/archive/IndexDatabase.h"

class Index
{
public:
   // What Add gives to one who waits for the end of the transaction.
   class Ticket
   {
   public:
      // Returns what went wrong; empty for nothing.
      const std::string& Wait()
      {
         itsIsDone.acquire();
         return itsFault;
      }

   private:
      friend class Index;

      void Settle(const std::string& theFault) noexcept;

      std::binary_semaphore itsIsDone{0};
      std::string itsFault;
   };

   explicit Index(const std::string& thePath);

   // Adds what is still waiting.
   ~Index();
   Index(const Index&) = delete;
   Index& operator=(const Index&) = delete;

   // Puts the instance on the list of those to be added, in place of one with its SOP Instance UID. An instance with a
   // ticket, which is borrowed, is given up when it cannot be added, another one tried again until it can. Throws
   // SQLiteFailure when too much waits to be added, and stays so: the list is bounded by number and by memory.
   void Add(IndexedInstance&& theInstance, Ticket* theTicket);

   // IndexDatabase::BeginReplacement, which is done when the ticket says so. theIsSafe: it is on the disk then. Throws
   // as Add does.
   void BeginReplacement(const std::string& theSOPInstanceUID, const std::string& thePath, bool theIsSafe,
                         Ticket& theTicket);

   // The path of the instance, whether it has been added yet or is on the list.
   std::optional<std::string> Find(const std::string& theSOPInstanceUID);

   // What is on the list now is in the tables when this returns, whatever others put there meanwhile. False when that
   // failed.
   bool Flush();

private:
   enum class Action
   {
      kAdd,
      kBeginReplacement, // of the instance, which has a UID and a path only
      kBeginReplacementSafely
   };

   struct Entry
   {
      IndexedInstance itsInstance;
      Ticket* itsTicket;
      Action itsAction;
   };

   struct Pending
   {
      std::string itsPath; // of the last one
      unsigned int itsCount = 0;
   };

   void Put(Entry&& theEntry);

   // Of the thread. What does not throw lets nobody wait for ever when memory runs out.
   void Run();
   bool AwaitBatch();
   void TakeList();
   std::string TryAddBatch();
   void Commit();
   void Settle(const std::string& theFault) noexcept;
   bool HasRoom() const;

   IndexDatabase itsWriter;   // the thread's
   std::mutex itsReaderMutex; // guards itsReader and itsIsCommitting
   IndexDatabase itsReader;
   bool itsIsCommitting = false;

   std::mutex itsMutex; // guards what follows
   std::condition_variable itsWork;
   std::condition_variable itsProgress;
   std::vector<Entry> itsList;
   std::unordered_map<std::string, Pending> itsPaths; // by SOP Instance UID, of those on the list and in the batch
   unsigned int itsTickets = 0;                       // on the list
   std::size_t itsWaiting = 0;                        // instances on the list and in the batch,
   std::size_t itsWaitingBytes = 0;                   // and how much memory they take
   std::uint64_t itsAdded = 0;                        // instances that were ever put on the list,
   std::uint64_t itsTaken = 0;                        // that were ever in a batch,
   std::uint64_t itsSettled = 0;                      // and the last up to which all are in the tables or given up
   unsigned int itsFlushes = 0;                       // that wait
   bool itsHasFailed = false;                         // the last transaction
   bool itsIsEnding = false;

   std::vector<Entry> itsBatch; // the thread's
   std::thread itsThread;       // last: it uses the others
};

// The files of one association batch that wait to be sent, shared by those that send them side by side.
#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class SendQueue
{
public:
   struct Item
   {
      std::size_t itsFile;          // index
      unsigned int itsAttempts = 0; // that have failed
   };

   explicit SendQueue(const std::vector<std::size_t>& theFiles);

   // None when nothing is left, or no more is to be sent.
   std::optional<Item> Take();

   // To be sent next, or after all others.
   void PutBack(const Item& theItem);
   void Defer(const Item& theItem);

   // From now on nothing is to be taken.
   void Stop();
   bool IsStopped() const;
   bool IsEmpty() const;

   // What is left in the end.
   std::deque<Item> TakeRest();

private:
   mutable std::mutex itsMutex;
   std::deque<Item> itsItems;
   bool itsIsStopped = false;
};

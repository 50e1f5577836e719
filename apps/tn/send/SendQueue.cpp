#include "apps/tn/send/SendQueue.h"

#include <utility>

SendQueue::SendQueue(const std::vector<std::size_t>& theFiles)
{
   for (const std::size_t aFile : theFiles)
   {
      itsItems.push_back({aFile});
   }
}

std::optional<SendQueue::Item> SendQueue::Take()
{
   const std::lock_guard aLock(itsMutex);
   if (itsIsStopped || itsItems.empty())
   {
      return std::nullopt;
   }
   const Item anItem = itsItems.front();
   itsItems.pop_front();
   return anItem;
}

void SendQueue::PutBack(const Item& theItem)
{
   const std::lock_guard aLock(itsMutex);
   itsItems.push_front(theItem);
}

void SendQueue::Defer(const Item& theItem)
{
   const std::lock_guard aLock(itsMutex);
   itsItems.push_back(theItem);
}

void SendQueue::Stop()
{
   const std::lock_guard aLock(itsMutex);
   itsIsStopped = true;
}

bool SendQueue::IsStopped() const
{
   const std::lock_guard aLock(itsMutex);
   return itsIsStopped;
}

bool SendQueue::IsEmpty() const
{
   const std::lock_guard aLock(itsMutex);
   return itsItems.empty();
}

std::deque<SendQueue::Item> SendQueue::TakeRest()
{
   const std::lock_guard aLock(itsMutex);
   return std::exchange(itsItems, {});
}

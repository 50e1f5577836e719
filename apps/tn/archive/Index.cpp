#include "apps/tn/archive/Index.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <new>

namespace
{
// What waits at most: instances, which take about 4 KiB each, and bytes, as their senders may fill every key.
constexpr std::size_t kMostWaiting = 20000;
constexpr std::size_t kMostWaitingBytes = std::size_t{256} << 20;
constexpr std::size_t kFullBatch = 1000;
constexpr std::chrono::seconds kLongestWait{IndexDatabase::kBusySeconds};

// A transaction costs as much as adding ten instances. Nobody waits for those without tickets.
constexpr std::chrono::milliseconds kGathering{50};

constexpr char kNoMemory[] = "no memory"; // short enough for a std::string that needs none

void Tell(const std::string& theFault) noexcept
{
   try
   {
      std::cerr << "tn serve: " + theFault + "\n" << std::flush;
   }
   catch (const std::bad_alloc&)
   {} // the senders are told
}

std::size_t SizeOf(const IndexedInstance& theInstance)
{
   std::size_t aSize = sizeof theInstance;
   for (std::size_t i = 0; i < InstanceKeys::kCount; ++i)
   {
      aSize += theInstance.itsKeys[i].size();
   }
   return aSize;
}
} // namespace

Index::Index(const std::string& thePath) : itsWriter(thePath), itsReader(thePath), itsThread([this] { Run(); }) {}

Index::~Index()
{
   {
      const std::lock_guard aLock(itsMutex);
      itsIsEnding = true;
   }
   itsWork.notify_one();
   itsThread.join();
}

void Index::Add(IndexedInstance&& theInstance, Ticket* theTicket)
{
   Put({std::move(theInstance), theTicket, Action::kAdd});
}

void Index::BeginReplacement(const std::string& theSOPInstanceUID, const std::string& thePath, bool theIsSafe,
                             Ticket& theTicket)
{
   IndexedInstance anInstance;
   anInstance.itsKeys[Key::kSOPInstance] = theSOPInstanceUID;
   anInstance.itsPath = thePath;
   Put({std::move(anInstance), &theTicket, theIsSafe ? Action::kBeginReplacementSafely : Action::kBeginReplacement});
}

void Index::Put(Entry&& theEntry)
{
   std::unique_lock aLock(itsMutex);
   if (!itsProgress.wait_for(aLock, kLongestWait, [&] { return HasRoom(); }))
   {
      throw SQLiteFailure("the index is locked or too slow", 0);
   }
   const std::size_t aSize = SizeOf(theEntry.itsInstance);
   const bool isWaitedFor = theEntry.itsTicket != nullptr;
   std::string aPath = theEntry.itsInstance.itsPath;
   itsList.push_back(std::move(theEntry));
   if (itsList.back().itsAction == Action::kAdd)
   {
      try
      {
         Pending& aPending = itsPaths[itsList.back().itsInstance.itsKeys[Key::kSOPInstance]];
         aPending.itsPath = std::move(aPath);
         ++aPending.itsCount;
      }
      catch (...)
      {
         itsList.pop_back();
         throw;
      }
   }
   ++itsAdded;
   ++itsWaiting;
   itsWaitingBytes += aSize;
   itsTickets += isWaitedFor;
   if (isWaitedFor || itsList.size() == 1 || itsList.size() == kFullBatch)
   {
      aLock.unlock();
      itsWork.notify_one();
   }
}

bool Index::HasRoom() const
{
   return itsWaiting < kMostWaiting && itsWaitingBytes < kMostWaitingBytes;
}

std::optional<std::string> Index::Find(const std::string& theSOPInstanceUID)
{
   {
      const std::lock_guard aLock(itsMutex);
      const auto aPlace = itsPaths.find(theSOPInstanceUID);
      if (aPlace != itsPaths.end())
      {
         return aPlace->second.itsPath;
      }
   }
   const std::lock_guard aLock(itsReaderMutex);
   if (!itsIsCommitting)
   {
      itsReader.BeginReading(); // Commit ends it
   }
   return itsReader.Find(theSOPInstanceUID);
}

bool Index::Flush()
{
   std::unique_lock aLock(itsMutex);
   ++itsFlushes;
   itsHasFailed = false;
   const std::uint64_t aLast = itsAdded;
   itsWork.notify_one();
   itsProgress.wait(aLock, [&] { return itsSettled >= aLast || itsHasFailed; });
   --itsFlushes;
   return itsSettled >= aLast;
}

void Index::Run()
{
   while (AwaitBatch())
   {
      std::string aFault;
      try
      {
         TakeList();
         aFault = TryAddBatch();
      }
      catch (const std::bad_alloc&)
      {
         itsWriter.RollBack();
         aFault = kNoMemory;
      }
      Settle(aFault);
   }
}

// False at the end.
bool Index::AwaitBatch()
{
   std::unique_lock aLock(itsMutex);
   itsWork.wait(aLock, [&] { return itsIsEnding || !itsList.empty() || !itsBatch.empty(); });
   const auto isWanted = [&] {
      return itsIsEnding || itsTickets != 0 || itsFlushes != 0 || itsList.size() >= kFullBatch;
   };
   itsWork.wait_for(aLock, itsHasFailed ? kGathering * 10 : kGathering, isWanted);
   return !itsList.empty() || !itsBatch.empty();
}

void Index::TakeList()
{
   const std::lock_guard aLock(itsMutex);
   if (itsBatch.empty())
   {
      itsBatch.swap(itsList);
   }
   else
   {
      itsBatch.reserve(itsBatch.size() + itsList.size()); // or nothing is moved
      std::move(itsList.begin(), itsList.end(), std::back_inserter(itsBatch));
      itsList.clear();
   }
   itsTaken = itsAdded;
   itsTickets = 0;
}

std::string Index::TryAddBatch()
{
   try
   {
      itsWriter.Begin(std::ranges::find(itsBatch, Action::kBeginReplacementSafely, &Entry::itsAction) !=
                      itsBatch.end());
      for (const Entry& anEntry : itsBatch)
      {
         const IndexedInstance& anInstance = anEntry.itsInstance;
         anEntry.itsAction == Action::kAdd
             ? itsWriter.Add(anInstance)
             : itsWriter.BeginReplacement(anInstance.itsKeys[Key::kSOPInstance], anInstance.itsPath);
      }
      Commit();
      return "";
   }
   catch (const std::exception& anError)
   {
      itsWriter.RollBack();
      return std::string("index: ") + anError.what();
   }
}

// Nobody goes on reading what was there before, nor keeps the log from being emptied into the tables.
void Index::Commit()
{
   const auto setIsCommitting = [&](bool theAnswer) {
      const std::lock_guard aLock(itsReaderMutex);
      itsIsCommitting = theAnswer;
      itsReader.EndReading();
   };
   setIsCommitting(true);
   try
   {
      itsWriter.Commit();
   }
   catch (...)
   {
      setIsCommitting(false);
      throw;
   }
   setIsCommitting(false);
}

// Tells those who wait, and keeps what has to be tried again.
void Index::Settle(const std::string& theFault) noexcept
{
   {
      const std::lock_guard aLock(itsMutex);
      const auto isKept = [&](const Entry& theEntry) {
         return !theFault.empty() && theEntry.itsTicket == nullptr && !itsIsEnding;
      };
      const auto anOver = std::stable_partition(itsBatch.begin(), itsBatch.end(), isKept);
      for (auto anEntry = anOver; anEntry != itsBatch.end(); ++anEntry)
      {
         if (anEntry->itsAction == Action::kAdd)
         {
            const auto aPlace = itsPaths.find(anEntry->itsInstance.itsKeys[Key::kSOPInstance]);
            if (--aPlace->second.itsCount == 0)
            {
               itsPaths.erase(aPlace);
            }
         }
         --itsWaiting;
         itsWaitingBytes -= SizeOf(anEntry->itsInstance);
         if (anEntry->itsTicket != nullptr)
         {
            anEntry->itsTicket->Settle(theFault);
         }
      }
      itsBatch.erase(anOver, itsBatch.end());
      if (!theFault.empty() && !itsHasFailed)
      {
         Tell(theFault);
      }
      itsHasFailed = !theFault.empty();
      if (itsBatch.empty())
      {
         itsSettled = itsTaken;
      }
   }
   itsProgress.notify_all();
}

void Index::Ticket::Settle(const std::string& theFault) noexcept
{
   try
   {
      itsFault = theFault;
   }
   catch (const std::bad_alloc&)
   {
      itsFault = kNoMemory;
   }
   itsIsDone.release();
}

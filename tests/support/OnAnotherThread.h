// Runs functions on threads of their own and waits for them.
#pragma once

#include <future>
#include <thread>
#include <vector>

// Returns what theFunction returns.
template <class Function>
auto OnAnotherThread(Function theFunction)
{
   return std::async(std::launch::async, theFunction).get();
}

// theWork with the number of the thread, on theCount threads at once.
template <class Work>
void OnThreads(int theCount, Work theWork)
{
   std::vector<std::thread> aThreads;
   for (int i = 0; i < theCount; ++i)
   {
      aThreads.emplace_back([&theWork, i] { theWork(i); });
   }
   for (std::thread& aThread : aThreads)
   {
      aThread.join();
   }
}

// Runs a function on a thread of its own, waits for it and returns its result.
#pragma once

#include <future>

template <class Function>
auto OnAnotherThread(Function theFunction)
{
   return std::async(std::launch::async, theFunction).get();
}

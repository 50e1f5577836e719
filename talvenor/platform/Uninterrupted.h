// Repeats a system call that a signal interrupted.
#pragma once

#include <cerrno>

namespace TNPlatform
{

template <class Call>
auto Uninterrupted(Call theCall)
{
   auto aResult = theCall();
   while (aResult < 0 && errno == EINTR)
   {
      aResult = theCall();
   }
   return aResult;
}

} // namespace TNPlatform

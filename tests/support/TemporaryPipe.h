// A pipe whose reading end has a name, filled with a text and closed for writing.
#pragma once

#include <string>
#include <string_view>
#include <unistd.h>

class TemporaryPipe
{
public:
   // theText must fit into the pipe (64 KiB).
   explicit TemporaryPipe(std::string_view theText)
   {
      itsFilled = ::pipe(itsEnds) == 0 &&
                  ::write(itsEnds[1], theText.data(), theText.size()) == static_cast<ssize_t>(theText.size());
      ::close(itsEnds[1]);
      itsName = itsFilled ? "/proc/self/fd/" + std::to_string(itsEnds[0]) : "";
   }
   ~TemporaryPipe() { ::close(itsEnds[0]); }
   TemporaryPipe(const TemporaryPipe&) = delete;
   TemporaryPipe& operator=(const TemporaryPipe&) = delete;

   const char* Name() const { return itsName.c_str(); } // empty when there is no pipe

private:
   int itsEnds[2] = {-1, -1};
   bool itsFilled = false;
   std::string itsName;
};

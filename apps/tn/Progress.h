// One line on the terminal that says how far a long job has come; nothing where standard error is no terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

class Progress
{
public:
   // theTotal is the number of files.
   explicit Progress(std::size_t theTotal);
   Progress(const Progress&) = delete;
   Progress& operator=(const Progress&) = delete;

   // Wipes the line.
   ~Progress();

   // theName is about to be worked on.
   void Begin(const std::string& theName);

   // It is done, and had so many bytes.
   void End(std::uintmax_t theBytes);

private:
   using Clock = std::chrono::steady_clock;

   std::size_t itsTotal;
   std::size_t itsDone = 0;
   std::uintmax_t itsBytes = 0;
   Clock::time_point itsStart = Clock::now();
   Clock::time_point itsLastShown;
   bool itsIsShown;
};

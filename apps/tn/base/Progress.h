// One line on the terminal that says how far a long job has come; nothing where standard error is no terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

class Progress
{
public:
   // theTotal is the number of files. Where their bytes are known, the share that is done is told by them, and the time
   // left.
   explicit Progress(std::size_t theTotal, std::uintmax_t theTotalBytes = 0);
   Progress(const Progress&) = delete;
   Progress& operator=(const Progress&) = delete;

   // Wipes the line.
   ~Progress();

   // theName is about to be worked on.
   void Begin(const std::string& theName);

   // So much of it is done.
   void Advance(std::uintmax_t theBytes);

   // It is done, and had so many bytes that Advance was not told of.
   void End(std::uintmax_t theBytes);

   // Makes room for another line on the terminal.
   void Wipe();

private:
   using Clock = std::chrono::steady_clock;

   void Show();
   std::string Figures(double theSeconds) const;

   std::size_t itsTotal;
   std::uintmax_t itsTotalBytes;
   std::size_t itsDone = 0;
   std::uintmax_t itsBytes = 0;
   std::string itsName;
   Clock::time_point itsStart = Clock::now();
   Clock::time_point itsLastShown;
   bool itsIsShown;
};

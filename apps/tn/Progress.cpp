#include "apps/tn/Progress.h"

#include <algorithm>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr auto kPause = std::chrono::milliseconds(100); // between two lines
constexpr char kWipe[] = "\r\x1b[K";

std::size_t TerminalWidth()
{
   winsize aSize{};
   return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &aSize) == 0 && aSize.ws_col > 0 ? aSize.ws_col : 80;
}
} // namespace

Progress::Progress(std::size_t theTotal) : itsTotal(theTotal), itsIsShown(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress()
{
   if (itsIsShown)
   {
      std::fputs(kWipe, stderr);
   }
}

void Progress::Begin(const std::string& theName)
{
   const Clock::time_point aNow = Clock::now();
   if (!itsIsShown || aNow - itsLastShown < kPause)
   {
      return;
   }
   itsLastShown = aNow;
   const double aSeconds = std::chrono::duration<double>(aNow - itsStart).count();
   const double aRate = aSeconds > 0 ? static_cast<double>(itsBytes) / 1e6 / aSeconds : 0;
   char aFigures[80];
   std::snprintf(aFigures, sizeof aFigures, "%3zu%%  %zu/%zu files  %.0f MB/s  ",
                 itsTotal == 0 ? 100 : itsDone * 100 / itsTotal, itsDone, itsTotal, aRate);
   std::string aLine = aFigures + OnOneLine(theName);
   aLine.resize(std::min(aLine.size(), TerminalWidth() - 1));
   std::fprintf(stderr, "%s%s", kWipe, aLine.c_str());
}

void Progress::End(std::uintmax_t theBytes)
{
   ++itsDone;
   itsBytes += theBytes;
}

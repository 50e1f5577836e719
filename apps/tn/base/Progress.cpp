#include "apps/tn/base/Progress.h"

#include <algorithm>
#include <cmath>
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

Progress::Progress(std::size_t theTotal, std::uintmax_t theTotalBytes)
    : itsTotal(theTotal), itsTotalBytes(theTotalBytes), itsIsShown(::isatty(STDERR_FILENO) == 1)
{}

Progress::~Progress()
{
   Wipe();
}

void Progress::Wipe()
{
   if (itsIsShown)
   {
      std::fputs(kWipe, stderr);
   }
}

void Progress::Begin(const std::string& theName)
{
   if (itsIsShown)
   {
      itsName = OnOneLine(theName);
      Show();
   }
}

void Progress::Advance(std::uintmax_t theBytes)
{
   itsBytes += theBytes;
   if (itsIsShown)
   {
      Show();
   }
}

void Progress::End(std::uintmax_t theBytes)
{
   ++itsDone;
   itsBytes += theBytes;
}

void Progress::Show()
{
   const Clock::time_point aNow = Clock::now();
   if (aNow - itsLastShown < kPause)
   {
      return;
   }
   itsLastShown = aNow;
   std::string aLine = Figures(std::chrono::duration<double>(aNow - itsStart).count()) + itsName;
   aLine.resize(std::min(aLine.size(), TerminalWidth() - 1));
   std::fprintf(stderr, "%s%s", kWipe, aLine.c_str());
}

std::string Progress::Figures(double theSeconds) const
{
   const auto aBytes = static_cast<double>(itsBytes);
   const auto aTotal = static_cast<double>(itsTotalBytes);
   double aShare = itsTotal == 0 ? 1 : static_cast<double>(itsDone) / static_cast<double>(itsTotal);
   if (itsTotalBytes != 0)
   {
      aShare = std::min(1.0, aBytes / aTotal);
   }
   char aText[120];
   std::snprintf(aText, sizeof aText, "%3.0f%%  %zu/%zu files  %.0f MB/s  ", aShare * 100, itsDone, itsTotal,
                 theSeconds > 0 ? aBytes / 1e6 / theSeconds : 0);
   std::string aFigures = aText;
   if (itsTotalBytes != 0 && aShare > 0)
   {
      const double aRest = theSeconds / aShare - theSeconds;
      std::snprintf(aText, sizeof aText, "%.0f:%02.0f left  ", std::floor(aRest / 60),
                    std::floor(std::fmod(aRest, 60)));
      aFigures += aText;
   }
   return aFigures;
}

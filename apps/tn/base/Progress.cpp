#include "apps/tn/base/Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <unistd.h>

#include "apps/tn/base/Terminal.h"
#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr auto kPause = std::chrono::milliseconds(100); // between two lines
constexpr char kWipe[] = "\r\x1b[K";
constexpr std::size_t kUsualWidth = 80;

// Of a path the end tells more than the beginning.
std::string CutToEnd(const std::string& theName, std::size_t theWidth)
{
   constexpr std::size_t kDots = 3;
   if (theName.size() <= theWidth)
   {
      return theName;
   }
   return theWidth <= kDots ? "" : "..." + theName.substr(theName.size() - theWidth + kDots);
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
   const std::size_t aTerminal = TerminalWidth(STDERR_FILENO);
   const std::size_t aWidth = (aTerminal == 0 ? kUsualWidth : aTerminal) - 1;
   std::string aLine = Figures(std::chrono::duration<double>(aNow - itsStart).count());
   aLine.resize(std::min(aLine.size(), aWidth));
   std::fprintf(stderr, "%s%s%s", kWipe, aLine.c_str(), CutToEnd(itsName, aWidth - aLine.size()).c_str());
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
   const double aRate = theSeconds > 0 ? aBytes / theSeconds : 0;
   const bool isSlow = aRate < 1e6;
   std::snprintf(aText, sizeof aText, "%3.0f%%  %zu/%zu files  %.0f %s  ", aShare * 100, itsDone, itsTotal,
                 aRate / (isSlow ? 1e3 : 1e6), isSlow ? "kB/s" : "MB/s");
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

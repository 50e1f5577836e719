#include "apps/tn/send/SendReport.h"

#include <cstdio>
#include <iostream>
#include <numeric>
#include <stdexcept>

#include "apps/tn/base/ExitCode.h"
#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr const char* kNames[] = {"sent", "warning", "failed", "skipped", "not sent"}; // of the outcomes

// What the sums call them.
constexpr const char* kSumNames[] = {"sent", "with warnings", "failed", "skipped", "not sent"};

std::string SizeText(double theBytes)
{
   constexpr double kMega = 1e6;
   char aText[32];
   theBytes < kMega ? std::snprintf(aText, sizeof aText, "%.1f kB", theBytes / 1e3)
                    : std::snprintf(aText, sizeof aText, "%.1f MB", theBytes / kMega);
   return aText;
}

// What several lines say, on one.
std::string Line(std::string theText)
{
   for (std::size_t i = theText.find('\n'); i != std::string::npos; i = theText.find('\n', i))
   {
      theText.replace(i, 1, "; ");
   }
   return OnOneLine(theText);
}
} // namespace

const char* SendReport::NameOf(Outcome theOutcome)
{
   return kNames[static_cast<int>(theOutcome)];
}

SendReport::SendReport(const std::string& theReportPath, bool theKeepsEntries) : itsKeepsEntries(theKeepsEntries)
{
   if (theReportPath.empty())
   {
      return;
   }
   itsOutput = &std::cout;
   if (theReportPath != "-")
   {
      itsFile.open(theReportPath);
      itsOutput = &itsFile;
   }
   if (!*itsOutput)
   {
      throw std::runtime_error("the report " + theReportPath + " cannot be written");
   }
}

void SendReport::BeginSending(std::size_t theFiles, UINT64 theBytes)
{
   itsStart = Clock::now();
   itsProgress = std::make_unique<Progress>(theFiles, theBytes);
}

void SendReport::EndSending()
{
   itsEnd = Clock::now();
   itsProgress.reset();
}

void SendReport::Begin(const std::string& thePath)
{
   const std::lock_guard aLock(itsMutex);
   itsProgress->Begin(thePath);
}

void SendReport::Advance(UINT64 theBytes)
{
   const std::lock_guard aLock(itsMutex);
   itsProgress->Advance(theBytes);
}

void SendReport::Add(const Entry& theEntry)
{
   const std::lock_guard aLock(itsMutex);
   ++itsCounts[static_cast<int>(theEntry.itsOutcome)];
   const bool isStored = theEntry.itsOutcome == Outcome::Sent || theEntry.itsOutcome == Outcome::Warning;
   itsBytes += isStored ? theEntry.itsBytes : 0;
   ++itsReasons[isStored ? ExitCode::kDone : theEntry.itsExitCode];
   WriteLine(theEntry);
   if (itsProgress)
   {
      itsProgress->End(0);
   }
   if (theEntry.itsOutcome == Outcome::Sent)
   {
      return;
   }
   if (theEntry.itsOutcome != Outcome::NotSent) // one line says why they all were not
   {
      TellFault(theEntry);
   }
   if (itsKeepsEntries)
   {
      itsFaults.push_back(theEntry);
   }
}

// A full archive refuses thousands of files in the same words.
void SendReport::TellFault(const Entry& theEntry)
{
   constexpr std::size_t kMostLines = 20;
   constexpr std::size_t kMostTexts = 1000;
   std::string anEnd;
   if (itsTexts.size() < kMostTexts || itsTexts.contains(theEntry.itsText))
   {
      const std::size_t aCount = ++itsTexts[theEntry.itsText];
      if (aCount > kMostLines)
      {
         return;
      }
      anEnd = aCount == kMostLines ? "; more files with this fault are only counted, --report names them" : "";
   }
   if (itsProgress)
   {
      itsProgress->Wipe();
   }
   std::cerr << Line("tn send: " + theEntry.itsPath + ": " + theEntry.itsText + anEnd) << "\n" << std::flush;
}

// Each line is on its way before the next file is: what is killed has told what was acknowledged.
void SendReport::WriteLine(const Entry& theEntry)
{
   if (itsOutput == nullptr)
   {
      return;
   }
   *itsOutput << OnOneLine(theEntry.itsPath) + "\t" + OnOneLine(theEntry.itsSOPInstanceUID) + "\t" +
                     NameOf(theEntry.itsOutcome) + "\t" + Line(theEntry.itsText) + "\n"
              << std::flush;
   if (!*itsOutput)
   {
      itsOutput = nullptr;
      throw std::runtime_error("the report cannot be written");
   }
}

void SendReport::Tell(const std::string& theText)
{
   const std::lock_guard aLock(itsMutex);
   if (itsProgress)
   {
      itsProgress->Wipe();
   }
   std::cerr << Line("tn send: " + theText) << "\n" << std::flush;
}

std::size_t SendReport::GetTotal() const
{
   return std::accumulate(std::begin(itsCounts), std::end(itsCounts), std::size_t{0});
}

double SendReport::GetSeconds() const
{
   return std::chrono::duration<double>(itsEnd - itsStart).count();
}

int SendReport::GetExitCode() const
{
   return itsReasons.empty()       ? ExitCode::kSomeFailed
          : itsReasons.size() == 1 ? itsReasons.begin()->first
                                   : ExitCode::kSomeFailed;
}

std::string SendReport::Summary() const
{
   std::string aText;
   for (int i = 0; i < 5; ++i)
   {
      if (i == 0 || itsCounts[i] != 0)
      {
         aText += (aText.empty() ? "" : ", ") + std::to_string(itsCounts[i]) + " " + kSumNames[i];
      }
   }
   const double aSeconds = GetSeconds();
   if (aSeconds <= 0)
   {
      return aText;
   }
   const std::size_t aStored = Count(Outcome::Sent) + Count(Outcome::Warning);
   const auto aBytes = static_cast<double>(itsBytes);
   char aFigures[160];
   std::snprintf(aFigures, sizeof aFigures, "; %s in %.2f s, %s/s, %.0f files/s", SizeText(aBytes).c_str(), aSeconds,
                 SizeText(aBytes / aSeconds).c_str(), static_cast<double>(aStored) / aSeconds);
   return aText + aFigures;
}

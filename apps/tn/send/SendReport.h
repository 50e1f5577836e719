// What became of each file that was to be sent: on standard error for those that went wrong, as long as it is not
// always the same, in the report file for all, and in sums. Of any thread.
#pragma once

#include <chrono>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "apps/tn/base/Progress.h"
#include "talvenor/foundation/BasicTypes.h"

struct SendFile;

class SendReport
{
public:
   enum class Outcome
   {
      Sent,    // and stored, says the peer
      Warning, // stored, with a reservation
      Failed,
      Skipped, // no DICOM file
      NotSent  // the sending ended before
   };

   struct Entry
   {
      std::string itsPath;
      RWCString itsSOPInstanceUID; // empty when not known
      Outcome itsOutcome;
      std::string itsText;
      UINT64 itsBytes = 0; // of the dataset
      int itsExitCode = 0; // that says why it failed
   };

   // theReportPath may be empty for none and "-" for standard output. Throws std::runtime_error when it cannot be
   // written.
   SendReport(const std::string& theReportPath, bool theKeepsEntries);

   // The time from here on counts, and progress is shown.
   void BeginSending(std::size_t theFiles, UINT64 theBytes);
   void EndSending();

   // A file is under way; so many bytes of it are.
   void Begin(const std::string& thePath);
   void Advance(UINT64 theBytes);

   void Add(const Entry& theEntry);

   // For the user, on a line of its own.
   void Tell(const std::string& theText);

   std::size_t Count(Outcome theOutcome) const { return itsCounts[static_cast<int>(theOutcome)]; }
   std::size_t GetTotal() const;
   UINT64 GetBytes() const { return itsBytes; }
   double GetSeconds() const;

   // Of those that were not sent well, when the report keeps them.
   const std::vector<Entry>& GetFaults() const { return itsFaults; }

   // By the outcomes alone: 0 when every file was sent; why nothing was sent, when there is one reason for all; else 1.
   int GetExitCode() const;

   // "12 sent, 1 failed; 6.4 MB in 0.03 s, 213 MB/s, 400 files/s"
   std::string Summary() const;

   static const char* NameOf(Outcome theOutcome);

private:
   using Clock = std::chrono::steady_clock;

   void WriteLine(const Entry& theEntry);
   void TellFault(const Entry& theEntry);

   std::mutex itsMutex;
   std::ofstream itsFile;
   std::ostream* itsOutput = nullptr; // null: no report
   bool itsKeepsEntries;
   std::unique_ptr<Progress> itsProgress;
   std::size_t itsCounts[5] = {};
   std::map<int, std::size_t> itsReasons; // how many files have which exit code
   std::vector<Entry> itsFaults;
   std::map<std::string, std::size_t> itsTexts; // how many files have gone wrong in the same words
   UINT64 itsBytes = 0;
   Clock::time_point itsStart;
   Clock::time_point itsEnd;
};

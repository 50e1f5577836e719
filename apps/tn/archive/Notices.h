// Runs the host's commands when instances have come: one for each instance, and one for each study into which none has
// come for a while. /bin/sh runs them, one after the other, with what they are about in environment variables:
//
//    TN_STUDY TN_SERIES TN_INSTANCE TN_SOP_CLASS    UIDs
//    TN_FILE                                        the path of the instance (not for a study)
//    TN_FOLDER                                      the folder of the study or the instance
//    TN_AET                                         the title of the sender
//
// Nothing of these is part of the command's text, so that no peer can have anything run. Nobody waits for a command:
// the list of those to come is bounded, and what does not fit is left out, with a line in the log.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>

class Notices
{
public:
   struct Settings
   {
      std::string itsObjectCommand; // empty for none
      std::string itsStudyCommand;
      double itsQuietSeconds = 30;
   };
   struct Instance
   {
      std::string itsStudy;
      std::string itsSeries;
      std::string itsInstance;
      std::string itsSOPClass;
      std::string itsFile;   // full paths
      std::string itsFolder; // of the study
      std::string itsTitle;
   };

   explicit Notices(const Settings& theSettings);

   // Ends the command that runs; those that have not begun are not run, with a line in the log.
   ~Notices();
   Notices(const Notices&) = delete;
   Notices& operator=(const Notices&) = delete;

   // An instance is stored. Any thread; returns at once.
   void Tell(const Instance& theInstance);

private:
   using Clock = std::chrono::steady_clock;
   using Environment = std::vector<std::string>;

   struct Job
   {
      const std::string* itsCommand;
      Environment itsEnvironment;
   };
   struct Study
   {
      Clock::time_point itsQuietSince;
      Environment itsEnvironment;
   };

   void Add(const std::string& theCommand, Environment theEnvironment);
   void Run();
   bool AwaitJob(Job& theJob);
   void AddQuietStudies();
   void RunJob(const Job& theJob);
   void EndJob(int theSignal);

   Settings itsSettings;
   std::mutex itsMutex; // guards what follows
   std::condition_variable itsChange;
   std::deque<Job> itsJobs;
   std::map<std::string, Study> itsStudies; // into which instances came of late
   unsigned long itsLeftOut = 0;
   pid_t itsProcess = 0; // of the command that runs
   bool itsIsEnding = false;
   bool itsHasEnded = false;
   std::thread itsThread; // last: it uses the others
};

#include "apps/tn/archive/Notices.h"

#include <cerrno>
#include <csignal>
#include <iostream>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
constexpr std::size_t kMostJobs = 10000;
constexpr std::size_t kMostStudies = 10000;
constexpr std::chrono::seconds kGrace{2}; // for a command to end when it is told to

void Log(const std::string& theText)
{
   std::cerr << "tn serve: " + theText + "\n" << std::flush;
}

// The shell with the program's environment and that of the job. Returns its process, or 0.
pid_t Start(const std::string& theCommand, const std::vector<std::string>& theEnvironment)
{
   std::vector<char*> aVariables;
   aVariables.reserve(theEnvironment.size());
   for (const std::string& aVariable : theEnvironment) // first: of two with one name, the first counts
   {
      aVariables.push_back(const_cast<char*>(aVariable.c_str()));
   }
   for (char** aVariable = environ; *aVariable != nullptr; ++aVariable)
   {
      aVariables.push_back(*aVariable);
   }
   aVariables.push_back(nullptr);

   std::string aShell = "/bin/sh";
   std::string anOption = "-c";
   std::string aCommand = theCommand;
   char* const anArguments[] = {aShell.data(), anOption.data(), aCommand.data(), nullptr};

   // A group of its own, so that what the command starts ends with it; and no terminal to wait for.
   posix_spawnattr_t anAttributes;
   posix_spawnattr_init(&anAttributes);
   posix_spawnattr_setflags(&anAttributes, POSIX_SPAWN_SETPGROUP);
   posix_spawn_file_actions_t anActions;
   posix_spawn_file_actions_init(&anActions);
   posix_spawn_file_actions_addopen(&anActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
   pid_t aProcess = 0;
   const int anError =
       posix_spawn(&aProcess, aShell.c_str(), &anActions, &anAttributes, anArguments, aVariables.data());
   posix_spawn_file_actions_destroy(&anActions);
   posix_spawnattr_destroy(&anAttributes);
   if (anError != 0)
   {
      Log("cannot run a command: " + std::generic_category().message(anError));
      return 0;
   }
   return aProcess;
}
} // namespace

Notices::Notices(const Settings& theSettings) : itsSettings(theSettings), itsThread([this] { Run(); }) {}

Notices::~Notices()
{
   {
      std::unique_lock aLock(itsMutex);
      itsIsEnding = true;
      const std::size_t aCount = itsJobs.size() + itsStudies.size();
      if (aCount != 0)
      {
         Log(std::to_string(aCount) + " commands are not run");
      }
      itsChange.notify_all();
      EndJob(SIGTERM);
      if (!itsChange.wait_for(aLock, kGrace, [&] { return itsHasEnded; }))
      {
         EndJob(SIGKILL);
      }
   }
   itsThread.join();
}

void Notices::Tell(const Instance& theInstance)
{
   const Environment aStudy = {"TN_STUDY=" + theInstance.itsStudy, "TN_FOLDER=" + theInstance.itsFolder,
                               "TN_AET=" + theInstance.itsTitle};
   const std::lock_guard aLock(itsMutex);
   if (!itsSettings.itsObjectCommand.empty())
   {
      Environment anEnvironment = aStudy;
      anEnvironment.insert(anEnvironment.end(),
                           {"TN_SERIES=" + theInstance.itsSeries, "TN_INSTANCE=" + theInstance.itsInstance,
                            "TN_SOP_CLASS=" + theInstance.itsSOPClass, "TN_FILE=" + theInstance.itsFile});
      Add(itsSettings.itsObjectCommand, std::move(anEnvironment));
   }
   if (!itsSettings.itsStudyCommand.empty() && !theInstance.itsStudy.empty() &&
       (itsStudies.size() < kMostStudies || itsStudies.contains(theInstance.itsStudy)))
   {
      itsStudies[theInstance.itsStudy] = {Clock::now(), aStudy};
      itsChange.notify_all();
   }
}

void Notices::Add(const std::string& theCommand, Environment theEnvironment)
{
   if (itsJobs.size() == kMostJobs)
   {
      if (itsLeftOut++ == 0)
      {
         Log("commands come too fast: some are left out");
      }
      return;
   }
   itsLeftOut = 0;
   itsJobs.push_back({&theCommand, std::move(theEnvironment)});
   itsChange.notify_all();
}

void Notices::Run()
{
   Job aJob;
   while (AwaitJob(aJob))
   {
      RunJob(aJob);
   }
   const std::lock_guard aLock(itsMutex);
   itsHasEnded = true;
   itsChange.notify_all();
}

// False at the end.
bool Notices::AwaitJob(Job& theJob)
{
   std::unique_lock aLock(itsMutex);
   while (!itsIsEnding && itsJobs.empty())
   {
      AddQuietStudies();
      if (itsJobs.empty())
      {
         itsStudies.empty() ? itsChange.wait(aLock)
                            : static_cast<void>(itsChange.wait_for(aLock, std::chrono::milliseconds(100)));
      }
   }
   if (itsIsEnding)
   {
      return false;
   }
   theJob = std::move(itsJobs.front());
   itsJobs.pop_front();
   AddQuietStudies(); // objects that keep coming must not keep studies waiting
   return true;
}

void Notices::AddQuietStudies()
{
   const Clock::time_point aLimit = Clock::now() - std::chrono::duration_cast<Clock::duration>(
                                                       std::chrono::duration<double>(itsSettings.itsQuietSeconds));
   for (auto aPlace = itsStudies.begin(); aPlace != itsStudies.end();)
   {
      if (aPlace->second.itsQuietSince > aLimit)
      {
         ++aPlace;
         continue;
      }
      Add(itsSettings.itsStudyCommand, std::move(aPlace->second.itsEnvironment));
      aPlace = itsStudies.erase(aPlace);
   }
}

void Notices::RunJob(const Job& theJob)
{
   const pid_t aProcess = Start(*theJob.itsCommand, theJob.itsEnvironment);
   if (aProcess == 0)
   {
      return;
   }
   {
      const std::lock_guard aLock(itsMutex);
      itsProcess = aProcess;
      if (itsIsEnding)
      {
         EndJob(SIGTERM); // the end came before the process was known
      }
   }
   // The process is waited for without being reaped first, so that its number stays its own until nobody signals it.
   siginfo_t anInfo = {};
   while (::waitid(P_PID, static_cast<id_t>(aProcess), &anInfo, WEXITED | WNOWAIT) != 0 && errno == EINTR)
   {}
   {
      const std::lock_guard aLock(itsMutex);
      itsProcess = 0;
   }
   int aStatus = 0;
   while (::waitpid(aProcess, &aStatus, 0) < 0 && errno == EINTR)
   {}
   if (aStatus != 0)
   {
      Log("a command failed: " + *theJob.itsCommand);
   }
}

void Notices::EndJob(int theSignal)
{
   if (itsProcess != 0)
   {
      ::kill(-itsProcess, theSignal);
   }
}

// tn serve in the background, on a free port of the loopback interface. For tests with TN_PROGRAM.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "support/RunTn.h"
#include "support/TemporaryDirectory.h"

class ServedNode
{
public:
   explicit ServedNode(const std::vector<std::string>& theOptions)
   {
      std::vector<std::string> anArguments{TN_PROGRAM, "serve", "--port", "0", "--bind", "127.0.0.1"};
      anArguments.insert(anArguments.end(), theOptions.begin(), theOptions.end());
      std::vector<char*> aPointers;
      for (std::string& anArgument : anArguments)
      {
         aPointers.push_back(anArgument.data());
      }
      aPointers.push_back(nullptr);
      itsProcess = fork();
      if (itsProcess == 0)
      {
         if (std::freopen(itsFolder.File("log").c_str(), "w", stderr) != nullptr)
         {
            execv(TN_PROGRAM, aPointers.data());
         }
         _exit(127);
      }
      for (int i = 0; i < 500 && itsPort.empty(); ++i)
      {
         std::this_thread::sleep_for(std::chrono::milliseconds(10));
         const std::string aLog = Log();
         const std::size_t aPlace = aLog.find("listens on port ");
         if (aPlace != std::string::npos && aLog.back() == '\n')
         {
            itsPort = aLog.substr(aPlace + 16, aLog.size() - aPlace - 17);
         }
      }
      if (itsPort.empty())
      {
         throw std::runtime_error("tn serve does not listen: " + Log());
      }
   }
   ~ServedNode() { Stop(); }

   // Returns the exit code.
   int Stop()
   {
      if (itsProcess > 0)
      {
         kill(itsProcess, SIGTERM);
         int aStatus = 0;
         waitpid(itsProcess, &aStatus, 0);
         itsProcess = 0;
         itsExitCode = WIFEXITED(aStatus) ? WEXITSTATUS(aStatus) : -1;
      }
      return itsExitCode;
   }

   const std::string& Port() const { return itsPort; }
   std::string Log() const { return ReadFile(itsFolder.File("log")); }
   bool Echoes() const { return Tn("echo --timeout 5 ANY@127.0.0.1:" + itsPort).itsCode == 0; }

private:
   TemporaryDirectory itsFolder;
   pid_t itsProcess = 0;
   std::string itsPort;
   int itsExitCode = -1;
};

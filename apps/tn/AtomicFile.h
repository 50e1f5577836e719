// A file that appears whole or not at all: it is written under a temporary name in the same folder and gets its own name
// when it is committed. What is not committed is removed, also when the program is interrupted (SIGINT, SIGTERM, SIGHUP).
// One at a time is known to the signal handler: the one made last.
#pragma once

#include <string>

class AtomicFile
{
public:
   // Creates the temporary file, with the permissions of the file that it will replace or the usual ones of a new file.
   // Throws std::runtime_error, naming the reason.
   explicit AtomicFile(std::string thePath);
   AtomicFile(const AtomicFile&) = delete;
   AtomicFile& operator=(const AtomicFile&) = delete;
   ~AtomicFile();

   // Where to write.
   const std::string& GetTemporaryPath() const { return itsTemporaryPath; }

   // To be called once everything has been written and closed. Throws std::runtime_error.
   void Commit();

private:
   std::string itsPath;
   std::string itsTemporaryPath;
   bool itsIsCommitted = false;
};

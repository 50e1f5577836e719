// A file that appears whole or not at all: it is written under a temporary name in the same folder and gets its own
// name when it is committed. What is not committed is removed, also when the program is interrupted (SIGINT, SIGTERM,
// SIGHUP). One at a time is known to the signal handler: the one made last.
#pragma once

#include <stdexcept>
#include <string>

// The output cannot be written. The text does not name it.
class WriteFailure : public std::runtime_error
{
public:
   using std::runtime_error::runtime_error;
};

class AtomicFile
{
public:
   // Creates the temporary file, with the permissions of the file that it will replace or the usual ones of a new file.
   // Of a link the file that it leads to is replaced. Throws WriteFailure, also for what cannot be replaced: folders,
   // devices, pipes and standard output ("-").
   explicit AtomicFile(std::string thePath);
   AtomicFile(const AtomicFile&) = delete;
   AtomicFile& operator=(const AtomicFile&) = delete;
   ~AtomicFile();

   // Where to write.
   const std::string& GetTemporaryPath() const { return itsTemporaryPath; }

   // To be called once everything has been written and closed. Throws WriteFailure.
   void Commit();

private:
   std::string itsPath;
   std::string itsTemporaryPath;
   bool itsIsCommitted = false;
};

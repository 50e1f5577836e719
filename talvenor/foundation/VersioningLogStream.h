// VersioningLogStream: a log stream whose file is put aside under a time-stamped name when an entry leaves it at or
// above a threshold; a fresh file of the same name takes over. Threads, ownership and failure: see LogStream.
#pragma once

#include "talvenor/foundation/LogRollover.h"
#include "talvenor/foundation/LogStream.h"

class TALVENOR_API VersioningLogStream : public LogStream
{
public:
   // theThreshold is in bytes; 0 means never.
   explicit VersioningLogStream(unsigned int theThreshold = 0);
   // Opens the file at once.
   VersioningLogStream(const char* theFilename, unsigned int theThreshold, int theOpenMode = OpenMode::Append,
                       int theProtection = OpenMode::Shared);
   ~VersioningLogStream() override;
   VersioningLogStream(const VersioningLogStream&) = delete;
   // Two streams must not roll over one file.
   VersioningLogStream& operator=(const VersioningLogStream&) = delete;

   void Off() override;
   using LogStream::On;
   void On(const char* theFilename, int theOpenMode = OpenMode::Append, int theProtection = OpenMode::Shared) override;
   void PostEntryCallback() override;

   // Writes to standard output.
   virtual void On();

   // Empty when no named file is written.
   std::string GetFilename() const;
   unsigned int GetThreshold() const;
   void SetThreshold(unsigned int theThreshold);

   // Puts the file aside now. Returns its new name, empty if there is no file or it cannot be renamed.
   std::string SwitchVersions();

private:
   LogRollover itsRollover;
};

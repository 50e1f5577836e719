// The file behind a log stream that starts a fresh file when the current one has grown past a threshold: what must be
// known to open it again, and the change of versions. x.log is renamed to x-STAMP.log and x.log is opened anew.
// Not locked: the stream that owns it calls with its mutex held. Exported for tests; not part of the library's
// interface.
#pragma once

#include <string>

#include "talvenor/Export.h"
#include "talvenor/foundation/OpenMode.h"

class LogStream;

class TALVENOR_API LogRollover
{
public:
   explicit LogRollover(unsigned int theThreshold) : itsThreshold(theThreshold) {}

   // The name is empty while no named file is written.
   void SetFile(const std::string& theFilename, int theOpenMode, int theProtection);
   void ForgetFile() { itsFilename.clear(); }
   const std::string& GetFilename() const { return itsFilename; }

   // In bytes; 0 means never.
   void SetThreshold(unsigned int theThreshold) { itsThreshold = theThreshold; }
   unsigned int GetThreshold() const { return itsThreshold; }

   // Whether theLog, which writes this file, has reached the threshold.
   bool IsDue(LogStream& theLog) const;

   // Switches theLog off, renames its file and switches it on again under the old name. Returns the new name of what
   // was written so far; empty on failure: the old file is then continued, appended to whatever the open mode says.
   // theLog is off if no file of that name can be opened any more.
   std::string SwitchVersions(LogStream& theLog);

   // theFilename with "-" and theStamp before its extension. A dot in a directory name begins no extension.
   static std::string VersionName(const std::string& theFilename, const std::string& theStamp);

private:
   std::string itsFilename;
   int itsOpenMode = OpenMode::Append;
   int itsProtection = OpenMode::Shared;
   unsigned int itsThreshold;
};

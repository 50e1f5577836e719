#include "talvenor/foundation/LogRollover.h"

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/foundation/UniqueTimestamp.h"
#include "talvenor/platform/FileHandle.h"

namespace
{

// Renames theFilename to a version of its own. Returns the new name, empty on failure. Stamps are unique within this
// process: a version that another process has put aside under the same stamp stays, and the next entry tries again.
std::string PutAside(const std::string& theFilename)
{
   try
   {
      const std::string aVersion = LogRollover::VersionName(theFilename, UniqueTimestamp::GetTimestampString());
      return TNPlatform::RenameFile(theFilename.c_str(), aVersion.c_str()) ? aVersion : std::string();
   }
   catch (const TNRuntimeException&)
   {
      return std::string(); // the clock was set back and gives no stamp; the entry that was written is complete
   }
}

} // namespace

void LogRollover::SetFile(const std::string& theFilename, int theOpenMode, int theProtection)
{
   itsFilename = theFilename;
   itsOpenMode = theOpenMode;
   itsProtection = theProtection;
}

bool LogRollover::IsDue(LogStream& theLog) const
{
   if (itsFilename.empty() || itsThreshold == 0)
   {
      return false;
   }
   const std::streamoff aPosition = theLog.tellp();
   return aPosition >= 0 && aPosition >= std::streamoff(itsThreshold);
}

// Off and On of theLog come back here through ForgetFile and SetFile: what is needed is copied first.
std::string LogRollover::SwitchVersions(LogStream& theLog)
{
   const std::string aFilename = itsFilename;
   const int aMode = itsOpenMode;
   const int aProtection = itsProtection;
   if (aFilename.empty())
   {
      return std::string();
   }
   theLog.Off();
   const std::string aVersion = PutAside(aFilename);
   const int aReopenMode = aVersion.empty() ? (aMode & ~OpenMode::Trunc) | OpenMode::Append : aMode;
   theLog.On(aFilename.c_str(), aReopenMode, aProtection);
   itsOpenMode = aMode;
   return aVersion;
}

std::string LogRollover::VersionName(const std::string& theFilename, const std::string& theStamp)
{
   const std::size_t aSlash = theFilename.rfind('/');
   const std::size_t aDot = theFilename.rfind('.');
   const bool hasExtension = aDot != std::string::npos && (aSlash == std::string::npos || aDot > aSlash);
   const std::size_t anEnd = hasExtension ? aDot : theFilename.size();
   return theFilename.substr(0, anEnd) + "-" + theStamp + theFilename.substr(anEnd);
}

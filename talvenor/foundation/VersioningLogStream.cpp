#include "talvenor/foundation/VersioningLogStream.h"

#include <iostream>

#include "talvenor/foundation/MutexWhileInScope.h"

VersioningLogStream::VersioningLogStream(unsigned int theThreshold) : itsRollover(theThreshold) {}

VersioningLogStream::VersioningLogStream(const char* theFilename, unsigned int theThreshold, int theOpenMode,
                                         int theProtection)
    : itsRollover(theThreshold)
{
   VersioningLogStream::On(theFilename, theOpenMode, theProtection);
}

// Whoever is in an entry is waited for while all that the entry uses is still there.
VersioningLogStream::~VersioningLogStream()
{
   VersioningLogStream::Off();
}

// Every On of LogStream begins with Off, so this is where the file name is forgotten.
void VersioningLogStream::Off()
{
   MutexWhileInScope aLock(itsMutex);
   LogStream::Off();
   itsRollover.ForgetFile();
}

void VersioningLogStream::On(const char* theFilename, int theOpenMode, int theProtection)
{
   MutexWhileInScope aLock(itsMutex);
   LogStream::On(theFilename, theOpenMode, theProtection);
   if (IsOn())
   {
      itsRollover.SetFile(theFilename, theOpenMode, theProtection);
   }
}

void VersioningLogStream::PostEntryCallback()
{
   MutexWhileInScope aLock(itsMutex);
   if (itsRollover.IsDue(*this))
   {
      itsRollover.SwitchVersions(*this);
   }
}

void VersioningLogStream::On()
{
   On(std::cout);
}

std::string VersioningLogStream::GetFilename() const
{
   MutexWhileInScope aLock(itsMutex);
   return itsRollover.GetFilename();
}

unsigned int VersioningLogStream::GetThreshold() const
{
   MutexWhileInScope aLock(itsMutex);
   return itsRollover.GetThreshold();
}

void VersioningLogStream::SetThreshold(unsigned int theThreshold)
{
   MutexWhileInScope aLock(itsMutex);
   itsRollover.SetThreshold(theThreshold);
}

std::string VersioningLogStream::SwitchVersions()
{
   MutexWhileInScope aLock(itsMutex);
   return itsRollover.SwitchVersions(*this);
}

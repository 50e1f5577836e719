// Opening a file under a lock, trying again while another process holds it; shared by readers and writers. Not part of
// the library's interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/TNResult.h"
#include "talvenor/io/LFStream.h"

struct TALVENOR_API LockedOpen
{
   const char* itsClass;       // texts begin with it: "Part10FileInputStream"
   const char* itsTracePrefix; // what trace and log lines name: "DICOMObject::LoadFromFile"
   LFStream::LockMode itsMode; // a writer (Exclusive) creates the file if need be, and empties it once it has the lock
   const RWCString& itsPath;

   // Opens and locks theStream. Throws StreamIOException.
   void Open(LFStream& theStream) const;

private:
   bool TryOpen(LFStream& theStream) const;
   bool TryLock(LFStream& theStream) const;
   [[noreturn]] void Throw(const char* theText, TNResultCode theCode, int theError) const;
   RWCString LinePrefix() const;
};

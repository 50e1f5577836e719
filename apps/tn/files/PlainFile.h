// A regular file, read at places. Not buffered.
#pragma once

#include <cstddef>
#include <string>

#include "talvenor/foundation/BasicTypes.h"

class PlainFile
{
public:
   // What tells a file from another one, and whether it was changed.
   struct Identity
   {
      bool operator==(const Identity&) const = default;

      UINT64 itsDevice = 0;
      UINT64 itsInode = 0;
      UINT64 itsSize = 0;    // bytes
      INT64 itsModified = 0; // nanoseconds since 1970
   };

   // Throws StreamIOException when it cannot be opened or is no regular file.
   explicit PlainFile(const std::string& thePath);
   PlainFile(const PlainFile&) = delete;
   PlainFile& operator=(const PlainFile&) = delete;
   ~PlainFile();

   const Identity& GetIdentity() const { return itsIdentity; }
   UINT64 GetSize() const { return itsIdentity.itsSize; }

   // Whether another process has locked it because it writes it.
   bool IsBeingWritten() const;

   // Returns the number of bytes read; fewer than theCount only at the end of the file. Throws StreamIOException.
   std::size_t ReadAt(void* theBuffer, std::size_t theCount, UINT64 thePosition) const;

private:
   int itsDescriptor;
   Identity itsIdentity;
};

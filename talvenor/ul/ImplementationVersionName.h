// The name by which an implementation tells its version (PS3.7 D.3.3.2): up to 16 characters, not padded. A name that
// was never set has length 0; one that is set to nothing is a single space.
#pragma once

#include <array>

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class PDUInputStream;
class PDUOutputStream;

class TALVENOR_API ImplementationVersionName
{
public:
   static constexpr unsigned int kMaximumLength = 16;

   ImplementationVersionName() = default;
   ImplementationVersionName(const RWCString& theName) { Set(theName); }
   ImplementationVersionName(const char* theName) { Set(theName); }

   // The first 16 characters, up to the first NUL. Null is as empty.
   void Set(const char* theName);
   void Set(const RWCString& theName) { Set(theName.c_str()); }
   void Set(const ImplementationVersionName& theName) { *this = theName; }

   operator const char*() const { return itsCharacters.data(); }
   unsigned int GetSize() const { return itsLength; }

   bool operator==(const ImplementationVersionName& theOther) const = default;

   // theLength bytes; the name ends at the first NUL among them. Returns 1, or throws StreamIOException: for more than
   // 16 (TN_ITEM_LENGTH_MISMATCH), and when fewer arrive (TN_END_OF_FILE; the name is a space then).
   int Read(PDUInputStream& theStream, unsigned int theLength);
   int Write(PDUOutputStream& theStream) const;

private:
   unsigned int itsLength = 0;
   std::array<char, kMaximumLength + 1> itsCharacters{}; // NUL behind the name
};
